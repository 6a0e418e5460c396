// SPDX-License-Identifier: MIT
// The values of one station: they lie below one place of the tree and go with the station.
#pragma once

#include "host/standin/hosttree.h"
#include "host/valuebase.h"

#include <QString>

#include <utility>
#include <vector>

namespace morsehost {

class ValueBranch
{
public:
    /// Nothing else lies below `place` ("Receiver1"). The tree outlives the branch.
    ValueBranch(HostTree& tree, QString place)
        : m_tree(tree)
        , m_place(std::move(place))
    {
    }

    /// Deletes the values, each announcing that; the last one first.
    ~ValueBranch()
    {
        while (!m_values.empty()) {
            delete m_values.back();
            m_values.pop_back();
        }
    }

    ValueBranch(const ValueBranch&) = delete;
    ValueBranch& operator=(const ValueBranch&) = delete;

    QString path(const char* name) const
    {
        return m_place + QLatin1Char('/') + QLatin1String(name);
    }

    /// A new value under a name that is not taken yet.
    template <typename Kind>
    Kind* add(const char* name)
    {
        auto* const value = m_tree.Add<Kind>(path(name));
        m_values.push_back(value);
        return value;
    }

private:
    HostTree& m_tree;
    QString m_place;
    std::vector<ValueBase*> m_values;
};

} // namespace morsehost
