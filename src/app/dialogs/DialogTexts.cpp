#include "DialogTexts.h"

namespace orvan {

DialogTexts DialogTexts::orvan()
{
    return {
        .resetTitle = QStringLiteral("Reset all channels?"),
        .resetMessage = QStringLiteral("Sets every channel to 18 dB and turns +48V, pad, polarity and mute off. "
                                       "Mute off means the channels will pass signal."),
        .phantomMessagePrefix = QStringLiteral("Make sure no ribbon mic or unbalanced source is connected to channel(s) "),
        .saveTitle = QStringLiteral("Save preset"),
        .saveMessage = QStringLiteral("Saves gain, pad, polarity, mute and +48V for all 8 channels as the app knows them. "
                                      "A preset with the same name is replaced."),
        .recallTitlePrefix = QStringLiteral("Recall preset "),
    };
}

DialogTexts DialogTexts::dunra()
{
    return {
        .resetTitle = QStringLiteral("Reset both Dunra channels?"),
        .resetMessage = QStringLiteral("Sets both channels to 18 dB and turns DI, +48V, pad, polarity and mute off. "
                                       "Mute off means the channels will pass signal."),
        .phantomMessagePrefix =
            QStringLiteral("Make sure no ribbon mic or unbalanced source is connected to Dunra channel(s) "),
        .saveTitle = QStringLiteral("Save Dunra preset"),
        .saveMessage = QStringLiteral("Saves gain, DI, pad, polarity, mute and +48V for both channels as the app knows "
                                      "them. A preset with the same name is replaced."),
        .recallTitlePrefix = QStringLiteral("Recall Dunra preset "),
    };
}

} // namespace orvan
