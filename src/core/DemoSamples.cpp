#include "DemoSamples.h"

namespace orvan {

namespace {
ChannelState sample(qint64 gain, std::initializer_list<OrvanSwitch> on = {})
{
    ChannelState c;
    c.gainValue = gain;
    for (OrvanSwitch s : on)
        c.setOn(s, true);
    return c;
}
} // namespace

ChannelStates demoSamples(const QString& title)
{
    using enum OrvanSwitch;
    if (title == QLatin1String("Orvan")) {
        return {sample(8), sample(10, {phantom}), sample(6), sample(15, {polarity}),
                sample(12, {phantom}), sample(18, {pad}), sample(21, {mute}), sample(24)};
    }
    if (title == QLatin1String("Dunra"))
        return {sample(9, {phantom}), sample(7, {di})};
    return {sample(14, {phantom, hpf})};
}

} // namespace orvan
