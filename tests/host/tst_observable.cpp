// SPDX-License-Identifier: MIT
// What observers may do to each other and to the value while they are notified of a change.
#include "host/values.h"
#include "support/recordingobserver.h"

#include <QtTest>

#include <memory>
#include <vector>

namespace {

const QVector<int> CONTENT{eCHANGE_CONTENT};
const QVector<int> NOTHING{};

void change(TextValue& value)
{
    value.SetValue(value.GetValue() + QLatin1Char('x'), nullptr);
}

/// Registered for as long as it lives; the value lives longer.
class Registered : public RecordingObserver
{
public:
    explicit Registered(TextValue& value)
        : m_value(value)
    {
        value.AddObserver(this);
    }
    ~Registered() override { m_value.DeleteObserver(this); }

private:
    TextValue& m_value;
};

} // namespace

class tst_Observable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void observersAreNotifiedInTheOrderOfRegistration()
    {
        TextValue value;
        QVector<int> order;
        RecordingObserver a;
        RecordingObserver b;
        a.onUpdate = [&](Observable*, TChangeCode) { order.append(1); };
        b.onUpdate = [&](Observable*, TChangeCode) { order.append(2); };
        QVERIFY(value.AddObserver(&a));
        QVERIFY(value.AddObserver(&b));
        change(value);
        QCOMPARE(order, (QVector<int>{1, 2}));
        QCOMPARE(a.Notifications().first().source, static_cast<Observable*>(&value));
        value.DeleteObservers();
    }

    void registeringTwiceIsRefusedAndNotifiesOnce()
    {
        TextValue value;
        RecordingObserver observer;
        QVERIFY(value.AddObserver(&observer));
        QVERIFY(!value.AddObserver(&observer));
        change(value);
        QCOMPARE(observer.Codes(), CONTENT);
        value.DeleteObserver(&observer);
        change(value);
        QCOMPARE(observer.Codes(), CONTENT);
    }

    void nobodyIsNoObserver()
    {
        TextValue value;
        QVERIFY(!value.AddObserver(nullptr));
        value.MakeFirstObserver(nullptr);
        value.DeleteObserver(nullptr);
        change(value);
    }

    void whoIsNotRegisteredCanBeDeregistered()
    {
        TextValue value;
        Registered observer(value);
        RecordingObserver stranger;
        value.DeleteObserver(&stranger);
        change(value);
        QCOMPARE(observer.Codes(), CONTENT);
    }

    void theFirstObserverIsNotifiedFirst()
    {
        TextValue value;
        QString order;
        RecordingObserver a;
        RecordingObserver b;
        RecordingObserver c;
        a.onUpdate = [&](Observable*, TChangeCode) { order += QLatin1Char('a'); };
        b.onUpdate = [&](Observable*, TChangeCode) { order += QLatin1Char('b'); };
        c.onUpdate = [&](Observable*, TChangeCode) { order += QLatin1Char('c'); };
        value.AddObserver(&a);
        value.AddObserver(&b);
        value.MakeFirstObserver(&b); // was registered
        change(value);
        QCOMPARE(order, QStringLiteral("ba"));
        order.clear();
        value.MakeFirstObserver(&c); // was not
        change(value);
        QCOMPARE(order, QStringLiteral("cba"));
        QVERIFY(!value.AddObserver(&c));
        value.DeleteObservers();
    }

    void theCauseIsNotNotified()
    {
        TextValue value;
        Registered cause(value);
        Registered other(value);
        value.SetValue(QStringLiteral("new"), &cause);
        value.HasChanged(eCHANGE_FORCED, &cause);
        QCOMPARE(cause.Codes(), NOTHING);
        QCOMPARE(other.Codes(), (QVector<int>{eCHANGE_CONTENT, eCHANGE_FORCED}));
    }

    void anObserverMayRemoveItself()
    {
        TextValue value;
        RecordingObserver leaving;
        leaving.onUpdate = [&](Observable*, TChangeCode) { value.DeleteObserver(&leaving); };
        value.AddObserver(&leaving);
        Registered staying(value);
        change(value);
        change(value);
        QCOMPARE(leaving.Codes(), CONTENT);
        QCOMPARE(staying.Count(), 2);
    }

    void aRemovedObserverIsNotNotifiedAnyMore()
    {
        TextValue value;
        Registered first(value);
        Registered second(value);
        first.onUpdate = [&](Observable*, TChangeCode) { value.DeleteObserver(&second); };
        change(value);
        QCOMPARE(first.Codes(), CONTENT);
        QCOMPARE(second.Codes(), NOTHING);
    }

    void everybodyMayBeRemovedAtOnce()
    {
        TextValue value;
        Registered first(value);
        Registered second(value);
        first.onUpdate = [&](Observable*, TChangeCode) { value.DeleteObservers(); };
        change(value);
        change(value);
        QCOMPARE(first.Codes(), CONTENT);
        QCOMPARE(second.Codes(), NOTHING);
    }

    void aDeletedObserverIsNotNotifiedAnyMore()
    {
        TextValue value;
        Registered first(value);
        auto second = std::make_unique<Registered>(value);
        Registered third(value);
        first.onUpdate = [&](Observable*, TChangeCode) { second.reset(); };
        change(value);
        QVERIFY(!second);
        QCOMPARE(third.Codes(), CONTENT);
    }

    void anObserverMayDeleteItself()
    {
        TextValue value;
        auto* const suicidal = new Registered(value);
        Registered other(value);
        suicidal->onUpdate = [&](Observable*, TChangeCode) { delete suicidal; };
        change(value);
        change(value);
        QCOMPARE(other.Count(), 2);
    }

    void anAddedObserverHearsOfTheNextChange()
    {
        TextValue value;
        Registered first(value);
        RecordingObserver added;
        first.onUpdate = [&](Observable*, TChangeCode) { value.AddObserver(&added); };
        change(value);
        QCOMPARE(added.Codes(), NOTHING);
        change(value);
        QCOMPARE(added.Codes(), CONTENT);
        value.DeleteObserver(&added);
    }

    void anObserverAddedAtTheHeadHearsOfTheNextChange()
    {
        TextValue value;
        Registered first(value);
        Registered second(value);
        RecordingObserver added;
        first.onUpdate = [&](Observable*, TChangeCode) { value.MakeFirstObserver(&added); };
        change(value);
        QCOMPARE(added.Codes(), NOTHING);
        QCOMPARE(second.Codes(), CONTENT);
        change(value);
        QCOMPARE(added.Codes(), CONTENT);
        QCOMPARE(second.Count(), 2);
        value.DeleteObserver(&added);
    }

    void whoLeavesAndComesBackIsNotNotifiedTwice()
    {
        TextValue value;
        Registered first(value);
        Registered second(value);
        first.onUpdate = [&](Observable*, TChangeCode) {
            value.DeleteObserver(&first);
            value.AddObserver(&first);
            value.DeleteObserver(&second);
            value.AddObserver(&second);
        };
        change(value);
        QCOMPARE(first.Codes(), CONTENT);
        QCOMPARE(second.Codes(), NOTHING); // as it was added during the notification
        first.onUpdate = nullptr;
        change(value);
        QCOMPARE(first.Count(), 2);
        QCOMPARE(second.Count(), 1);
    }

    void whoIsMovedToTheHeadIsNotifiedOnce()
    {
        TextValue value;
        Registered first(value);
        Registered second(value);
        Registered third(value);
        first.onUpdate = [&](Observable*, TChangeCode) { value.MakeFirstObserver(&third); };
        second.onUpdate = [&](Observable*, TChangeCode) { value.MakeFirstObserver(&first); };
        change(value);
        QCOMPARE(first.Codes(), CONTENT);
        QCOMPARE(second.Codes(), CONTENT);
        QCOMPARE(third.Codes(), CONTENT);
    }

    void aChangeInsideANotificationReachesEverybodyOnce()
    {
        TextValue value;
        Registered first(value);
        Registered second(value);
        QVector<QString> seenByFirst;
        QVector<QString> seenBySecond;
        first.onUpdate = [&](Observable*, TChangeCode) {
            seenByFirst.append(value.GetValue());
            if (value.GetValue() == QLatin1String("outer"))
                value.SetValue(QStringLiteral("inner"), nullptr);
        };
        second.onUpdate = [&](Observable*, TChangeCode) { seenBySecond.append(value.GetValue()); };
        value.SetValue(QStringLiteral("outer"), nullptr);
        QCOMPARE(seenByFirst, (QVector<QString>{QStringLiteral("outer"), QStringLiteral("inner")}));
        // Two changes, two notifications; both come when the second change is already made.
        QCOMPARE(seenBySecond,
                 (QVector<QString>{QStringLiteral("inner"), QStringLiteral("inner")}));
    }

    void writingAnotherValueInsideANotificationNotifiesItsObservers()
    {
        TextValue value;
        TextValue other;
        Registered observer(value);
        Registered ofOther(other);
        observer.onUpdate = [&](Observable*, TChangeCode) {
            other.SetValue(value.GetValue(), nullptr);
        };
        ofOther.onUpdate = [&](Observable*, TChangeCode) {
            value.SetValue(other.GetValue(), nullptr);
        };
        change(value);
        QCOMPARE(observer.Codes(), CONTENT);
        QCOMPARE(ofOther.Codes(), CONTENT);
    }

    void theValueMayBeDeletedInsideANotification()
    {
        auto* value = new TextValue;
        RecordingObserver first;
        RecordingObserver second;
        value->AddObserver(&first);
        value->AddObserver(&second);
        first.onUpdate = [&](Observable*, TChangeCode code) {
            if (code == eCHANGE_CONTENT)
                delete value;
        };
        change(*value);
        QCOMPARE(first.Codes(), (QVector<int>{eCHANGE_CONTENT, eCHANGE_DELETED}));
        QCOMPARE(second.Codes(), QVector<int>{eCHANGE_DELETED}); // and not of the content after it
    }

    void theValueMayBeDeletedInsideANestedNotification()
    {
        auto* value = new TextValue;
        RecordingObserver first;
        RecordingObserver second;
        value->AddObserver(&first);
        value->AddObserver(&second);
        first.onUpdate = [&](Observable*, TChangeCode code) {
            if (code == eCHANGE_CONTENT && value->GetValue() == QLatin1String("outer"))
                value->SetValue(QStringLiteral("inner"), &first);
        };
        second.onUpdate = [&](Observable*, TChangeCode code) {
            if (code == eCHANGE_CONTENT)
                delete value;
        };
        value->SetValue(QStringLiteral("outer"), nullptr);
        QCOMPARE(first.Codes(), (QVector<int>{eCHANGE_CONTENT, eCHANGE_DELETED}));
        QCOMPARE(second.Codes(), (QVector<int>{eCHANGE_CONTENT, eCHANGE_DELETED}));
    }

    void anotherValueMayBeDeletedInsideANotification()
    {
        TextValue value;
        auto* other = new TextValue;
        Registered observer(value);
        RecordingObserver ofOther;
        other->AddObserver(&ofOther);
        observer.onUpdate = [&](Observable*, TChangeCode) { delete other; };
        change(value);
        QCOMPARE(ofOther.Codes(), QVector<int>{eCHANGE_DELETED});
    }

    void aThousandObserversMayDeregisterWhenTheValueIsDeleted()
    {
        auto* value = new TextValue;
        std::vector<std::unique_ptr<RecordingObserver>> observers;
        for (int i = 0; i < 1000; ++i) {
            observers.push_back(std::make_unique<RecordingObserver>());
            auto* const observer = observers.back().get();
            observer->onUpdate = [=](Observable*, TChangeCode) { value->DeleteObserver(observer); };
            value->AddObserver(observer);
        }
        delete value;
        for (const auto& observer : observers)
            QCOMPARE(observer->Codes(), QVector<int>{eCHANGE_DELETED});
    }

    void anyMixtureOfActsInsideNotificationsIsSurvived()
    {
        // Observers that add, move, remove and write at random; the sanitizers watch.
        for (quint32 seed = 1; seed <= 200; ++seed) {
            quint32 state = seed * 2654435761u;
            const auto random = [&state](quint32 below) {
                state = state * 1664525u + 1013904223u;
                return (state >> 8) % below;
            };
            auto value = std::make_unique<TextValue>();
            std::vector<std::unique_ptr<RecordingObserver>> observers(8);
            int depth = 0;
            int acts = 0;
            const auto act = [&](Observable*, TChangeCode) {
                if (!value || ++acts > 500 || depth > 5)
                    return;
                ++depth;
                const auto& subject = observers[random(8)];
                switch (random(7)) {
                case 0:
                    value->AddObserver(subject.get());
                    break;
                case 1:
                    value->MakeFirstObserver(subject.get());
                    break;
                case 2:
                    value->DeleteObserver(subject.get());
                    break;
                case 3:
                    change(*value);
                    break;
                case 4:
                    value->HasChanged(eCHANGE_FORCED, subject.get());
                    break;
                case 5:
                    if (random(20) == 0)
                        value->DeleteObservers();
                    break;
                default:
                    if (random(50) == 0)
                        value.reset();
                    break;
                }
                --depth;
            };
            for (auto& observer : observers) {
                observer = std::make_unique<RecordingObserver>();
                observer->onUpdate = act;
                value->AddObserver(observer.get());
            }
            for (int i = 0; i < 50 && value; ++i)
                change(*value);
            value.reset(); // before its observers
        }
    }
};

QTEST_APPLESS_MAIN(tst_Observable)
#include "tst_observable.moc"
