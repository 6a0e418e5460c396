// SPDX-License-Identifier: MIT
// Notification that survives whatever its observers do.
//
// A notification walks over a snapshot of the order of observers. Nothing ever changes a snapshot
// but the removal of an observer, which empties its entry wherever the entry is referred to; so an
// observer that is added in between is in no running walk, one that is moved is notified once, and
// a value that is deleted ends every walk by emptying all entries. Adding and removing costs the
// same whatever the number of observers, apart from one copy of the order per notification that
// it happens in.
#include "host/observable.h"

#include <unordered_map>
#include <vector>

namespace {

struct Entry
{
    IObserver* observer; ///< null once removed
};

using Order = std::vector<std::shared_ptr<Entry>>;

} // namespace

class Observable::List
{
public:
    bool Contains(IObserver* observer) const { return m_entries.count(observer) != 0; }

    void Append(IObserver* observer)
    {
        const auto entry = std::make_shared<Entry>(Entry{observer});
        if (m_order.use_count() > 1)
            CopyOrder({});
        m_order->push_back(entry);
        m_entries.emplace(observer, entry);
    }

    void MoveToHead(IObserver* observer)
    {
        auto& entry = m_entries[observer];
        if (!entry)
            entry = std::make_shared<Entry>(Entry{observer});
        CopyOrder(entry);
    }

    void Remove(IObserver* observer)
    {
        const auto found = m_entries.find(observer);
        if (found == m_entries.end())
            return;
        found->second->observer = nullptr;
        m_entries.erase(found);
        if (m_order->size() > 2 * m_entries.size())
            CopyOrder({});
    }

    void Clear()
    {
        for (const auto& entry : m_entries)
            entry.second->observer = nullptr;
        m_entries.clear();
        m_order = std::make_shared<Order>();
    }

    std::shared_ptr<const Order> Snapshot() const { return m_order; }

    bool isClosed = false;

private:
    /// Leaves the old order to the walks that use it.
    void CopyOrder(const std::shared_ptr<Entry>& head)
    {
        auto order = std::make_shared<Order>();
        order->reserve(m_entries.size() + 1);
        if (head)
            order->push_back(head);
        for (const auto& entry : *m_order) {
            if (entry->observer && entry != head)
                order->push_back(entry);
        }
        m_order = std::move(order);
    }

    std::shared_ptr<Order> m_order = std::make_shared<Order>();
    std::unordered_map<IObserver*, std::shared_ptr<Entry>> m_entries;
};

IObserver::~IObserver() = default;

Observable::Observable()
    : m_list(std::make_shared<List>())
{
}

Observable::~Observable()
{
    m_list->Clear();
}

bool Observable::AddObserver(IObserver* observer)
{
    if (!observer || m_list->isClosed || m_list->Contains(observer))
        return false;
    m_list->Append(observer);
    return true;
}

void Observable::MakeFirstObserver(IObserver* observer)
{
    if (observer && !m_list->isClosed)
        m_list->MoveToHead(observer);
}

void Observable::DeleteObserver(IObserver* observer)
{
    m_list->Remove(observer);
}

void Observable::DeleteObservers()
{
    m_list->Clear();
}

void Observable::Notify(TChangeCode code, const IObserver* cause)
{
    const std::shared_ptr<const Order> order = m_list->Snapshot();
    for (const auto& entry : *order) {
        if (entry->observer && entry->observer != cause)
            entry->observer->Update(this, code);
    }
}

void Observable::RefuseObservers()
{
    m_list->isClosed = true;
}

std::weak_ptr<const void> Observable::Life() const
{
    return m_list;
}
