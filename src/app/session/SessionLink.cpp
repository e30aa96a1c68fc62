#include "SessionLink.h"

#include "AfterFirstPaint.h"
#include "OrvanMIDI.h"
#include "OrvanRCUApp.h"
#include "RCUModel.h"
#include "midi/MidiSystem.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QPushButton>

namespace orvan {

namespace {

QString arrivalTitle(const QString& unit) { return QStringLiteral("Send the session's settings to %1?").arg(unit); }

QString arrivalMessage(const QString& unit)
{
    return QStringLiteral("%1 was connected after the session opened. Its session settings will be sent to it: "
                          "gain, pad, polarity, mute and +48V as the session saved them.")
        .arg(unit);
}

} // namespace

std::unique_ptr<SessionLink> SessionLink::connectTo(const QString& url, OrvanRCUApp& app, QWidget& window,
                                                    Scheduler& scheduler)
{
    auto link = OscLink::connectTo(url);
    if (!link)
        return nullptr;
    return std::unique_ptr<SessionLink>(new SessionLink(std::move(link), app, window, scheduler));
}

SessionLink::SessionLink(std::unique_ptr<OscLink> link, OrvanRCUApp& app, QWidget& window, Scheduler& scheduler)
    : m_client(std::move(link), QFileInfo(QCoreApplication::applicationFilePath()).fileName(),
               QCoreApplication::applicationPid())
    , m_recall({&app.orvanModel(), &app.dunraModel(), &app.melkoModel()}, scheduler)
    , m_window(window)
{
    m_client.setOpenHandler([this](const QString& path) { return open(path); });
    m_client.setSaveHandler([this] { return save(); });
    // A save reports the clean state itself, after its reply.
    connect(&m_recall, &SessionRecall::dirtyChanged, this, [this](bool dirty) {
        if (dirty)
            m_client.setDirty(true);
    });
    connect(&m_recall, &SessionRecall::pendingArrivalChanged, this, &SessionLink::syncArrivalQuestion);
    connect(&m_client, &NsmClient::opened, this, &SessionLink::startMidiIfReady);
    m_client.announce();
}

std::optional<NsmClient::ErrorCode> SessionLink::open(const QString& path)
{
    m_filePath = SessionFile::pathFor(path);
    const auto state = SessionFile::load(m_filePath);
    // A file that cannot be read recalls nothing; the manager hears of it.
    m_recall.open(state.value_or(SessionState{}));
    return state ? std::nullopt : std::optional(NsmClient::errBadProject);
}

bool SessionLink::save()
{
    const SessionState state = m_recall.capture();
    if (!SessionFile::save(m_filePath, state))
        return false;
    m_recall.saved(state);
    return true;
}

void SessionLink::startMidiWhenOpen(MidiSystem& system, QWidget& surface)
{
    m_midi = &system;
    afterFirstPaint(surface, [this] {
        m_painted = true;
        startMidiIfReady();
    });
}

void SessionLink::startMidiIfReady()
{
    if (m_midiStarted || !m_midi || !m_painted || !m_client.isOpen())
        return;
    m_midiStarted = true;
    m_recall.scanStarted();
    m_midi->start();
}

void SessionLink::syncArrivalQuestion()
{
    if (m_question) {
        // The question is about one unit: a new one, or none, replaces it.
        m_question->disconnect(this);
        std::exchange(m_question, nullptr)->close();
    }
    RCUModel* model = m_recall.pendingArrival();
    if (!model)
        return;
    const QString unit = model->midi().spec().title;
    auto* box = new QMessageBox(&m_window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Question);
    box->setWindowTitle(arrivalTitle(unit));
    box->setText(arrivalTitle(unit));
    box->setInformativeText(arrivalMessage(unit));
    QPushButton* send = box->addButton(QStringLiteral("Send"), QMessageBox::AcceptRole);
    QPushButton* cancel = box->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box->setDefaultButton(cancel); // Return must never send settings, +48V among them, by accident
    box->setEscapeButton(cancel);
    connect(box, &QMessageBox::finished, this, [this, box, send] {
        m_question = nullptr;
        m_recall.answerArrival(box->clickedButton() == send);
    });
    m_question = box;
    box->open();
}

} // namespace orvan
