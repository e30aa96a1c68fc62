#pragma once

#include "MidiSystem.h"

#include <map>
#include <optional>
#include <vector>

namespace orvan {

/// Endpoint refs handed out on first sight of an endpoint, each bound to that endpoint for good:
/// a ref the engine holds keeps meaning the same endpoint across rescans, and 0 stays "none".
/// `Key` names an endpoint in the system underneath (a JACK port's full name, a member system's
/// endpoint).
template <typename Key>
class MidiEndpointRefs {
public:
    MidiEndpointRef refFor(const Key& key)
    {
        const auto it = m_refByKey.find(key);
        if (it != m_refByKey.end())
            return it->second;
        m_keyByRef.push_back(key);
        const auto ref = MidiEndpointRef(m_keyByRef.size());
        m_refByKey.emplace(key, ref);
        return ref;
    }

    std::optional<Key> keyOf(MidiEndpointRef ref) const
    {
        if (ref == 0 || ref > m_keyByRef.size())
            return std::nullopt;
        return m_keyByRef[ref - 1];
    }

private:
    std::map<Key, MidiEndpointRef> m_refByKey;
    std::vector<Key> m_keyByRef; // ref = index + 1
};

} // namespace orvan
