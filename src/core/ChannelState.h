#pragma once

#include "OrvanSwitch.h"

#include <QList>
#include <QMetaType>
#include <optional>

namespace orvan {

/// What the engine knows of one channel of its unit.
struct ChannelState {
    std::optional<qint64> gainValue; ///< coarse gain step; absent = unknown
    qint64 gainFine = 0;             ///< 1 dB position inside the 3 dB step, 0 to 2
    bool pad = false;
    bool phantom = false;
    bool polarity = false;
    bool mute = false;
    bool di = false;
    bool hpf = false;

    bool isOn(OrvanSwitch s) const;
    void setOn(OrvanSwitch s, bool on);

    bool operator==(const ChannelState&) const = default;
};

using ChannelStates = QList<ChannelState>;

/// `count` default channel states.
ChannelStates defaultChannels(qint64 count);

/// The gain a readout shows: 3 x gainValue + gainFine dB, at most 70; absent when unknown.
std::optional<qint64> shownGainDecibels(const ChannelState& channel);

inline constexpr qint64 kMaxShownDecibels = 70;

} // namespace orvan

Q_DECLARE_METATYPE(orvan::ChannelState)
