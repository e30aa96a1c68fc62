#pragma once

#include <cstdint>

namespace orvan::render {

/// The published SplitMix64 generator: the brushed grain's deterministic random source.
class SplitMix64 {
public:
    explicit SplitMix64(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next()
    {
        m_state += 0x9E3779B97F4A7C15ull;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }

    /// A double uniformly in [a, b], drawn as the grain has always drawn it: a 53-bit fraction
    /// taken from the high half of a 128-bit product, redrawing the few biased outputs.
    double uniform(double a, double b)
    {
        constexpr std::uint64_t kSpan = (std::uint64_t(1) << 53) + 1;
        constexpr std::uint64_t kThreshold = (std::uint64_t(1) << 53) - 2047; // 0x1FFFFFFFFFF801
        unsigned __int128 product;
        do {
            product = static_cast<unsigned __int128>(next()) * kSpan;
        } while (static_cast<std::uint64_t>(product) < kThreshold);
        const auto r = static_cast<std::uint64_t>(product >> 64);
        if (r == (std::uint64_t(1) << 53))
            return b;
        return (b - a) * (double(r) * 0x1p-53) + a;
    }

    /// White when bit 17 of one output is 0, black when it is 1.
    bool drawWhite() { return ((next() >> 17) & 1u) == 0; }

private:
    std::uint64_t m_state;
};

} // namespace orvan::render
