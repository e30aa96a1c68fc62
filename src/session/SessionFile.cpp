#include "SessionFile.h"

#include "AtomicFile.h"
#include "JsonWriter.h"
#include "SnapshotJson.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace orvan::SessionFile {

QString pathFor(const QString& sessionPath) { return sessionPath + QStringLiteral(".json"); }

QByteArray encode(const SessionState& state)
{
    // QMap iterates in key order: the titles come out sorted, like every key in these files.
    JsonWriter w;
    w.openObject();
    for (auto it = state.begin(); it != state.end(); ++it) {
        w.key(it.key());
        SnapshotJson::write(w, it.value());
    }
    w.closeObject();
    QByteArray bytes = w.take();
    bytes += '\n';
    return bytes;
}

std::optional<SessionState> decode(const QByteArray& bytes)
{
    const QJsonDocument doc = QJsonDocument::fromJson(bytes);
    if (!doc.isObject())
        return std::nullopt;
    SessionState state;
    const QJsonObject units = doc.object();
    for (auto it = units.begin(); it != units.end(); ++it) {
        auto channels = SnapshotJson::readList(it.value());
        if (!channels)
            return std::nullopt;
        state.insert(it.key(), std::move(*channels));
    }
    return state;
}

std::optional<SessionState> load(const QString& path)
{
    // Only a name that is not there at all is a new session; anything else must read as a state.
    if (!QFileInfo::exists(path) && !QFileInfo(path).isSymLink())
        return SessionState{};
    const auto bytes = AtomicFile::readRegular(path, kLargestFile);
    if (!bytes)
        return std::nullopt;
    return decode(*bytes);
}

bool save(const QString& path, const SessionState& state) { return AtomicFile::write(path, encode(state)); }

} // namespace orvan::SessionFile
