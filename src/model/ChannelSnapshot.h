#pragma once

#include <QMetaType>
#include <optional>

namespace orvan {

/// One channel of a preset: its gain and switches as they were when the preset was saved.
struct ChannelSnapshot {
    std::optional<qint64> gainValue; ///< absent when the unit had not reported a gain
    bool pad = false;
    bool phantom = false;
    bool polarity = false;
    bool mute = false;
    std::optional<bool> di; ///< present exactly on units with DI inputs

    bool operator==(const ChannelSnapshot&) const = default;
};

} // namespace orvan

Q_DECLARE_METATYPE(orvan::ChannelSnapshot)
