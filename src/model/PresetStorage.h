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

/// Writes the whole list to the unit's file, atomically and durably.
void save(const Presets& presets, const DeviceSpec& spec);

/// Reads the unit's file; any failure (missing, unreadable, malformed, wrong shape) gives an empty
/// list. Never writes.
Presets load(const DeviceSpec& spec);

/// The file's bytes for a list: sorted keys, two-space indent, `"key" : value`, absent optional
/// values left out, upper-case UUIDs.
QByteArray encode(const Presets& presets);

/// The list a file's bytes hold, or nothing when any part is missing or of the wrong type.
std::optional<Presets> decode(const QByteArray& bytes);

/// How far a write goes; anything short of `complete` exists so tests can interrupt a write.
enum class WriteStage { complete, stopBeforeRename };

/// Writes a temporary file beside `path`, flushes it to disk, renames it over `path` and syncs the
/// folder so the rename survives a power cut. Returns whether the new bytes are in place.
bool writeAtomically(const QString& path, const QByteArray& bytes, WriteStage stage = WriteStage::complete);

} // namespace orvan::PresetStorage
