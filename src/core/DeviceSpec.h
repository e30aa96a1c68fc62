#pragma once

#include <QString>

namespace orvan {

/// One kind of unit: everything that differs between the units is data in this row.
struct DeviceSpec {
    QString title;          ///< unit kind; MIDI client name suffix; picks the demo sample set
    QString portName;       ///< exact display name of the unit's MIDI endpoints
    qint64 channelCount = 0;
    bool hasDI = false;     ///< incoming DI reports are applied only when true
    bool fineTracking = false; ///< infer the 1 dB fine position from repeated coarse reports
    QString presetFile;     ///< file name of the unit's preset store
    bool hasHPF = false;    ///< incoming HPF reports are applied only when true
    qint64 maxGainValue = 6; ///< top of the gain range while DI is off (at least 6)
    bool verified = false;  ///< the unit's messages are confirmed; unverified units are only listened to

    bool operator==(const DeviceSpec&) const = default;
};

/// A closed range of gain values (one gain step is 3 dB).
struct GainRange {
    qint64 lowest;
    qint64 highest;
    bool operator==(const GainRange&) const = default;
};

inline constexpr qint64 kDIGainLowest = 4;
inline constexpr qint64 kDIGainHighest = 12;
inline constexpr qint64 kMicGainLowest = 6;
inline constexpr int kDecibelsPerGainStep = 3;

/// The gain range of a channel: DI on gives 4 to 12, DI off 6 to the unit's maximum.
constexpr GainRange gainRange(const DeviceSpec& spec, bool di)
{
    return di ? GainRange{kDIGainLowest, kDIGainHighest} : GainRange{kMicGainLowest, spec.maxGainValue};
}

} // namespace orvan
