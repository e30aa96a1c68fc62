#pragma once
// Start-up as a user sees it: real processes, spawn to first frame, cold and warm cache, beside an
// empty Qt window and qpwgraph; and the icon export as a whole process.

#include <QStringList>

namespace orvan::bench {

/// Adds the start-up rows for each startup_probe in `probes` (the first is this build; any other
/// an older one timed beside it), on the X display `display`, or offscreen when empty.
void startupRows(const QStringList& probes, const QString& display);

/// Adds the row for `app --render-icon`, whole process.
void iconExportRow(const QString& app);

} // namespace orvan::bench
