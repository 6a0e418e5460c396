// SPDX-License-Identifier: MIT
// Whether every member of a struct of parameters can be set by a name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace testsupport {

/// What is wrong, empty when nothing is; of the first `bytes`. Members are doubles, or integers and
/// floats of half their size with or without a neighbour: eight bytes that begin with nothing but
/// zeros, once every name was set, belong to a member without one.
template <typename Parameters>
std::string memberWithoutName(const std::vector<std::string>& names,
                              std::size_t bytes = sizeof(Parameters))
{
    Parameters parameters;
    std::memset(static_cast<void*>(&parameters), 0, sizeof(parameters));
    std::set<std::string> known;
    for (const std::string& name : names) {
        if (!known.insert(name).second)
            return name + " stands twice";
        if (!setParameter(parameters, name, 1.1))
            return name + " cannot be set";
    }
    std::vector<std::uint32_t> words(bytes / sizeof(std::uint32_t));
    std::memcpy(words.data(), &parameters, bytes);
    for (std::size_t i = 0; i < words.size(); i += 2) {
        if (words[i] == 0)
            return "no name for the member at byte " + std::to_string(sizeof(std::uint32_t) * i);
    }
    return {};
}

} // namespace testsupport
