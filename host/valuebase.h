// SPDX-License-Identifier: MIT
// The common base of all values of the host's tree.
#pragma once

#include "host/hostapi.h"
#include "host/observable.h"

#include <QString>
#include <QStringList>

#include <memory>

class Tree;
class ValueTransaction;

/// State of a value. Users of a value test for `eSTATE_DELETED` only.
enum TValueState : int {
    eSTATE_VALID = 0,
    eSTATE_DELETED = 1, ///< the value is announcing its deletion (change code 2)
};

/// Kind of a value, for the host's remote control.
enum ValueType : int {
    eTYPE_TEXT,
    eTYPE_FLAG,
    eTYPE_INTEGER,
    eTYPE_REAL,
    eTYPE_SELECTION,
};

/// A named, observable node of the value tree.
///
/// A value starts unnamed and outside the tree. Once inserted it belongs to the tree; a user that
/// looked it up keeps a plain pointer and drops it at change code 2. Deleting a value sets
/// state 1, sends code 2 to its observers and then takes it out of the tree.
///
/// The virtual operations stand in the order in which the host's libraries call them; that order
/// is binary interface and never changes. Every writing operation takes the observer that causes
/// the change, which is not notified; null means that everybody is.
class HOST_API ValueBase : public Observable
{
public:
    virtual ~ValueBase();

    /// Reads the value from text; text that is no such value changes nothing.
    virtual void SetStringValue(QString text, IObserver* cause) = 0;
    /// The value as text.
    virtual QString GetStringValue() = 0;
    /// `eSTATE_DELETED` once the deletion is announced.
    virtual TValueState GetState();
    /// Announces change code 4 when the state is another than before. A value that has announced
    /// its deletion stays in state 1.
    virtual void SetState(TValueState state, IObserver* cause);
    /// Notifies every observer but `cause`, also when nothing changed. A value that has announced
    /// its deletion announces nothing more.
    virtual void HasChanged(TChangeCode code, IObserver* cause);

    ///@{
    /// Remote control and recording: the host's own plumbing, which no plug-in calls.
    virtual QString GetCommandStringForTransmission();
    virtual bool SetCommandString(const QString& command, IObserver* cause);
    virtual bool SetCommandString(const QStringList& commands, IObserver* cause);
    ///@}
    /// Which kind of value this is.
    virtual ValueType GetType() = 0;
    /// The same as a word.
    virtual QString GetTypeName() = 0;
    /// Takes over the content of a value of the same kind; false and unchanged for another kind.
    virtual bool Assign(const ValueBase& other) = 0;
    /// True when `other` is of the same kind and has the same content.
    virtual bool Compare(const ValueBase* other) = 0;
    ///@{
    /// As above: plumbing of the host.
    virtual QString GetCommandStringForRecording();
    virtual void SetUpdateTimerTime(int milliseconds);
    virtual void OverrideTimer();
    virtual void KillOverrideTimer();
    virtual void* CreateCommandListOptimizer();
    virtual void OptimizeCommandList(QStringList& commands);
    virtual void OptimizeCommandList(QStringList& commands, void* optimizer);
    virtual void PreWorkCommandList(QStringList& commands);
    virtual void AddObjectStateStringForTransmission(QStringList& commands);
    virtual void AddObjectStateStringForRecording(QStringList& commands);
    virtual void AddCommand(QStringList& commands);
    virtual void AddCommandForTransmission(QStringList& commands);
    virtual QString CreateNextCommand();
    ///@}

    /// Names a value that is not in the tree yet. A value in the tree keeps the name under which
    /// it can be found.
    void SetName(const QString& name, IObserver* cause);
    /// Empty before `SetName`.
    QString GetName() const;

protected:
    /// Without a name, in no tree.
    ValueBase();

    /// Every destructor of a concrete value calls this first, while observers can still use the
    /// whole value. Only the first call announces.
    void AnnounceDeletion();

private:
    friend class Tree;
    friend class ValueTransaction;

    class Transactions;

    QString m_name;
    TValueState m_state = eSTATE_VALID;
    bool m_isDeleted = false;                     ///< the deletion has been announced
    std::shared_ptr<Transactions> m_transactions; ///< null before the first transaction
    Tree* m_tree = nullptr;                       ///< the tree that owns the value, null outside
    QString m_path;                               ///< full path in that tree
};
