#pragma once

#include <QString>

namespace orvan {

/// The version shown in the footer and by "--version": the project's version, or "dev" for a
/// build that carries none.
inline QString appVersion()
{
#ifdef ORVAN_VERSION_STRING
    const QString version = QStringLiteral(ORVAN_VERSION_STRING);
    return version.isEmpty() ? QStringLiteral("dev") : version;
#else
    return QStringLiteral("dev");
#endif
}

} // namespace orvan
