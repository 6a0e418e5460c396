// SPDX-License-Identifier: MIT
// How the stand-in's result documents are kept, for one host's documents among several.
#pragma once

#include "host/hostapi.h"

#include <cstddef>
#include <functional>

namespace TavikResultDataXml {

/// What a document still owes to the disk.
struct ResultBalance
{
    std::size_t waiting; ///< transmissions that a save was to write and could not yet
    std::size_t lost;    ///< transmissions that were given up so far
};

/// What a document follows for as long as it lives.
struct ResultPolicy
{
    /// False for a host that saves nothing: frames are not taken in, and saves write nothing and
    /// succeed, so that memory does not grow with the length of a reception.
    bool isKept = true;
    /// True where every save makes a file of its own: a name that is taken is left alone, and the
    /// next free one used ("name_2.xml").
    bool hasFilePerSave = false;
    /// Called after each save and when the document ends, on the thread that does it.
    std::function<void(const ResultBalance&)> observer = {};
};

/// While it lives, documents that are created follow this policy. Scopes end in the opposite order
/// of their beginning. One thread.
class HOST_API ResultPolicyScope
{
public:
    /// Puts the policy in force.
    explicit ResultPolicyScope(ResultPolicy policy);
    ~ResultPolicyScope();
    ResultPolicyScope(const ResultPolicyScope&) = delete;
    ResultPolicyScope& operator=(const ResultPolicyScope&) = delete;

private:
    ResultPolicy m_before;
};

} // namespace TavikResultDataXml
