// SPDX-License-Identifier: MIT
#include "host/valueselection.h"

#include <algorithm>
#include <cmath>
#include <vector>

SelectionItem::SelectionItem(const QString& name, double value, long key)
    : m_name(name)
    , m_value(value)
    , m_key(key)
{
}

class ValueSelection::Items
{
public:
    using List = std::vector<std::shared_ptr<SelectionItem>>;

    template <typename Predicate>
    SelectionItem* First(Predicate matches) const
    {
        const auto found = std::find_if(list.begin(), list.end(),
                                        [&](const auto& item) { return matches(*item); });
        return found == list.end() ? nullptr : found->get();
    }

    SelectionItem* Append(const SelectionItem& item)
    {
        list.push_back(std::make_shared<SelectionItem>(item));
        list.back()->m_isOwned = true;
        return list.back().get();
    }

    List list;
    SelectionItem* current = nullptr;
};

ValueSelection::ValueSelection()
    : m_items(std::make_unique<Items>())
{
}

ValueSelection::~ValueSelection()
{
    AnnounceDeletion();
}

void ValueSelection::SetStringValue(QString text, IObserver* cause)
{
    Select(text, cause);
}

QString ValueSelection::GetStringValue()
{
    return m_items->current ? m_items->current->GetName() : QString();
}

QString ValueSelection::GetCommandStringForTransmission()
{
    return ValueBase::GetCommandStringForTransmission();
}

bool ValueSelection::SetCommandString(const QString& command, IObserver* cause)
{
    const QString prefix = GetName() + QLatin1Char('=');
    if (!command.startsWith(prefix))
        return false;
    return Select(command.mid(prefix.size()), cause);
}

ValueType ValueSelection::GetType()
{
    return eTYPE_SELECTION;
}

QString ValueSelection::GetTypeName()
{
    return QStringLiteral("selection");
}

namespace {

bool isEqual(const SelectionItem* a, const SelectionItem* b)
{
    if (!a || !b)
        return a == b;
    return a->GetName() == b->GetName() && a->GetValue() == b->GetValue() &&
           a->GetKey() == b->GetKey();
}

template <typename List>
bool areEqual(const List& a, const List& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& x, const auto& y) { return isEqual(x.get(), y.get()); });
}

} // namespace

bool ValueSelection::Assign(const ValueBase& other)
{
    const auto* const same = dynamic_cast<const ValueSelection*>(&other);
    if (!same)
        return false;
    const bool hasOtherItems = !areEqual(m_items->list, same->m_items->list);
    const bool hasOtherCurrent = !isEqual(m_items->current, same->m_items->current);

    auto copy = std::make_unique<Items>();
    for (const auto& item : same->m_items->list) {
        SelectionItem* const added = copy->Append(*item);
        if (item.get() == same->m_items->current)
            copy->current = added;
    }
    const std::unique_ptr<Items> before = std::exchange(m_items, std::move(copy));

    const std::weak_ptr<const void> life = Life();
    if (hasOtherItems)
        HasChanged(eCHANGE_ITEMS, nullptr);
    if (hasOtherCurrent && !life.expired())
        HasChanged(eCHANGE_CONTENT, nullptr);
    return true;
}

bool ValueSelection::Compare(const ValueBase* other)
{
    const auto* const same = dynamic_cast<const ValueSelection*>(other);
    return same && areEqual(m_items->list, same->m_items->list) &&
           isEqual(m_items->current, same->m_items->current);
}

SelectionItem* ValueSelection::GetCurrentItem()
{
    return m_items->current;
}

bool ValueSelection::MakeCurrent(SelectionItem* item, IObserver* cause)
{
    if (!item)
        return false;
    if (item != m_items->current) {
        m_items->current = item;
        HasChanged(eCHANGE_CONTENT, cause);
    }
    return true;
}

bool ValueSelection::Select(long key, IObserver* cause)
{
    return MakeCurrent(GetItemForKey(key), cause);
}

bool ValueSelection::Select(double value, IObserver* cause, bool nearest)
{
    if (!nearest)
        return MakeCurrent(GetItem(value), cause);
    SelectionItem* best = nullptr;
    for (const auto& item : m_items->list) {
        const double distance = std::abs(item->GetValue() - value);
        if (!std::isnan(distance) && (!best || distance < std::abs(best->GetValue() - value)))
            best = item.get();
    }
    return MakeCurrent(best, cause);
}

bool ValueSelection::Select(const wchar_t* name, IObserver* cause)
{
    if (!name)
        return false;
    return Select(QString::fromWCharArray(name), cause);
}

bool ValueSelection::Select(const QString& name, IObserver* cause)
{
    return MakeCurrent(GetItem(name), cause);
}

void ValueSelection::AddItems(const QStringList& names, IObserver* cause)
{
    if (names.isEmpty())
        return;
    for (const QString& name : names) {
        const long index = GetItemCount();
        m_items->Append(SelectionItem(name, static_cast<double>(index), index));
    }
    HasChanged(eCHANGE_ITEMS, cause);
}

SelectionItem* ValueSelection::AddItem(const QString& name, double value, long key,
                                       IObserver* cause)
{
    return AddItem(new SelectionItem(name, value, key), cause);
}

SelectionItem* ValueSelection::AddItem(SelectionItem* item, IObserver* cause)
{
    if (!item || item->m_isOwned)
        return nullptr;
    const std::shared_ptr<SelectionItem> owned(item);
    item->m_isOwned = true;
    m_items->list.push_back(owned);
    HasChanged(eCHANGE_ITEMS, cause);
    // An observer may have deleted the item, or the whole selection.
    return owned.use_count() > 1 ? item : nullptr;
}

void ValueSelection::AddItemsFrom(const ValueSelection& other, IObserver* cause)
{
    const Items::List added = other.m_items->list; // a copy, since `other` may be this selection
    if (added.empty())
        return;
    for (const auto& item : added)
        m_items->Append(*item);
    HasChanged(eCHANGE_ITEMS, cause);
}

void ValueSelection::DeleteItem(SelectionItem* item, IObserver* cause)
{
    auto& list = m_items->list;
    const auto found = std::find_if(list.begin(), list.end(),
                                    [item](const auto& owned) { return owned.get() == item; });
    if (found == list.end())
        return;
    // Freed when everybody has heard of it.
    const std::shared_ptr<SelectionItem> deleted = *found;
    list.erase(found);
    if (m_items->current == item)
        m_items->current = nullptr;
    HasChanged(eCHANGE_ITEMS, cause);
}

void ValueSelection::DeleteItems(IObserver* cause)
{
    if (m_items->list.empty())
        return;
    const auto deleted = std::exchange(m_items->list, {});
    m_items->current = nullptr;
    HasChanged(eCHANGE_ITEMS, cause);
}

long ValueSelection::GetItemCount()
{
    return static_cast<long>(m_items->list.size());
}

long ValueSelection::GetItemIndex(long key)
{
    for (std::size_t i = 0; i < m_items->list.size(); ++i) {
        if (m_items->list[i]->GetKey() == key)
            return static_cast<long>(i);
    }
    return -1;
}

SelectionItem* ValueSelection::GetItem(const QString& name)
{
    return m_items->First([&](const SelectionItem& item) { return item.GetName() == name; });
}

SelectionItem* ValueSelection::GetItem(double value)
{
    return m_items->First([&](const SelectionItem& item) { return item.GetValue() == value; });
}

SelectionItem* ValueSelection::GetItem(long index)
{
    if (index < 0 || index >= GetItemCount())
        return nullptr;
    return m_items->list[static_cast<std::size_t>(index)].get();
}

double ValueSelection::GetCurrentValue()
{
    return m_items->current ? m_items->current->GetValue() : 0.0;
}

long ValueSelection::GetKeyForItemName(const QString& name)
{
    const SelectionItem* const item = GetItem(name);
    return item ? item->GetKey() : -1;
}

QString ValueSelection::GetItemNameForKey(long key)
{
    const SelectionItem* const item = GetItemForKey(key);
    return item ? item->GetName() : QString();
}

SelectionItem* ValueSelection::GetItemForKey(long key) const
{
    return m_items->First([key](const SelectionItem& item) { return item.GetKey() == key; });
}
