// SPDX-License-Identifier: MIT
// Random numbers that are the same on every machine: the standard library's distributions are not.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>

namespace testsupport {

class Random
{
public:
    explicit Random(std::uint64_t seed)
        : m_state(seed)
    {
    }

    /// A generator of its own for every name.
    explicit Random(const std::string& name)
    {
        for (const char c : name)
            m_state = (m_state ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    }

    std::uint64_t next()
    {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

    /// Evenly in [0, 1).
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

    /// Evenly in [0, count).
    std::size_t below(std::size_t count)
    {
        return static_cast<std::size_t>(uniform() * static_cast<double>(count));
    }

    /// Normal, mean 0, deviation 1.
    double gauss()
    {
        if (m_hasSpare) {
            m_hasSpare = false;
            return m_spare;
        }
        const double radius = std::sqrt(-2.0 * std::log(1.0 - uniform()));
        const double angle = 6.283185307179586 * uniform();
        m_spare = radius * std::sin(angle);
        m_hasSpare = true;
        return radius * std::cos(angle);
    }

private:
    std::uint64_t m_state = 1469598103934665603ULL;
    double m_spare = 0.0;
    bool m_hasSpare = false;
};

} // namespace testsupport
