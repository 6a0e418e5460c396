// SPDX-License-Identifier: MIT
#include "host/standin/hosttree.h"
#include "host/valueroles.h"
#include "host/values.h"
#include "support/recordingobserver.h"

#include <QtTest>

#include <utility>

namespace {

// Three roles, of which two may be served by one value.
struct Roles
{
    TextValue* text = nullptr;
    TextValue* otherText = nullptr;
    RealValue* number = nullptr;
    RecordingObserver observer;

    auto all()
    {
        return ValueRoles(&observer, [this](auto visit) {
            visit(text);
            visit(otherText);
            visit(number);
        });
    }
};

struct WiredRoles : Roles
{
    WiredRoles()
    {
        text = otherText = tree.Add<TextValue>(QStringLiteral("Text"));
        number = tree.Add<RealValue>(QStringLiteral("Number"));
        text->AddObserver(&observer);
        number->AddObserver(&observer);
    }
    ~WiredRoles() { all().LeaveAll(); }
    WiredRoles(const WiredRoles&) = delete;
    WiredRoles& operator=(const WiredRoles&) = delete;

    HostTree tree;
};

// Adding an observer that is registered already is refused.
bool isObserved(ValueBase* value, IObserver* observer)
{
    if (!value->AddObserver(observer))
        return true;
    value->DeleteObserver(observer);
    return false;
}

} // namespace

class tst_ValueRoles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aValueIsHeldInAnyRole()
    {
        WiredRoles roles;
        QVERIFY(roles.all().Hold(roles.text));
        QVERIFY(roles.all().Hold(roles.number));
        QVERIFY(!roles.all().Hold(roles.tree.Add<TextValue>(QStringLiteral("Other"))));
        QVERIFY(!roles.all().Hold(nullptr));
        TextValue* const former = std::exchange(roles.text, nullptr);
        QVERIFY(roles.all().Hold(former)); // in the other role
        roles.otherText = nullptr;
        QVERIFY(!roles.all().Hold(former));
        former->DeleteObserver(&roles.observer);
    }

    void aDeletedValueLeavesEveryRole()
    {
        WiredRoles roles;
        TextValue* const text = roles.text;
        RealValue* const number = roles.number;
        text->SetState(eSTATE_DELETED, nullptr);
        roles.all().Forget(text);
        QVERIFY(!roles.text);
        QVERIFY(!roles.otherText);
        QCOMPARE(roles.number, number);
        QVERIFY(!isObserved(text, &roles.observer));
        QVERIFY(isObserved(number, &roles.observer));
    }

    void aValueThatIsThereIsNotForgotten()
    {
        WiredRoles roles;
        roles.all().Forget(roles.text);
        roles.all().Forget(nullptr);
        QVERIFY(roles.text);
        QVERIFY(roles.number);
        QVERIFY(isObserved(roles.text, &roles.observer));
    }

    void allAreLeft()
    {
        WiredRoles roles;
        TextValue* const text = roles.text;
        RealValue* const number = roles.number;
        roles.all().LeaveAll();
        QVERIFY(!roles.text && !roles.otherText && !roles.number);
        QVERIFY(!isObserved(text, &roles.observer));
        QVERIFY(!isObserved(number, &roles.observer));
        roles.all().LeaveAll(); // there is none any more
    }
};

QTEST_APPLESS_MAIN(tst_ValueRoles)
#include "tst_valueroles.moc"
