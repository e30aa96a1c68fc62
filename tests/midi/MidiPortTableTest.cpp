// The bookkeeping the ALSA and JACK systems share: each port handle leads to its own client, and
// only in its own direction (a mix-up would send one unit's messages out of another's client).
#include "midi/MidiPortTable.h"

#include <gtest/gtest.h>

using namespace orvan;

namespace {

struct Client : MidiClientWish {};

TEST(MidiPortTable, EachPortLeadsToItsOwnClientInItsOwnDirectionOnly)
{
    MidiPortTable<Client> table;
    std::vector<MidiClientRef> clients;
    for (int i = 0; i < 3; ++i)
        clients.push_back(table.addClient(std::make_unique<Client>()));
    struct Row { MidiClientRef client; bool isInput; MidiPortRef port = 0; };
    std::vector<Row> rows;
    bool received = false;
    for (MidiClientRef client : {clients[2], clients[0], clients[1]}) {
        for (bool isInput : {true, false}) {
            const auto [c, port] = table.addPort(client, isInput ? QStringLiteral("In") : QStringLiteral("Out"), isInput,
                                                 [&](std::span<const quint32>) { received = true; });
            ASSERT_EQ(c, table.clients()[client - 1].get());
            rows.push_back({client, isInput, port});
        }
    }
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "client " << row.client << (row.isInput ? " In" : " Out"));
        EXPECT_EQ(table.clientOf(row.port, row.isInput), table.clients()[row.client - 1].get());
        EXPECT_EQ(table.clientOf(row.port, !row.isInput), nullptr);
    }
    for (const auto& c : table.clients()) {
        EXPECT_TRUE(c->wantsIn && c->wantsOut && c->inName == "In" && c->outName == "Out");
        ASSERT_TRUE(c->receive);
        c->receive({});
    }
    EXPECT_TRUE(received);
    // A client that was never made has no ports, and no port is 0.
    EXPECT_EQ(table.addPort(0, QStringLiteral("In"), true), (std::pair<Client*, MidiPortRef>{nullptr, 0}));
    EXPECT_EQ(table.addPort(4, QStringLiteral("In"), true), (std::pair<Client*, MidiPortRef>{nullptr, 0}));
    EXPECT_EQ(table.clientOf(0, true), nullptr);
}

} // namespace
