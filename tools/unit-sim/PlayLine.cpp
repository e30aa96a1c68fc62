#include "PlayLine.h"

#include <QStringList>

namespace orvan {

namespace {

constexpr int kHexBase = 16;
constexpr int kDigitsPerByte = 2;

} // namespace

std::optional<PlayRequest> parsePlayLine(const QString& line)
{
    QStringList words = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    PlayRequest request;
    if (!words.isEmpty() && words.front().startsWith(QLatin1Char('+'))) {
        bool ok = false;
        const qint64 spacing = words.takeFirst().mid(1).toLongLong(&ok);
        if (!ok || spacing < 0)
            return std::nullopt;
        request.spacing = std::chrono::microseconds(spacing);
    }
    if (words.isEmpty())
        return std::nullopt;
    for (const QString& word : words) {
        bool ok = false;
        const uint byte = word.toUInt(&ok, kHexBase);
        if (!ok || word.size() != kDigitsPerByte)
            return std::nullopt;
        request.bytes.append(char(byte));
    }
    return request;
}

} // namespace orvan
