// SPDX-License-Identifier: MIT
#include "host/standin/hosttree.h"
#include "host/values.h"
#include "support/recordingobserver.h"

#include <QtTest>

#include <memory>

class tst_HostTree : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thereIsATreeWhileTheHostHasOne()
    {
        QVERIFY(!Tree::Instance());
        {
            HostTree tree;
            QCOMPARE(Tree::Instance(), static_cast<Tree*>(&tree));
        }
        QVERIFY(!Tree::Instance());
    }

    void theNewestOfSeveralTreesCounts()
    {
        HostTree outer;
        {
            HostTree inner;
            QCOMPARE(Tree::Instance(), static_cast<Tree*>(&inner));
        }
        QCOMPARE(Tree::Instance(), static_cast<Tree*>(&outer));
    }

    void treesMayEndInAnyOrder()
    {
        auto first = std::make_unique<HostTree>();
        auto second = std::make_unique<HostTree>();
        first.reset();
        QCOMPARE(Tree::Instance(), static_cast<Tree*>(second.get()));
        second.reset();
        QVERIFY(!Tree::Instance());
    }

    void aValueIsFoundWhereItWasAdded()
    {
        HostTree tree;
        auto* const text = tree.Add<TextValue>(QStringLiteral("a/b/text"));
        QVERIFY(text);
        QCOMPARE(text->GetName(), QStringLiteral("text"));
        QCOMPARE(tree.Find(QStringLiteral("a/b/text")), static_cast<ValueBase*>(text));
        QVERIFY(!tree.Find(QStringLiteral("a/b")));
        QVERIFY(!tree.Find(QStringLiteral("a/b/Text")));
        QVERIFY(!tree.Find(QString()));
    }

    void aNameIsTakenOncePerParent()
    {
        HostTree tree;
        QVERIFY(tree.Add<TextValue>(QStringLiteral("a/x")));
        QVERIFY(!tree.Add<TextValue>(QStringLiteral("a/x")));
        QVERIFY(!tree.Add<FlagValue>(QStringLiteral("a/x")));
        QVERIFY(tree.Add<FlagValue>(QStringLiteral("b/x")));
        QVERIFY(tree.Add<FlagValue>(QStringLiteral("x")));
    }

    void whatCannotBeFoundIsNotInserted()
    {
        HostTree tree;
        QVERIFY(!tree.Insert(QStringLiteral("a/"), nullptr));
        TextValue nameless;
        QVERIFY(!tree.Insert(QStringLiteral("a/"), &nameless));
        TextValue slashed;
        slashed.SetName(QStringLiteral("b/c"), nullptr);
        QVERIFY(!tree.Insert(QStringLiteral("a/"), &slashed));
        TextValue named;
        named.SetName(QStringLiteral("b"), nullptr);
        QVERIFY(!tree.Insert(QStringLiteral("a"), &named));
        QVERIFY(!tree.Find(QStringLiteral("ab")));
        QVERIFY(!tree.Add<TextValue>(QString()));
        QVERIFY(!tree.Add<TextValue>(QStringLiteral("a/")));
    }

    void aValueIsInOneTreeAtATime()
    {
        HostTree tree;
        HostTree other;
        auto* const value = tree.Add<TextValue>(QStringLiteral("a/x"));
        QVERIFY(!tree.Insert(QStringLiteral("b/"), value));
        QVERIFY(!other.Insert(QStringLiteral("a/"), value));
    }

    void aValueInTheTreeKeepsItsName()
    {
        HostTree tree;
        auto* const value = tree.Add<TextValue>(QStringLiteral("a/x"));
        value->SetName(QStringLiteral("y"), nullptr);
        QCOMPARE(value->GetName(), QStringLiteral("x"));
        QCOMPARE(tree.Find(QStringLiteral("a/x")), static_cast<ValueBase*>(value));
    }

    void aDeletedValueLeavesTheTreeAfterItsAnnouncement()
    {
        HostTree tree;
        auto* const value = tree.Add<TextValue>(QStringLiteral("a/x"));
        RecordingObserver observer;
        bool wasFound = false;
        observer.onUpdate = [&](Observable*, TChangeCode) {
            wasFound = tree.Find(QStringLiteral("a/x")) == value;
        };
        value->AddObserver(&observer);
        delete value;
        QVERIFY(wasFound);
        QVERIFY(!tree.Find(QStringLiteral("a/x")));
        QVERIFY2(tree.Add<FlagValue>(QStringLiteral("a/x")), "the name is free again");
    }

    void theEndOfTheTreeDeletesEveryValue()
    {
        RecordingObserver observer;
        QStringList order;
        {
            HostTree tree;
            for (const char* path : {"b/x", "a/y", "a/x"}) {
                auto* const value = tree.Add<TextValue>(QLatin1String(path));
                value->AddObserver(&observer);
            }
            observer.onUpdate = [&](Observable* source, TChangeCode) {
                order.append(static_cast<TextValue*>(source)->GetName());
                QVERIFY(Tree::Instance());
            };
        }
        QCOMPARE(observer.Codes(),
                 (QVector<int>{eCHANGE_DELETED, eCHANGE_DELETED, eCHANGE_DELETED}));
        QCOMPARE(order,
                 (QStringList{QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("x")}));
    }

    void observersMayDeleteOtherValuesAtTheEndOfTheTree()
    {
        RecordingObserver observer;
        {
            HostTree tree;
            auto* const first = tree.Add<TextValue>(QStringLiteral("1"));
            auto* const last = tree.Add<TextValue>(QStringLiteral("3"));
            auto* const middle = tree.Add<TextValue>(QStringLiteral("2"));
            for (TextValue* value : {first, middle, last})
                value->AddObserver(&observer);
            observer.onUpdate = [first, middle](Observable* source, TChangeCode) {
                if (source == static_cast<Observable*>(first))
                    delete middle;
            };
        }
        QCOMPARE(observer.Count(), 3);
    }

    void nothingIsInsertedAtTheEndOfTheTree()
    {
        RecordingObserver observer;
        bool isInserted = true;
        {
            HostTree tree;
            tree.Add<TextValue>(QStringLiteral("1"))->AddObserver(&observer);
            observer.onUpdate = [&](Observable*, TChangeCode) {
                isInserted = tree.Add<TextValue>(QStringLiteral("2")) != nullptr;
            };
        }
        // cppcheck-suppress invalidLifetime; nobody is left to call it
        QCOMPARE(observer.Count(), 1);
        QVERIFY(!isInserted);
    }

    void aValueOnItsWayOutIsNotInserted()
    {
        HostTree tree;
        RecordingObserver observer;
        bool isInserted = true;
        auto* const value = new TextValue;
        value->SetName(QStringLiteral("late"), nullptr);
        value->AddObserver(&observer);
        observer.onUpdate = [&](Observable*, TChangeCode) {
            isInserted = tree.Insert(QString(), value);
        };
        delete value;
        QVERIFY(!isInserted);
        QVERIFY(!tree.Find(QStringLiteral("late")));
    }

    void theTreeMayEndWhileAValueAnnouncesItsDeletion()
    {
        auto tree = std::make_unique<HostTree>();
        auto* const value = tree->Add<TextValue>(QStringLiteral("1"));
        tree->Add<TextValue>(QStringLiteral("2"));
        RecordingObserver observer;
        observer.onUpdate = [&](Observable*, TChangeCode) { tree.reset(); };
        value->AddObserver(&observer);
        delete value;
        QCOMPARE(observer.Count(), 1);
        QVERIFY(!Tree::Instance());
    }

    void aValueWithAFakedStateIsDeletedLikeAnyOther()
    {
        RecordingObserver observer;
        {
            HostTree tree;
            auto* const value = tree.Add<TextValue>(QStringLiteral("1"));
            value->SetState(eSTATE_DELETED, nullptr);
            value->AddObserver(&observer);
        }
        QCOMPARE(observer.Codes(), QVector<int>{eCHANGE_DELETED});
    }
};

QTEST_APPLESS_MAIN(tst_HostTree)
#include "tst_hosttree.moc"
