#pragma once

#include "ChannelSnapshot.h"
#include "JsonWriter.h"

#include <QJsonValue>
#include <QList>
#include <optional>

/// The JSON form of a unit's channels, shared by the preset files and the session file: one object
/// per channel with the keys in sorted order, absent optional values left out.
namespace orvan::SnapshotJson {

void write(JsonWriter& w, const ChannelSnapshot& s);
/// An array of `channels`, entry i being channel i.
void write(JsonWriter& w, const QList<ChannelSnapshot>& channels);

/// One channel, or nothing when a required key is missing or any key has the wrong type.
std::optional<ChannelSnapshot> read(const QJsonValue& value);
/// An array of channels, or nothing when it is not one or any entry is malformed.
std::optional<QList<ChannelSnapshot>> readList(const QJsonValue& value);

} // namespace orvan::SnapshotJson
