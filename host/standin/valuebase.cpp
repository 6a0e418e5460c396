// SPDX-License-Identifier: MIT
#include "host/valuebase.h"

#include "host/standin/valuetransactions.h"
#include "host/tree.h"

ValueBase::ValueBase() = default;

ValueBase::~ValueBase()
{
    if (m_tree)
        m_tree->Remove(this);
    if (m_transactions)
        m_transactions->value = nullptr;
}

void ValueBase::AnnounceDeletion()
{
    if (m_isDeleted)
        return;
    m_isDeleted = true;
    m_state = eSTATE_DELETED;
    RefuseObservers();
    Notify(eCHANGE_DELETED, nullptr);
    if (m_tree)
        m_tree->Remove(this);
}

TValueState ValueBase::GetState()
{
    return m_state;
}

void ValueBase::SetState(TValueState state, IObserver* cause)
{
    if (m_isDeleted || state == m_state)
        return;
    m_state = state;
    HasChanged(eCHANGE_STATE, cause);
}

void ValueBase::HasChanged(TChangeCode code, IObserver* cause)
{
    if (m_isDeleted || (m_transactions && m_transactions->IsHeld(code)))
        return;
    Notify(code, cause);
}

void ValueBase::SetName(const QString& name, IObserver* cause)
{
    Q_UNUSED(cause) // nobody finds the value by its name yet
    if (!m_tree)
        m_name = name;
}

QString ValueBase::GetName() const
{
    return m_name;
}

// The plumbing for remote control and recording. A command is "name=text"; there is no remote
// control to wait for, so no timer is ever started and no optimizer is needed.

QString ValueBase::GetCommandStringForTransmission()
{
    return m_name + QLatin1Char('=') + GetStringValue();
}

bool ValueBase::SetCommandString(const QString& command, IObserver* cause)
{
    const QString prefix = m_name + QLatin1Char('=');
    if (!command.startsWith(prefix))
        return false;
    SetStringValue(command.mid(prefix.size()), cause);
    return true;
}

bool ValueBase::SetCommandString(const QStringList& commands, IObserver* cause)
{
    const std::weak_ptr<const void> life = Life();
    bool isTaken = false;
    for (const QString& command : commands) {
        if (life.expired())
            break;
        isTaken = SetCommandString(command, cause) || isTaken;
    }
    return isTaken;
}

QString ValueBase::GetCommandStringForRecording()
{
    return GetCommandStringForTransmission();
}

void ValueBase::SetUpdateTimerTime(int milliseconds)
{
    Q_UNUSED(milliseconds)
}

void ValueBase::OverrideTimer() {}

void ValueBase::KillOverrideTimer() {}

void* ValueBase::CreateCommandListOptimizer()
{
    return nullptr;
}

void ValueBase::OptimizeCommandList(QStringList& commands)
{
    // Of several commands for one value the last decides.
    const QString prefix = m_name + QLatin1Char('=');
    bool isLast = true;
    for (int i = commands.size() - 1; i >= 0; --i) {
        if (!commands.at(i).startsWith(prefix))
            continue;
        if (!isLast)
            commands.removeAt(i);
        isLast = false;
    }
}

void ValueBase::OptimizeCommandList(QStringList& commands, void* optimizer)
{
    Q_UNUSED(optimizer)
    OptimizeCommandList(commands);
}

void ValueBase::PreWorkCommandList(QStringList& commands)
{
    Q_UNUSED(commands)
}

void ValueBase::AddObjectStateStringForTransmission(QStringList& commands)
{
    commands.append(GetCommandStringForTransmission());
}

void ValueBase::AddObjectStateStringForRecording(QStringList& commands)
{
    commands.append(GetCommandStringForRecording());
}

void ValueBase::AddCommand(QStringList& commands)
{
    commands.append(GetCommandStringForRecording());
}

void ValueBase::AddCommandForTransmission(QStringList& commands)
{
    commands.append(GetCommandStringForTransmission());
}

QString ValueBase::CreateNextCommand()
{
    return GetCommandStringForTransmission();
}
