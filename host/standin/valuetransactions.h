// SPDX-License-Identifier: MIT
// The announcements that open transactions of a value hold back. No API.
#pragma once

#include "host/valuebase.h"

#include <map>

class ValueBase::Transactions
{
public:
    explicit Transactions(ValueBase* owner)
        : value(owner)
    {
    }

    bool IsHeld(TChangeCode code) const { return m_held.count(code) != 0; }
    void Hold(TChangeCode code) { ++m_held[code]; }
    /// Of a code that is held.
    void Release(TChangeCode code)
    {
        const auto held = m_held.find(code);
        if (--held->second == 0)
            m_held.erase(held);
    }

    ValueBase* value; ///< null once the value is gone

private:
    std::map<TChangeCode, int> m_held; ///< code to the number of transactions that hold it
};
