#pragma once

#include <QString>

namespace orvan {

/// The wording of one unit's four confirmation dialogs. The Orvan's are shown by the stage, the
/// Dunra's by its own panel; the behaviour is the same.
struct DialogTexts {
    QString resetTitle;
    QString resetMessage;
    QString phantomMessagePrefix; ///< followed by the channel numbers and "."
    QString saveTitle;
    QString saveMessage;
    QString recallTitlePrefix;    ///< followed by the preset's name and "?"

    static DialogTexts orvan();
    static DialogTexts dunra();
};

inline constexpr const char* kPhantomTitle = "Turn on +48V phantom power?";
inline constexpr const char* kRecallMessage =
    "This preset turns on +48V phantom power. Make sure no ribbon mic or unbalanced source is connected to those channels.";

} // namespace orvan
