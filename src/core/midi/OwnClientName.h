#pragma once

namespace orvan {

/// Our own MIDI clients' names start with this; their ports are never taken for a unit's.
inline constexpr char kOwnClientPrefix[] = "OrvanRCU-";

} // namespace orvan
