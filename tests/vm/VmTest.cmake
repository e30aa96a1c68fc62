# orvan_add_vm_test(NAME <name> SOURCES <files...> LINK <targets...> [TIMEOUT <s>]
#                   [WRAPPER <program>] [PASS <variables...>])
#
# Like orvan_add_test, but CTest runs the executable inside a throwaway VM with the real kernel
# sequencer (tests/vm/run-in-vm), so the ALSA tests meet the kernel on machines without sound
# hardware, CI included. The test skips, saying why, only where the VM cannot boot. WRAPPER runs
# in the guest and is handed the test's command (to start services around it); the PASS variables
# reach the guest when they are set where CTest runs.
set(ORVAN_VM_RUNNER "${CMAKE_CURRENT_LIST_DIR}/run-in-vm")
# Booting the emulated kernel takes seconds, more on a loaded machine.
set(ORVAN_VM_BOOT_ALLOWANCE 90)
set(ORVAN_VM_SKIP 77)

function(orvan_add_vm_test)
  cmake_parse_arguments(T "" "NAME;TIMEOUT;WRAPPER" "SOURCES;LINK;PASS" ${ARGN})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE orvan_test_main_core ${T_LINK} GTest::gtest GTest::gmock)
  set(passed)
  foreach(variable IN LISTS T_PASS)
    list(APPEND passed --pass ${variable})
  endforeach()
  # The guest's /tmp is its own tmpfs: the test's private folders live there.
  add_test(NAME ${T_NAME}
    COMMAND ${ORVAN_VM_RUNNER} --timeout ${T_TIMEOUT}
      --env QT_QPA_PLATFORM=offscreen --env XDG_DATA_HOME=/tmp/xdg/data
      --env XDG_RUNTIME_DIR=/tmp/xdg/run --env ORVAN_TEST_TMP=/tmp/xdg --env GTEST_COLOR=no ${passed}
      -- ${T_WRAPPER} $<TARGET_FILE:${T_NAME}>)
  math(EXPR whole "${T_TIMEOUT} + ${ORVAN_VM_BOOT_ALLOWANCE}")
  set_tests_properties(${T_NAME} PROPERTIES TIMEOUT ${whole} SKIP_RETURN_CODE ${ORVAN_VM_SKIP})
endfunction()
