#pragma once

#include <QGraphicsItem>
#include <QString>

namespace orvan {

/// What a person, and so a screen reader, calls a control. A panel names each control in the same
/// table row that makes, places and letters it, so a row moved in that table takes its name along;
/// the keyboard and the accessibility layer only read it.
inline constexpr int kSpokenNameKey = 0x5370;

inline void setSpokenName(QGraphicsItem* item, const QString& name)
{
    item->setData(kSpokenNameKey, name);
}

inline QString spokenName(const QGraphicsItem* item)
{
    return item->data(kSpokenNameKey).toString();
}

} // namespace orvan
