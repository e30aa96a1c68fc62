#pragma once

#include <QByteArray>
#include <QString>
#include <chrono>
#include <optional>

namespace orvan {

/// What the unit is told to send: a MIDI byte stream and the spacing between its messages.
struct PlayRequest {
    QByteArray bytes;
    std::chrono::microseconds spacing{0};
};

/// Parses "[+MICROSECONDS] HEX HEX ..." (bytes as two hex digits each, separated by spaces; no
/// spacing means all at once); none for anything else.
std::optional<PlayRequest> parsePlayLine(const QString& line);

} // namespace orvan
