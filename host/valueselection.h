// SPDX-License-Identifier: MIT
// A value that offers a list of items, one of which may be current.
#pragma once

#include "host/valuebase.h"

#include <memory>

/// One item of a selection: what the operator sees, a real number and an integer key.
class HOST_API SelectionItem
{
public:
    /// In no selection yet.
    SelectionItem(const QString& name, double value, long key);

    ///@{
    /// As it was made; an item never changes.
    const QString& GetName() const { return m_name; }
    double GetValue() const { return m_value; }
    long GetKey() const { return m_key; }
    ///@}

private:
    friend class ValueSelection;

    QString m_name;
    double m_value;
    long m_key;
    bool m_isOwned = false; ///< by a selection
};

/// Items keep the order in which they were added. Adding or deleting items makes none of them
/// current; deleting the current one leaves none current. A look-up by something that several
/// items share gives the first of them. A change of the list announces change code 7, a change of
/// the current item by `Select` code 3. The selection owns its items.
class HOST_API ValueSelection : public ValueBase
{
public:
    ValueSelection();
    ~ValueSelection() override;

    /// Selects the item of that name; an unknown name changes nothing.
    void SetStringValue(QString text, IObserver* cause) override;
    /// Name of the current item, empty when none is current.
    QString GetStringValue() override;
    QString GetCommandStringForTransmission() override;
    using ValueBase::SetCommandString;
    bool SetCommandString(const QString& command, IObserver* cause) override;
    ValueType GetType() override;
    QString GetTypeName() override;
    bool Assign(const ValueBase& other) override;
    bool Compare(const ValueBase* other) override;

    /// Null when no item is current.
    virtual SelectionItem* GetCurrentItem();

    /// Each `Select` returns true when an item was selected, also when it was current already.
    virtual bool Select(long key, IObserver* cause);
    /// With `nearest` the item whose value lies nearest is taken, else only an equal one.
    virtual bool Select(double value, IObserver* cause, bool nearest);
    /// By name, null being none.
    virtual bool Select(const wchar_t* name, IObserver* cause);
    /// By name, in exactly this spelling.
    virtual bool Select(const QString& name, IObserver* cause);

    /// Adds one item per name, its key and value being its index in the selection.
    virtual void AddItems(const QStringList& names, IObserver* cause);
    /// Null when an observer deleted the new item at once; the same goes for the next form.
    virtual SelectionItem* AddItem(const QString& name, double value, long key, IObserver* cause);
    /// Takes the item over. Null, or an item that belongs to a selection already, is refused.
    virtual SelectionItem* AddItem(SelectionItem* item, IObserver* cause);
    /// Adds copies of the items of `other`; none of them becomes current.
    virtual void AddItemsFrom(const ValueSelection& other, IObserver* cause);
    /// Deletes the item; one that is not in the list is left alone.
    virtual void DeleteItem(SelectionItem* item, IObserver* cause);
    /// Deletes all; deleting none announces nothing.
    virtual void DeleteItems(IObserver* cause);

    /// Number of items.
    virtual long GetItemCount();
    /// Index of the first item with that key, -1 when absent.
    virtual long GetItemIndex(long key);
    /// By name; null when absent, as for the other two.
    virtual SelectionItem* GetItem(const QString& name);
    /// By an equal value.
    virtual SelectionItem* GetItem(double value);
    /// By index, counted from 0.
    virtual SelectionItem* GetItem(long index);
    /// Value of the current item, 0 when none is current.
    virtual double GetCurrentValue();
    /// Key of the first item of that name, -1 when absent.
    virtual long GetKeyForItemName(const QString& name);

    /// Name of the first item with that key, empty when absent.
    QString GetItemNameForKey(long key);

private:
    class Items;

    SelectionItem* GetItemForKey(long key) const;
    bool MakeCurrent(SelectionItem* item, IObserver* cause);

    std::unique_ptr<Items> m_items;
};
