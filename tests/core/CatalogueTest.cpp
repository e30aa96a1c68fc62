#include "Catalogue.h"
#include "ChannelState.h"

#include <gtest/gtest.h>

using namespace orvan;

TEST(Catalogue, HoldsTheThreeUnitsInOrderWithTheirExactRows)
{
    const QList<DeviceSpec> expected{
        {"Orvan", "Orvan", 8, false, true, "presets.json", false, 24, true},
        {"Dunra", "Dunra", 2, true, false, "presets-dunra.json", false, 24, true},
        {"Melko", "Melko", 1, false, false, "presets-melko.json", true, 23, false},
    };
    EXPECT_EQ(Catalogue::all(), expected);
}

TEST(GainRange, DependsOnDIAndTheUnitsMaximum)
{
    struct Row {
        DeviceSpec spec;
        bool di;
        GainRange expected;
    };
    const Row rows[] = {
        {Catalogue::orvan(), false, {6, 24}},
        {Catalogue::orvan(), true, {4, 12}},
        {Catalogue::dunra(), true, {4, 12}},
        {Catalogue::melko(), false, {6, 23}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(gainRange(row.spec, row.di), row.expected) << row.spec.title.toStdString() << " di " << row.di;
}

TEST(ChannelState, DefaultsToUnknownGainAndEverySwitchOff)
{
    const ChannelState c;
    EXPECT_FALSE(c.gainValue.has_value());
    EXPECT_EQ(c.gainFine, 0);
    for (OrvanSwitch s : allSwitches)
        EXPECT_FALSE(c.isOn(s)) << switchName(s);
}

TEST(ChannelState, SetOnChangesOnlyTheNamedSwitch)
{
    for (OrvanSwitch s : allSwitches) {
        ChannelState c;
        c.setOn(s, true);
        for (OrvanSwitch other : allSwitches)
            EXPECT_EQ(c.isOn(other), other == s) << switchName(s) << " vs " << switchName(other);
    }
}

TEST(ShownGain, IsThreeTimesTheStepPlusFineAndStopsAtSeventy)
{
    struct Row {
        std::optional<qint64> gain;
        qint64 fine;
        std::optional<qint64> shown;
    };
    const Row rows[] = {{std::nullopt, 0, std::nullopt}, {6, 0, 18}, {7, 2, 23}, {23, 2, 70}, {24, 0, 70}, {100, 0, 70}};
    for (const auto& row : rows) {
        ChannelState c;
        c.gainValue = row.gain;
        c.gainFine = row.fine;
        EXPECT_EQ(shownGainDecibels(c), row.shown);
    }
}
