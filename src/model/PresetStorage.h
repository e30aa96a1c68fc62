#pragma once

#include "Preset.h"

#include <QString>

namespace orvan {
struct DeviceSpec;
}

/// Where a unit's presets live on disk, and their file's load and save (its bytes are PresetJson's).
/// Every failure is silent: reading gives an empty list, a failed write leaves the old file as it was.
namespace orvan::PresetStorage {

/// The full path of the unit's preset file under "$XDG_DATA_HOME/OrvanRCU" (else
/// "~/.local/share/OrvanRCU"); makes sure that folder exists.
QString url(const DeviceSpec& spec);

/// A preset list is a few kilobytes; a larger file is not one and reads as an empty list.
constexpr qint64 kLargestFile = 16 * 1024 * 1024;

/// Writes the whole list to the unit's file, atomically and durably (AtomicFile), and removes what earlier
/// interrupted saves of the unit left behind. A list that cannot be encoded writes nothing.
void save(const Presets& presets, const DeviceSpec& spec);

/// Reads the unit's file; any failure (missing, not a regular file, larger than `kLargestFile`,
/// unreadable, malformed, wrong shape) gives an empty list. Never blocks, never writes.
Presets load(const DeviceSpec& spec);

} // namespace orvan::PresetStorage
