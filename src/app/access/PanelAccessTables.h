#pragma once

#include "AccessControl.h"

namespace orvan {

class DemoPillItem;
class DunraPanelItem;
class MelkoPanelItem;
class OrvanPanelItem;

/// Each panel's controls in reading order (top to bottom, left to right within a strip), with
/// the names a person uses for them. Tab follows this order; screen readers list it.
PanelAccess orvanAccess(OrvanPanelItem& panel);
PanelAccess dunraAccess(DunraPanelItem& panel);
PanelAccess melkoAccess(MelkoPanelItem& panel);

/// The demo pill: a button that is checked while demo mode is on.
AccessControl demoPillAccess(DemoPillItem& pill);

} // namespace orvan
