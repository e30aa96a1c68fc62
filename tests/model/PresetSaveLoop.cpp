// Saves the Orvan's presets for ever, alternating the two save-loop lists, and writes one byte to
// standard output as each save begins. The kill test kills it with SIGKILL in the middle of this.
#include "Catalogue.h"
#include "PresetStorage.h"
#include "SaveLoopLists.h"

#include <unistd.h>

int main()
{
    using namespace orvan;
    const Presets lists[] = {test::saveLoopList(false), test::saveLoopList(true)};
    const char started = 's';
    for (int i = 0;; i ^= 1) {
        if (::write(STDOUT_FILENO, &started, 1) != 1)
            return 1; // the test is gone
        PresetStorage::save(lists[i], Catalogue::orvan());
    }
}
