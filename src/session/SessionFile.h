#pragma once

#include "ChannelSnapshot.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <optional>

namespace orvan {

/// What a session keeps: each unit's channels as its panel showed them at the last save, keyed by
/// the unit's title.
using SessionState = QMap<QString, QList<ChannelSnapshot>>;

/// The session's file: a JSON object from unit title to that unit's channels, in the preset files'
/// form for channels (SnapshotJson), written atomically like them.
namespace SessionFile {

/// A session's state is a few kilobytes; a larger file is not one.
constexpr qint64 kLargestFile = 1024 * 1024;

/// The file beside the path the session manager gave: that path plus ".json".
QString pathFor(const QString& sessionPath);

QByteArray encode(const SessionState& state);
/// Nothing when the bytes are not an object of channel arrays.
std::optional<SessionState> decode(const QByteArray& bytes);

/// A missing file is a new session: an empty state. Nothing when the file is there but cannot be
/// read or is malformed.
std::optional<SessionState> load(const QString& path);

/// Whether the new state is in place; a failure leaves the old file whole.
bool save(const QString& path, const SessionState& state);

} // namespace SessionFile

} // namespace orvan
