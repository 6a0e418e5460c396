// SPDX-License-Identifier: MIT
// An observer that records its notifications, and may act on them.
#pragma once

#include "host/observable.h"

#include <QVector>

#include <functional>

class RecordingObserver : public IObserver
{
public:
    struct Notification
    {
        Observable* source;
        TChangeCode code;
    };

    /// Runs after each notification is written down. It may delete this observer.
    std::function<void(Observable* source, TChangeCode code)> onUpdate;

    void Update(Observable* source, TChangeCode code) override
    {
        m_notifications.append({source, code});
        // A copy, since the function may replace itself or delete this observer.
        if (const auto react = onUpdate)
            react(source, code);
    }

    const QVector<Notification>& Notifications() const { return m_notifications; }

    QVector<int> Codes() const
    {
        QVector<int> codes;
        for (const Notification& notification : m_notifications)
            codes.append(notification.code);
        return codes;
    }

    int Count() const { return m_notifications.size(); }
    void Clear() { m_notifications.clear(); }

private:
    QVector<Notification> m_notifications;
};
