#pragma once

#include <QImage>
#include <QStringList>

#include <functional>

namespace orvan::IconRenderer {

/// Looks for "--render-icon PATH" among the process's arguments (program name first; only the
/// first occurrence counts). With it, writes the 1024 x 1024 icon PNG to PATH and returns true;
/// the caller then ends the process with status 0. A failed write is not reported. If the icon
/// cannot be rendered or encoded, prints "icon render failed" and ends the process with status 1.
/// Without the option, or with it as the last argument, returns false and does nothing.
///
/// Needs no display: when no GUI application exists yet it makes an offscreen one for the fonts.
bool handleLaunchArguments(const QStringList& arguments);

/// The same, with the artwork drawn by `render` (tests use it to make rendering fail).
bool handleLaunchArguments(const QStringList& arguments, const std::function<QImage()>& render);

} // namespace orvan::IconRenderer
