#include "ApplicationShell.h"

#include "AfterFirstPaint.h"
#include "CleanQuit.h"
#include "OrvanRCUApp.h"
#include "UndoHistory.h"
#include "WheelEventFilter.h"
#include "access/AccessLayer.h"
#include "dialogs/ConfirmationDialogs.h"
#include "stage/StageScene.h"
#include "stage/StageWindow.h"
#include "time/SystemClock.h"

#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QPixmapCache>
#include <QTimer>

// The window icon's pictures are rendered at build time into a resource library; naming its
// initialiser here is what keeps the linker from dropping it. (It must be called outside any
// namespace.)
static void loadWindowIconResource()
{
    Q_INIT_RESOURCE(window_icon);
}

namespace orvan {

namespace {
constexpr int kPixmapCacheKilobytes = 64 * 1024;

/// The application icon at every size compiled in (each named by its size in pixels); the
/// pictures are decoded only when the window system asks for them.
QIcon windowIcon()
{
    loadWindowIconResource();
    const QDir pictures(QStringLiteral(":/window-icon"));
    QIcon icon;
    for (const QString& name : pictures.entryList(QDir::Files)) {
        const int size = QFileInfo(name).baseName().toInt();
        icon.addFile(pictures.filePath(name), QSize(size, size));
    }
    return icon;
}
} // namespace

ApplicationShell::ApplicationShell(OrvanRCUApp& app)
    : m_stage(std::make_unique<StageScene>(app))
    , m_window(std::make_unique<StageWindow>(m_stage.get()))
{
    WheelEventFilter::install();
    // Every plate and control keeps its look in Qt's pixmap cache. At a device-pixel ratio of 2
    // they need about 40 MB; with Qt's default 10 MB they would evict each other every frame.
    QPixmapCache::setCacheLimit(kPixmapCacheKilobytes);
    // Decoding the pictures loads Qt's image plugins: not before the window shows.
    afterFirstPaint(*m_window->viewport(), [this] { m_window->setWindowIcon(windowIcon()); });
    new CleanQuit(*m_window, SystemClock::shared()); // the window owns it
    m_window->setArrowStepHandler([this](int steps) { m_stage->adjustFocused(steps); });
    UndoHistory& history = app.undoHistory();
    m_window->setHistoryHandlers([&history] { history.undo(); }, [&history] { history.redo(); });
    new AccessLayer(*m_stage, *m_window); // the window owns it
    // The stage shows the Orvan's dialogs; the Dunra panel has its own, with its own wording.
    m_orvanDialogs = new ConfirmationDialogs(app.orvanModel(), DialogTexts::orvan(), m_window.get());
    m_dunraDialogs = new ConfirmationDialogs(app.dunraModel(), DialogTexts::dunra(), m_window.get());
}

ApplicationShell::~ApplicationShell() = default;

void ApplicationShell::show()
{
    m_window->show();
    // Centre once the window system has placed the window.
    QTimer::singleShot(0, m_window.get(), [this] { m_window->centreOnScreen(); });
}

} // namespace orvan
