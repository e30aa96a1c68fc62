#pragma once

#include <QImage>
#include <QString>

#include <functional>

namespace orvan::IconFile {

/// Writes the 1024 x 1024 application icon as PNG to `path` and gives the process's exit status:
/// 0 once written, also when the write itself failed (that is not reported); 1 after printing
/// "icon render failed" when the icon cannot be rendered or encoded.
///
/// Needs no display: when no GUI application exists yet it makes an offscreen one for the fonts.
int write(const QString& path);

/// The same, with the artwork drawn by `render` (tests use it to make rendering fail).
int write(const QString& path, const std::function<QImage()>& render);

} // namespace orvan::IconFile
