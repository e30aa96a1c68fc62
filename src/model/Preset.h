#pragma once

#include "ChannelSnapshot.h"

#include <QList>
#include <QMetaType>
#include <QString>
#include <QUuid>

namespace orvan {

/// A named picture of every channel of one unit.
struct Preset {
    QUuid id;                        ///< made once when the preset is first saved, never changed
    QString name;                    ///< trimmed; unique within one unit's list (case-sensitive)
    QList<ChannelSnapshot> channels; ///< entry i is channel i

    bool operator==(const Preset&) const = default;
};

using Presets = QList<Preset>;

} // namespace orvan

Q_DECLARE_METATYPE(orvan::Preset)
