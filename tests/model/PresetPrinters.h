#pragma once

#include "Preset.h"

#include <ostream>

// Let test failures show strings, snapshots and presets as text rather than as raw bytes.

inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }

namespace orvan {

inline void PrintTo(const ChannelSnapshot& s, std::ostream* os)
{
    const auto optional = [os](const auto& v) {
        if (v)
            *os << *v;
        else
            *os << "absent";
    };
    *os << "{gain ";
    optional(s.gainValue);
    *os << ", pad " << s.pad << ", phantom " << s.phantom << ", polarity " << s.polarity << ", mute " << s.mute << ", di ";
    optional(s.di);
    *os << '}';
}

inline void PrintTo(const Preset& p, std::ostream* os)
{
    *os << "{" << p.id.toString(QUuid::WithoutBraces).toStdString() << ", ";
    PrintTo(p.name, os);
    *os << ", " << p.channels.size() << " channels}";
}

} // namespace orvan
