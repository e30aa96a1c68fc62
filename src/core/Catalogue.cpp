#include "Catalogue.h"

namespace orvan::Catalogue {

DeviceSpec orvan()
{
    return {.title = "Orvan", .portName = "Orvan", .channelCount = 8, .hasDI = false,
            .fineTracking = true, .presetFile = "presets.json", .hasHPF = false,
            .maxGainValue = 24, .verified = true};
}

DeviceSpec dunra()
{
    return {.title = "Dunra", .portName = "Dunra", .channelCount = 2, .hasDI = true,
            .fineTracking = false, .presetFile = "presets-dunra.json", .hasHPF = false,
            .maxGainValue = 24, .verified = true};
}

DeviceSpec melko()
{
    // Melko's messages are unconfirmed: it is listened to, never driven. Its top gain is 23, not 24.
    return {.title = "Melko", .portName = "Melko", .channelCount = 1, .hasDI = false,
            .fineTracking = false, .presetFile = "presets-melko.json", .hasHPF = true,
            .maxGainValue = 23, .verified = false};
}

QList<DeviceSpec> all()
{
    return {orvan(), dunra(), melko()};
}

} // namespace orvan::Catalogue
