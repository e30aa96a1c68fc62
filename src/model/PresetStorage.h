#pragma once

#include "Preset.h"

#include <QByteArray>
#include <QString>

namespace orvan {
struct DeviceSpec;
}

/// Where a unit's presets live on disk and how they are written and read. Every failure is silent:
/// reading gives an empty list, a failed write leaves the old file as it was.
namespace orvan::PresetStorage {

/// The full path of the unit's preset file under "$XDG_DATA_HOME/OrvanRCU" (else
/// "~/.local/share/OrvanRCU"); makes sure that folder exists.
QString url(const DeviceSpec& spec);

/// A preset list is a few kilobytes; a larger file is not one and reads as an empty list.
constexpr qint64 kLargestFile = 16 * 1024 * 1024;

/// Writes the whole list to the unit's file, atomically and durably, and removes what earlier
/// interrupted saves of the unit left behind. A list that cannot be encoded writes nothing.
void save(const Presets& presets, const DeviceSpec& spec);

/// Reads the unit's file; any failure (missing, not a regular file, larger than `kLargestFile`,
/// unreadable, malformed, wrong shape) gives an empty list. Never blocks, never writes.
Presets load(const DeviceSpec& spec);

/// The file's bytes for a list: sorted keys, two-space indent, `"key" : value`, absent optional
/// values left out, upper-case UUIDs. Empty when a name is not valid text (a lone surrogate).
QByteArray encode(const Presets& presets);

/// The list a file's bytes hold, or nothing when any part is missing or of the wrong type: an id
/// must be exactly the 36-character hyphenated form (either case), a gain an integer that fits 64
/// bits, a name valid text.
std::optional<Presets> decode(const QByteArray& bytes);

/// How far a write goes; `stopBeforeRename` leaves the whole temporary file behind, as a save
/// killed just before its rename does, so tests can interrupt a write.
enum class WriteStage { complete, stopBeforeRename };

/// Removes the leftovers of interrupted saves of `path`, writes a locked temporary file beside it,
/// flushes it to disk, renames it over `path` (whatever the old file's mode; a symlink there is
/// replaced, not followed) and syncs the folder so the rename survives a power cut. Returns whether
/// the new bytes are in place.
bool writeAtomically(const QString& path, const QByteArray& bytes, WriteStage stage = WriteStage::complete);

} // namespace orvan::PresetStorage
