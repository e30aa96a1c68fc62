#pragma once

#include "DeviceSpec.h"

#include <QList>

namespace orvan::Catalogue {

DeviceSpec orvan(); ///< the eight-channel remote preamplifier
DeviceSpec dunra(); ///< the two-channel preamplifier with DI inputs
DeviceSpec melko(); ///< the one-channel listen-only unit

/// The three compiled-in units, in the order the application builds them.
QList<DeviceSpec> all();

} // namespace orvan::Catalogue
