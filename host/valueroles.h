// SPDX-License-Identifier: MIT
// The values that an observer holds by plain pointers, one pointer a role; null is an empty role.
// No API: used inside the library only.
#pragma once

#include "host/valuelookup.h"

/// The value at `path` that can be held; null also for one that announces its deletion, since it
/// will not announce it again.
template <typename Kind>
Kind* findLivingValue(const QString& path)
{
    Kind* const value = findValue<Kind>(path);
    return value && value->GetState() != eSTATE_DELETED ? value : nullptr;
}

/// The value of a role that is not observed, found again by its path; null when there is none.
template <typename Kind>
Kind* lookUpAgain(Kind*& role, const QString& path)
{
    role = path.isEmpty() ? nullptr : findLivingValue<Kind>(path);
    return role;
}

/// Whether `value` is the one that notifies.
inline bool isSame(const Observable* source, const ValueBase* value)
{
    return value && source == value;
}

/// What an observer does with all of its roles alike. `EachRole` is a function that calls the one
/// it is given with a reference to every pointer; values of several kinds may be among them, and
/// one value in several roles.
template <typename EachRole>
class ValueRoles
{
public:
    /// The observer is the one that is registered with the values.
    ValueRoles(IObserver* observer, EachRole eachRole)
        : m_observer(observer)
        , m_eachRole(eachRole)
    {
    }

    /// Whether `value` is in any role.
    bool Hold(const Observable* value) const
    {
        bool isHeld = false;
        m_eachRole([&](auto*& role) { isHeld = isHeld || isSame(value, role); });
        return isHeld;
    }

    /// For a value that announces its deletion: it leaves every role. Without effect for another.
    void Forget(const Observable* source) const
    {
        m_eachRole([&](auto*& role) {
            if (isSame(source, role) && role->GetState() == eSTATE_DELETED)
                leave(role);
        });
    }

    /// Leaves every value, in the order of the roles.
    void LeaveAll() const
    {
        m_eachRole([&](auto*& role) {
            if (role)
                leave(role);
        });
    }

private:
    template <typename Kind>
    void leave(Kind*& role) const
    {
        role->DeleteObserver(m_observer);
        role = nullptr;
    }

    IObserver* m_observer;
    EachRole m_eachRole;
};
