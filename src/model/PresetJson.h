#pragma once

#include "Preset.h"

#include <QByteArray>
#include <optional>

/// The bytes of a unit's preset file: the byte-exact writer and the strict reader. Knows nothing of
/// paths or disks (PresetStorage does).
namespace orvan::PresetJson {

/// The file's bytes for a list: sorted keys, two-space indent, `"key" : value`, absent optional
/// values left out, upper-case UUIDs. Empty when a name is not valid text (a lone surrogate).
QByteArray encode(const Presets& presets);

/// The list a file's bytes hold, or nothing when any part is missing or of the wrong type: an id
/// must be exactly the 36-character hyphenated form (either case), a gain an integer that fits 64
/// bits, a name valid text.
std::optional<Presets> decode(const QByteArray& bytes);

} // namespace orvan::PresetJson
