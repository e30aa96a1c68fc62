#pragma once

#include "Preset.h"

namespace orvan::test {

/// The two lists the save loop writes in turn. They differ in length, so a file torn between them
/// could never decode as either.
inline Presets saveLoopList(bool second)
{
    const int count = second ? 40 : 3;
    Presets presets;
    for (int i = 0; i < count; ++i) {
        const QString id = QStringLiteral("00000000-0000-4000-8000-%1").arg(i, 12, 10, QLatin1Char('0'));
        presets.append(Preset{QUuid::fromString(id), QStringLiteral("Preset %1").arg(i + 1),
                              QList<ChannelSnapshot>(8, ChannelSnapshot{6 + i % 19, i % 2 == 0, false, i % 3 == 0, false, std::nullopt})});
    }
    return presets;
}

} // namespace orvan::test
