# orvan_add_test(NAME <name> SOURCES <files...> LINK <targets...> [GUI] [TIMEOUT <s>])
#
# Registers one GoogleTest executable as one CTest test. Every test gets its own
# empty XDG data and cache folders so that no test ever reads or writes a user's
# presets or cached layers,
# and GUI tests run on Qt's offscreen platform so CI needs no display.
find_package(GTest REQUIRED)

function(orvan_add_test)
  cmake_parse_arguments(T "GUI" "NAME;TIMEOUT" "SOURCES;LINK" ${ARGN})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  add_executable(${T_NAME} ${T_SOURCES})
  if(T_GUI)
    target_link_libraries(${T_NAME} PRIVATE orvan_test_main_gui)
  else()
    target_link_libraries(${T_NAME} PRIVATE orvan_test_main_core)
  endif()
  target_link_libraries(${T_NAME} PRIVATE ${T_LINK} GTest::gtest GTest::gmock)
  add_test(NAME ${T_NAME} COMMAND ${T_NAME})
  set(xdg "${CMAKE_CURRENT_BINARY_DIR}/${T_NAME}.xdg")
  # Made at configure time: a fresh build tree has no such folder, and a test that makes its
  # temporary folders under it (ORVAN_TEST_TMP) would otherwise find nowhere to put them.
  file(MAKE_DIRECTORY "${xdg}")
  set_tests_properties(${T_NAME} PROPERTIES
    TIMEOUT ${T_TIMEOUT}
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;XDG_DATA_HOME=${xdg}/data;XDG_CACHE_HOME=${xdg}/cache;XDG_RUNTIME_DIR=${xdg}/run;ORVAN_TEST_TMP=${xdg}")
endfunction()
