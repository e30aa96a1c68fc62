#include "PanelAccess.h"

#include "DemoMode.h"
#include "stage/DemoPillItem.h"

namespace orvan {

AccessControl demoPillAccess(DemoPillItem& pill)
{
    AccessControl control{.item = &pill, .role = QAccessible::PushButton, .name = QStringLiteral("Demo mode"),
                          .press = [&pill] { pill.activate(); }};
    control.isChecked = [] { return DemoMode::shared().active(); };
    return control;
}

} // namespace orvan
