#include "NsmClient.h"

namespace orvan {

namespace {

const QString kApplicationName = QStringLiteral("OrvanRCU");
/// Only what the app does: it reports unsaved changes. It never switches sessions by itself.
const QString kCapabilities = QStringLiteral(":dirty:");
constexpr int kApiMajor = 1;
constexpr int kApiMinor = 2;

namespace Path {
const QByteArray announce = "/nsm/server/announce";
const QByteArray open = "/nsm/client/open";
const QByteArray save = "/nsm/client/save";
const QByteArray isDirty = "/nsm/client/is_dirty";
const QByteArray isClean = "/nsm/client/is_clean";
const QByteArray reply = "/reply";
const QByteArray error = "/error";
} // namespace Path

bool hasStringAt(const OscMessage& m, int index) { return m.args.size() > index && m.args[index].typeId() == QMetaType::QString; }

} // namespace

std::optional<QString> NsmClient::urlFromEnvironment()
{
    const QString url = qEnvironmentVariable("NSM_URL");
    return url.isEmpty() ? std::nullopt : std::optional(url);
}

NsmClient::NsmClient(std::unique_ptr<OscLink> link, QString executableName, qint64 processId)
    : m_link(std::move(link))
    , m_executableName(std::move(executableName))
    , m_processId(processId)
{
    m_link->onMessage = [this](const OscMessage& m) { receive(m); };
}

void NsmClient::announce()
{
    m_link->send(Path::announce,
                 {kApplicationName, kCapabilities, m_executableName, kApiMajor, kApiMinor, int(m_processId)});
}

void NsmClient::receive(const OscMessage& message)
{
    // open: path, display name, client id. The path is used exactly as given.
    if (message.path == Path::open && hasStringAt(message, 0) && hasStringAt(message, 1) && hasStringAt(message, 2))
        open(message.args[0].toString());
    else if (message.path == Path::save && message.args.isEmpty())
        save();
    // Replies to the announce, and anything else, need nothing from the app.
}

void NsmClient::open(const QString& path)
{
    const std::optional<ErrorCode> failure = m_onOpen ? m_onOpen(path) : std::nullopt;
    m_isOpen = true;
    m_dirty = false; // a freshly opened session has nothing unsaved
    if (failure)
        error(Path::open, *failure, QStringLiteral("The session file could not be read"));
    else
        reply(Path::open, QStringLiteral("Loaded"));
    emit opened();
}

void NsmClient::save()
{
    if (!m_isOpen) {
        error(Path::save, errGeneral, QStringLiteral("No session is open"));
        return;
    }
    if (m_onSave && m_onSave()) {
        reply(Path::save, QStringLiteral("Saved"));
        setDirty(false);
    } else {
        error(Path::save, errGeneral, QStringLiteral("The session file could not be written"));
    }
}

void NsmClient::setDirty(bool dirty)
{
    if (!m_isOpen || dirty == m_dirty)
        return;
    m_dirty = dirty;
    m_link->send(dirty ? Path::isDirty : Path::isClean, {});
}

void NsmClient::reply(const QByteArray& request, const QString& text)
{
    m_link->send(Path::reply, {QString::fromLatin1(request), text});
}

void NsmClient::error(const QByteArray& request, ErrorCode code, const QString& text)
{
    m_link->send(Path::error, {QString::fromLatin1(request), int(code), text});
}

} // namespace orvan
