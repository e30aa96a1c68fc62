// Saves the Orvan's presets for ever, alternating a list of 3 and one of 40 presets, and writes one
// byte to standard output as each save begins. The kill test kills it with SIGKILL in the middle.
#include "Catalogue.h"
#include "PresetStorage.h"

#include <unistd.h>

int main()
{
    using namespace orvan;
    Presets lists[2];
    for (int i = 0; i < 40; ++i) {
        const Preset p{QUuid::createUuid(), QStringLiteral("Preset %1").arg(i + 1),
                       QList<ChannelSnapshot>(8, ChannelSnapshot{6 + i % 19, i % 2 == 0, false, i % 3 == 0, false, std::nullopt})};
        lists[1].append(p);
        if (i < 3)
            lists[0].append(p);
    }
    const char started = 's';
    for (int i = 0;; i ^= 1) {
        if (::write(STDOUT_FILENO, &started, 1) != 1)
            return 1; // the test is gone
        PresetStorage::save(lists[i], Catalogue::orvan());
    }
}
