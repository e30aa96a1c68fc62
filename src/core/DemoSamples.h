#pragma once

#include "ChannelState.h"

#include <QString>

namespace orvan {

/// The sample settings a unit shows in demo mode, chosen by its title:
/// "Orvan" eight channels, "Dunra" two, anything else one.
ChannelStates demoSamples(const QString& title);

} // namespace orvan
