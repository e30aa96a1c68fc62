#include "ModelRig.h"
#include "PresetPrinters.h"

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <unistd.h>

namespace orvan::test {
namespace {

class PresetModelTest : public ::testing::Test {
protected:
    void SetUp() override { removePresetFiles(); }
    DemoOff demoOff;
};

/// Counts how often a file is opened, by anyone, from now on.
class OpenCounter {
public:
    explicit OpenCounter(const QString& path)
        : m_fd(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        // Identical events in a row are merged into one; the closes keep the opens apart.
        EXPECT_GE(::inotify_add_watch(m_fd, QFile::encodeName(path).constData(), IN_OPEN | IN_CLOSE), 0);
    }
    ~OpenCounter() { ::close(m_fd); }

    int opens() const
    {
        int count = 0;
        alignas(inotify_event) char buffer[4096];
        for (ssize_t n; (n = ::read(m_fd, buffer, sizeof buffer)) > 0;) {
            for (ssize_t at = 0; at < n;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
                count += (event->mask & IN_OPEN) ? 1 : 0;
                at += ssize_t(sizeof(inotify_event) + event->len);
            }
        }
        return count;
    }

private:
    int m_fd;
};

TEST_F(PresetModelTest, AModelReadsItsPresetFileOnceAtStartUp)
{
    for (const bool demo : {false, true}) {
        SCOPED_TRACE(demo ? "started in demo mode" : "started without demo mode");
        // given
        const Presets stored{Preset{QUuid::createUuid(), QStringLiteral("Stored"), QList<ChannelSnapshot>(8, ChannelSnapshot{})}};
        PresetStorage::save(stored, Catalogue::orvan());
        DemoMode::shared().setActive(demo);
        const OpenCounter counter(PresetStorage::url(Catalogue::orvan()));
        // when
        ModelRig rig(Catalogue::orvan(), false);
        // then
        EXPECT_EQ(counter.opens(), 1);
        EXPECT_EQ(rig.model->presets(), stored);
    }
}

TEST_F(PresetModelTest, SavingStripsOnlySpacesAndTabsFromTheNameAndKeepsLineBreaks)
{
    struct Case {
        QString draft;
        std::optional<QString> stored; // absent: nothing is saved
    };
    const Case cases[] = {
        {QStringLiteral(" \t\nVocals\r\n\t "), QStringLiteral("\nVocals\r\n")},
        {QStringLiteral("\n"), QStringLiteral("\n")},
        {QStringLiteral("\u00a0Vocals\u2003"), QStringLiteral("\u00a0Vocals\u2003")},
        {QStringLiteral(" \t \t"), std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.draft.toStdString());
        // given
        removePresetFiles();
        ModelRig rig(Catalogue::dunra());
        rig.model->setPresetNameDraft(c.draft);
        // when
        rig.model->commitSave();
        // then
        const Presets saved = PresetStorage::load(Catalogue::dunra());
        EXPECT_EQ(saved, rig.model->presets());
        if (c.stored) {
            ASSERT_EQ(saved.size(), 1);
            EXPECT_EQ(saved[0].name, *c.stored);
        } else {
            EXPECT_TRUE(saved.isEmpty());
        }
    }
}

} // namespace
} // namespace orvan::test
