#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// Files that are never seen half written: the preset files and the session file. Every failure
/// is silent: a read gives nothing, a failed write leaves the old file as it was.
namespace orvan::AtomicFile {

/// How far a write goes; `stopBeforeRename` leaves the whole temporary file behind, as a save
/// killed just before its rename does, so tests can interrupt a write.
enum class Stage { complete, stopBeforeRename };

/// Removes the leftovers of interrupted writes of `path`, writes a locked temporary file beside it,
/// flushes it to disk, renames it over `path` (whatever the old file's mode; a symlink there is
/// replaced, not followed) and syncs the folder so the rename survives a power cut. Returns whether
/// the new bytes are in place.
bool write(const QString& path, const QByteArray& bytes, Stage stage = Stage::complete);

/// The whole file, or nothing when it is not a regular file of at most `largest` bytes, cannot be
/// read, or grows while it is read. A FIFO or a device is never opened: opening either can block
/// or have effects of its own. Never blocks, never writes.
std::optional<QByteArray> readRegular(const QString& path, qint64 largest);

} // namespace orvan::AtomicFile
