#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

/// Images that depend only on the build, on what they show and on their pixel geometry (the
/// plates with their texture, light and shadows), kept between runs in the user's cache folder
/// (`$XDG_CACHE_HOME/OrvanRCU`, by default `~/.cache/OrvanRCU`), so that a second start loads
/// them instead of painting them again.
///
/// A file holds a small header and the raw premultiplied pixels, so loading is a read and a
/// checksum, never a decode. Anything that does not match exactly (another build, size or
/// content; a short, damaged or odd file) is ignored: the caller paints afresh and stores again.
namespace orvan::StaticLayerCache {

/// A key naming one layer's content and geometry for this build: the same description gives
/// the same key only in the same build of the program.
quint64 keyFor(const QByteArray& description);

/// The layer stored under `name` for `key`, with exactly `size` pixels; a null image when there
/// is none or it cannot be trusted.
QImage load(const QString& name, quint64 key, QSize size);

/// Keeps `image` under `name` for `key`. The file is written once the current paint is over
/// (a zero-time task on the event loop), so the first frame never waits for the disk.
void store(const QString& name, quint64 key, const QImage& image);

/// Writes what `store` queued now, each file atomically; done by itself after a paint.
void writePending();

} // namespace orvan::StaticLayerCache
