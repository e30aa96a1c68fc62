#include "PanelAccess.h"

#include "ChannelColumn.h"
#include "ControlBuilders.h"
#include "DunraPanelItem.h"
#include "MelkoPanelItem.h"
#include "OrvanMIDI.h"
#include "OrvanPanelItem.h"
#include "RCUModel.h"
#include "SpokenName.h"
#include "items/BlueDisplayItem.h"
#include "items/GlossButtonItem.h"
#include "items/KnobItem.h"
#include "items/LampRowItem.h"
#include "items/PowerButtonItem.h"
#include "items/ReadoutItem.h"

namespace orvan {

using namespace ControlBuilders;

PanelFace orvanFace(OrvanPanelItem& panel)
{
    PanelFace face{.panel = &panel, .name = QStringLiteral("Orvan"), .power = panel.powerButton(),
                   .knobChannel = lowestSelected(panel.model())};
    for (const ChannelColumn* column : panel.columns())
        face.strips.push_back(
            {column->readout(), {column->rows().begin(), column->rows().end()}, column->selectButton()});
    face.rest.assign(panel.sharedButtons().begin(), panel.sharedButtons().end());
    face.rest.insert(face.rest.end(), {panel.statusDisplay(), panel.presetDisplay()});
    face.rest.insert(face.rest.end(), panel.presetButtons().begin(), panel.presetButtons().end());
    face.rest.push_back(panel.knob());
    return face;
}

PanelFace dunraFace(DunraPanelItem& panel)
{
    PanelFace face{.panel = &panel, .name = QStringLiteral("Dunra"), .power = panel.powerButton(),
                   .knobChannel = lowestSelected(panel.model())};
    for (int c = 0; c < 2; ++c) {
        PanelFace::Strip strip{.readout = panel.readout(c)};
        for (int column = 0; column < 5; ++column)
            strip.rows.push_back(panel.cell(c, column));
        face.strips.push_back(strip);
    }
    face.rest.assign(panel.sharedButtons().begin(), panel.sharedButtons().end());
    face.rest.insert(face.rest.end(), {panel.knob(), panel.presetDisplay()});
    face.rest.insert(face.rest.end(), panel.presetButtons().begin(), panel.presetButtons().end());
    return face;
}

PanelFace melkoFace(MelkoPanelItem& panel)
{
    // One channel: its strip is the whole column of lamps, each beside its button.
    PanelFace face{.panel = &panel, .name = QStringLiteral("Melko"),
                   .knobChannel = [] { return std::optional<int>(0); }};
    PanelFace::Strip strip{.readout = panel.display()};
    for (int row = 0; row < 5; ++row)
        strip.rows.insert(strip.rows.end(), {panel.lamp(row), panel.button(row)});
    face.strips.push_back(strip);
    face.rest = {panel.knob(), panel.listenOnlyLegend()};
    return face;
}

PanelAccess panelAccess(const PanelFace& face)
{
    RCUModel& model = face.panel->model();
    const OrvanMIDI& engine = model.midi();
    PanelAccess access{.name = face.name, .engine = &engine, .panel = face.panel};
    auto& controls = access.controls;
    // A unit of one channel has nothing to select.
    const bool selects = face.strips.size() > 1;

    if (face.power)
        controls.push_back(pushButton(face.power));
    for (int c = 0; c < int(face.strips.size()); ++c) {
        const PanelFace::Strip& strip = face.strips[std::size_t(c)];
        AccessControl readout = gain(strip.readout, QAccessible::Slider, engine, [c] { return std::optional<int>(c); });
        if (selects)
            readout.isSelected = [&model, c] { return model.selected().contains(c); };
        controls.push_back(readout);
        for (PushItem* row : strip.rows) {
            auto* lampRow = dynamic_cast<LampRowItem*>(row);
            controls.push_back(lampRow ? lamp(lampRow) : pushButton(row));
        }
        if (strip.select) {
            AccessControl select = pushButton(strip.select);
            select.isChecked = [&model, c] { return model.selected().contains(c); };
            controls.push_back(select);
        }
    }
    for (QGraphicsItem* item : face.rest) {
        if (auto* knob = dynamic_cast<KnobItem*>(item))
            controls.push_back(gain(knob, QAccessible::Dial, engine, face.knobChannel));
        else if (auto* display = dynamic_cast<BlueDisplayItem*>(item))
            controls.push_back(label(display, [display] { return display->shownLines().join(QStringLiteral(", ")); }));
        else if (auto* button = dynamic_cast<PushItem*>(item))
            controls.push_back(pushButton(button));
        else // a legend: it says its own name
            controls.push_back(label(item, [item] { return spokenName(item); }));
    }
    return access;
}

} // namespace orvan
