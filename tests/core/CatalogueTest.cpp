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

TEST(ChannelState, ShowsNoGainUntilOneIsKnownThenThreeDecibelsAStepPlusTheFinePositionUpToSeventy)
{
    EXPECT_EQ(shownGainDecibels(ChannelState{}), std::nullopt);
    struct Row { qint64 gain, fine, shown; };
    for (const Row& row : {Row{6, 0, 18}, Row{7, 2, 23}, Row{23, 2, 70}, Row{100, 0, 70}}) {
        ChannelState c;
        c.gainValue = row.gain;
        c.gainFine = row.fine;
        EXPECT_EQ(shownGainDecibels(c), row.shown) << row.gain << " + " << row.fine;
    }
}
