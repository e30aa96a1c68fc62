#pragma once

#include "OscLink.h"

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

namespace orvan {

/// The session manager's side of the app: the NSM protocol, API 1.2, over an OscLink. Announces
/// itself, answers open and save through the handlers it is given, and tells the manager when
/// the session has unsaved changes (the ":dirty:" capability). Main thread only.
class NsmClient final : public QObject {
    Q_OBJECT

public:
    /// The protocol's error codes this client replies with.
    enum ErrorCode { errGeneral = -1, errBadProject = -9 };

    /// Loads the session at a path; nothing when it loaded, else the error to reply.
    using OpenHandler = std::function<std::optional<ErrorCode>(const QString& path)>;
    /// Saves the session; whether the state is on disk.
    using SaveHandler = std::function<bool()>;

    /// The environment's NSM_URL, or nothing when it is not set.
    static std::optional<QString> urlFromEnvironment();

    NsmClient(std::unique_ptr<OscLink> link, QString executableName, qint64 processId);

    /// Sends the announce: the app's name, its capabilities, the executable, the API version and
    /// the process id.
    void announce();

    void setOpenHandler(OpenHandler handler) { m_onOpen = std::move(handler); }
    void setSaveHandler(SaveHandler handler) { m_onSave = std::move(handler); }

    /// Tells the manager whether there are unsaved changes, once per change of mind.
    void setDirty(bool dirty);

    bool isOpen() const { return m_isOpen; }

signals:
    /// A session was opened (its state loaded, the reply sent).
    void opened();

private:
    void receive(const OscMessage& message);
    void open(const QString& path);
    void save();
    void reply(const QByteArray& request, const QString& text);
    void error(const QByteArray& request, ErrorCode code, const QString& text);

    std::unique_ptr<OscLink> m_link;
    QString m_executableName;
    qint64 m_processId;
    OpenHandler m_onOpen;
    SaveHandler m_onSave;
    bool m_isOpen = false;
    bool m_dirty = false;
};

} // namespace orvan
