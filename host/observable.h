// SPDX-License-Identifier: MIT
// The notifying and the observing side of every host value, and the reasons of a notification.
#pragma once

#include "host/hostapi.h"

#include <memory>

class Observable;

/// Why an observer is notified. A host may send any other number; observers ignore what they do not
/// know.
enum TChangeCode : int {
    eCHANGE_DELETED = 2, ///< the value is being deleted and reports state `eSTATE_DELETED`
    eCHANGE_CONTENT = 3, ///< the content changed: the ordinary notification
    eCHANGE_STATE = 4,   ///< the state changed
    eCHANGE_ITEMS = 7,   ///< the item list of a selection changed
    eCHANGE_FORCED = 19, ///< evaluate again although nothing changed
};

/// Hears of changes. Not owned by what it observes; it deregisters before it is destroyed.
class HOST_API IObserver
{
public:
    virtual ~IObserver();

    /// Called on the thread that made the change. `source` is the `Observable` part of the value;
    /// recognise the value by comparing addresses. An exception must not leave this function.
    virtual void Update(Observable* source, TChangeCode code) = 0;

protected:
    IObserver() = default;
    IObserver(const IObserver&) = default;
    IObserver& operator=(const IObserver&) = default;
};

/// Keeps a list of observers and notifies them in the order of their registration.
///
/// Not safe for concurrent use. During a notification an observer may add or remove observers
/// (itself included), change the same or other values, or delete the value: an observer that was
/// removed is not notified any more, one that was added hears of the next change only, and nobody
/// is notified twice of one change.
class HOST_API Observable
{
public:
    /// False, and without effect, when `observer` is null or registered already, or when the
    /// value has announced its deletion.
    bool AddObserver(IObserver* observer);

    /// Moves a registered observer to the head of the order; registers it there otherwise.
    void MakeFirstObserver(IObserver* observer);

    /// Without effect when `observer` is not registered.
    void DeleteObserver(IObserver* observer);
    /// Removes all of them.
    void DeleteObservers();

    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

protected:
    Observable();
    ~Observable();

    /// Notifies every observer but `cause`. The object may be gone when this returns.
    void Notify(TChangeCode code, const IObserver* cause);

    /// No observer can register from now on.
    void RefuseObservers();

    /// Expires with the object: shows, after a notification, whether the object still exists.
    std::weak_ptr<const void> Life() const;

private:
    class List;
    std::shared_ptr<List> m_list;
};
