#pragma once

#include "MidiSystem.h"

#include <vector>

namespace orvan {

/// A MIDI system that answers the counts and indexes from the two listings here: filled on
/// refresh() by the host systems, kept current on every change by the in-process one.
class ListingMidiSystem : public MidiSystem {
public:
    int sourceCount() const final { return int(m_sources.size()); }
    MidiEndpointRef source(int index) const final { return at(m_sources, index); }
    int destinationCount() const final { return int(m_destinations.size()); }
    MidiEndpointRef destination(int index) const final { return at(m_destinations, index); }

protected:
    std::vector<MidiEndpointRef> m_sources;
    std::vector<MidiEndpointRef> m_destinations;

private:
    static MidiEndpointRef at(const std::vector<MidiEndpointRef>& listing, int index)
    {
        return index >= 0 && index < int(listing.size()) ? listing[std::size_t(index)] : 0;
    }
};

} // namespace orvan
