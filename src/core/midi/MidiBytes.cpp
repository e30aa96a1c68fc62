#include "MidiBytes.h"

namespace orvan::MidiBytes {

std::size_t toBytes(quint32 word, Message& out) noexcept
{
    const auto parts = Midi::partsOf(word);
    if (!parts || !Midi::isChannelStatus(parts->status))
        return 0;
    out = {parts->status, parts->data1, parts->data2};
    return std::size_t(1 + Midi::dataBytesOf(parts->status));
}

} // namespace orvan::MidiBytes
