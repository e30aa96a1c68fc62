#include "DemoMode.h"

namespace orvan {

DemoMode& DemoMode::shared()
{
    static DemoMode* instance = new DemoMode; // lives as long as the process
    return *instance;
}

void DemoMode::setActive(bool active)
{
    m_active = active;
    emit activeChanged(active);
}

QMetaObject::Connection DemoMode::subscribe(QObject* context, std::function<void(bool)> observer)
{
    observer(m_active);
    return connect(this, &DemoMode::activeChanged, context, [observer = std::move(observer)](bool on) { observer(on); });
}

} // namespace orvan
