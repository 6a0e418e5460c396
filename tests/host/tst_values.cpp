// SPDX-License-Identifier: MIT
#include "host/values.h"

#include "host/standin/hosttree.h"
#include "support/recordingobserver.h"

#include <QtTest>

#include <limits>
#include <memory>

namespace {

const QVector<int> CONTENT{eCHANGE_CONTENT};
const QVector<int> NOTHING{};
constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NO_NUMBER = std::numeric_limits<double>::quiet_NaN();

/// A value of some kind and somebody who observes it.
template <typename Kind>
struct Observed
{
    Observed() { value->AddObserver(&observer); }

    RecordingObserver observer;
    std::unique_ptr<Kind> value = std::make_unique<Kind>();
};

/// A kind that a host adds: it has what every value has, and nothing of its own.
class OwnKind : public ValueBase
{
public:
    void SetStringValue(QString text, IObserver*) override { m_text = text; }
    QString GetStringValue() override { return m_text; }
    ValueType GetType() override { return eTYPE_TEXT; }
    QString GetTypeName() override { return QStringLiteral("own"); }
    bool Assign(const ValueBase&) override { return false; }
    bool Compare(const ValueBase*) override { return false; }

private:
    QString m_text;
};

/// A value of each kind; the selection can be set to "1".
ValueBase* newValue(int kind)
{
    switch (kind) {
    case 0:
        return new TextValue;
    case 1:
        return new FlagValue;
    case 2:
        return new IntegerValue;
    case 3:
        return new RealValue;
    default:
        auto* const selection = new ValueSelection;
        selection->AddItem(QStringLiteral("1"), 1, 1, nullptr);
        return selection;
    }
}

/// The kinds with a content that each has when it is set.
void kinds()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("content");
    FlagValue on;
    on.SetValue(true, nullptr);
    QTest::newRow("text") << 0 << "some text";
    QTest::newRow("flag") << 1 << on.GetStringValue();
    QTest::newRow("integer") << 2 << "-12";
    QTest::newRow("real") << 3 << "0.25";
    QTest::newRow("selection") << 4 << "1";
}

} // namespace

class tst_Values : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNewValueIsEmptyAndValid()
    {
        QCOMPARE(TextValue().GetValue(), QString());
        QCOMPARE(FlagValue().GetValue(), false);
        QCOMPARE(IntegerValue().GetValue(), 0);
        QCOMPARE(RealValue().GetValue(), 0.0);
        QCOMPARE(TextValue().GetState(), eSTATE_VALID);
        QCOMPARE(TextValue().GetName(), QString());
    }

    void writingAnnouncesTheContent()
    {
        Observed<TextValue> text;
        text.value->SetValue(QStringLiteral("a"), nullptr);
        QCOMPARE(text.observer.Codes(), CONTENT);
        Observed<FlagValue> flag;
        flag.value->SetValue(true, nullptr);
        QCOMPARE(flag.observer.Codes(), CONTENT);
        Observed<IntegerValue> integer;
        integer.value->SetValue(64, nullptr);
        QCOMPARE(integer.observer.Codes(), CONTENT);
        Observed<RealValue> real;
        real.value->SetValue(7.03e6, nullptr);
        QCOMPARE(real.observer.Codes(), CONTENT);
    }

    void writingAnEqualValueNotifiesNobody()
    {
        Observed<TextValue> text;
        text.value->SetValue(QString(), nullptr);
        text.value->SetValue(QStringLiteral(""), nullptr);
        QCOMPARE(text.observer.Codes(), NOTHING);
        Observed<FlagValue> flag;
        flag.value->SetValue(false, nullptr);
        QCOMPARE(flag.observer.Codes(), NOTHING);
        Observed<IntegerValue> integer;
        integer.value->SetValue(0, nullptr);
        QCOMPARE(integer.observer.Codes(), NOTHING);
        Observed<RealValue> real;
        real.value->SetValue(0, nullptr);
        QCOMPARE(real.observer.Codes(), NOTHING);
    }

    void hasChangedAlwaysNotifies()
    {
        Observed<TextValue> text;
        text.value->HasChanged(eCHANGE_CONTENT, nullptr);
        text.value->HasChanged(eCHANGE_CONTENT, nullptr);
        text.value->HasChanged(static_cast<TChangeCode>(4711), nullptr);
        QCOMPARE(text.observer.Codes(), (QVector<int>{eCHANGE_CONTENT, eCHANGE_CONTENT, 4711}));
    }

    void anotherStateIsAnnouncedWithItsOwnCode()
    {
        Observed<TextValue> text;
        text.value->SetState(static_cast<TValueState>(5), nullptr);
        text.value->SetState(static_cast<TValueState>(5), nullptr);
        text.value->SetState(eSTATE_VALID, &text.observer);
        QCOMPARE(text.observer.Codes(), QVector<int>{eCHANGE_STATE});
        QCOMPARE(text.value->GetState(), eSTATE_VALID);
    }

    void aValueIsNamedOutsideTheTree()
    {
        TextValue text;
        text.SetName(QStringLiteral("first"), nullptr);
        text.SetName(QStringLiteral("second"), nullptr);
        QCOMPARE(text.GetName(), QStringLiteral("second"));
    }

    // Deletion

    void deletionIsAnnouncedOnceByAWholeValueInStateOne_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("text") << 0;
        QTest::newRow("flag") << 1;
        QTest::newRow("integer") << 2;
        QTest::newRow("real") << 3;
        QTest::newRow("selection") << 4;
    }

    void deletionIsAnnouncedOnceByAWholeValueInStateOne()
    {
        QFETCH(int, kind);
        ValueBase* const values[] = {new TextValue, new FlagValue, new IntegerValue, new RealValue,
                                     new ValueSelection};
        ValueBase* const value = values[kind];
        value->SetName(QStringLiteral("name"), nullptr);
        if (auto* const selection = dynamic_cast<ValueSelection*>(value)) {
            selection->AddItem(QStringLiteral("1"), 1, 1, nullptr);
            selection->Select(1L, nullptr);
        } else {
            value->SetStringValue(QStringLiteral("1"), nullptr);
        }
        const ValueType type = value->GetType();

        RecordingObserver observer;
        TValueState state = eSTATE_VALID;
        QString text;
        QString name;
        int typeThen = -1;
        bool isKindKnown = false;
        observer.onUpdate = [&](Observable* source, TChangeCode) {
            state = value->GetState();
            text = value->GetStringValue();
            name = value->GetName();
            typeThen = value->GetType();
            isKindKnown = source == static_cast<Observable*>(value) &&
                          (dynamic_cast<TextValue*>(value) || dynamic_cast<FlagValue*>(value) ||
                           dynamic_cast<INumeric*>(value) || dynamic_cast<ValueSelection*>(value));
            value->DeleteObserver(&observer);
        };
        value->AddObserver(&observer);
        for (ValueBase* other : values)
            delete other;

        QCOMPARE(observer.Codes(), QVector<int>{eCHANGE_DELETED});
        QCOMPARE(state, eSTATE_DELETED);
        QCOMPARE(text, QStringLiteral("1"));
        QCOMPARE(name, QStringLiteral("name"));
        QCOMPARE(typeThen, static_cast<int>(type));
        QVERIFY(isKindKnown);
    }

    void whoStaysRegisteredHearsOfTheDeletionOnce()
    {
        Observed<RealValue> real;
        real.value.reset();
        QCOMPARE(real.observer.Codes(), QVector<int>{eCHANGE_DELETED});
    }

    void aValueOnItsWayOutAnnouncesNothingElse()
    {
        Observed<TextValue> text;
        RecordingObserver second;
        text.value->AddObserver(&second);
        TValueState state = eSTATE_VALID;
        bool isRegistered = true;
        auto* const value = text.value.get();
        text.observer.onUpdate = [&](Observable*, TChangeCode) {
            value->SetValue(QStringLiteral("last words"), nullptr);
            value->HasChanged(eCHANGE_FORCED, nullptr);
            value->SetState(eSTATE_VALID, nullptr);
            state = value->GetState();
            value->DeleteObserver(&text.observer);
            isRegistered = value->AddObserver(&text.observer);
            value->MakeFirstObserver(&text.observer);
        };
        text.value.reset();
        QCOMPARE(text.observer.Codes(), QVector<int>{eCHANGE_DELETED});
        QCOMPARE(second.Codes(), QVector<int>{eCHANGE_DELETED});
        QCOMPARE(state, eSTATE_DELETED);
        QVERIFY(!isRegistered);
    }

    void stateOneAloneDeletesNothing()
    {
        Observed<TextValue> text;
        text.value->SetState(eSTATE_DELETED, nullptr);
        QCOMPARE(text.observer.Codes(), QVector<int>{eCHANGE_STATE});
        text.value.reset();
        QCOMPARE(text.observer.Codes(), (QVector<int>{eCHANGE_STATE, eCHANGE_DELETED}));
    }

    // Text form

    void textIsReadAndWritten_data()
    {
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("flag");
        QTest::addColumn<QString>("integer");
        QTest::addColumn<QString>("real");
        // What is no such value leaves the flag as it was, 7 in the integer and 0.5 in the real
        // value.
        const QString keep;
        QTest::newRow("zero") << "0"
                              << "0"
                              << "0"
                              << "0";
        QTest::newRow("one") << "1"
                             << "1"
                             << "1"
                             << "1";
        QTest::newRow("negative") << "-12"
                                  << "1"
                                  << "-12"
                                  << "-12";
        QTest::newRow("word") << "false"
                              << "0" << keep << keep;
        QTest::newRow("word in capitals") << "TRUE"
                                          << "1" << keep << keep;
        QTest::newRow("word in both") << "False"
                                      << "0" << keep << keep;
        QTest::newRow("blanks around") << " 42 "
                                       << "1"
                                       << "42"
                                       << "42";
        QTest::newRow("fraction") << "2.25" << keep << keep << "2.25";
        QTest::newRow("beyond int") << "99999999999" << keep << keep << "99999999999";
        QTest::newRow("not a number") << "nan" << keep << keep << keep;
        QTest::newRow("empty") << "" << keep << keep << keep;
        QTest::newRow("nonsense") << "dot" << keep << keep << keep;
    }

    void textIsReadAndWritten()
    {
        QFETCH(QString, written);
        QFETCH(QString, flag);
        QFETCH(QString, integer);
        QFETCH(QString, real);
        for (const QString& before : {QStringLiteral("0"), QStringLiteral("1")}) {
            FlagValue flagValue;
            flagValue.SetValue(before == QLatin1String("1"), nullptr);
            flagValue.SetStringValue(written, nullptr);
            QCOMPARE(flagValue.GetStringValue(), flag.isNull() ? before : flag);
        }
        IntegerValue integerValue;
        integerValue.SetValue(7, nullptr);
        integerValue.SetStringValue(written, nullptr);
        QCOMPARE(integerValue.GetStringValue(), integer.isNull() ? QStringLiteral("7") : integer);
        RealValue realValue;
        realValue.SetValue(0.5, nullptr);
        realValue.SetStringValue(written, nullptr);
        QCOMPARE(realValue.GetStringValue(), real.isNull() ? QStringLiteral("0.5") : real);
        TextValue textValue;
        textValue.SetStringValue(written, nullptr);
        QCOMPARE(textValue.GetStringValue(), written);
    }

    void aRealNumberIsReadBackUnchangedFromItsText()
    {
        RealValue from;
        RealValue to;
        from.SetValue(0.1 + 0.2, nullptr);
        to.SetStringValue(from.GetStringValue(), nullptr);
        QCOMPARE(to.Compare(&from), true);
    }

    void writingTextLeavesTheCauseOut()
    {
        Observed<IntegerValue> integer;
        integer.value->SetStringValue(QStringLiteral("3"), &integer.observer);
        QCOMPARE(integer.value->GetValue(), 3);
        QCOMPARE(integer.observer.Codes(), NOTHING);
    }

    // Numbers

    void withoutARangeEveryNumberIsAccepted()
    {
        IntegerValue integer;
        integer.SetValue(std::numeric_limits<int>::min(), nullptr);
        QCOMPARE(integer.GetValue(), std::numeric_limits<int>::min());
        integer.SetValue(std::numeric_limits<int>::max(), nullptr);
        QCOMPARE(integer.GetValue(), std::numeric_limits<int>::max());
        QCOMPARE(integer.GetMin(), std::numeric_limits<int>::min());
        QCOMPARE(integer.GetMax(), std::numeric_limits<int>::max());
        QCOMPARE(integer.GetStep(), 0);
        RealValue real;
        real.SetValue(-INFINITE, nullptr);
        QCOMPARE(real.GetValue(), -INFINITE);
    }

    void withARangeANumberOutsideIsClamped()
    {
        IntegerValue integer;
        integer.SetMinMax(-10, 10, 2, nullptr);
        integer.SetValue(11, nullptr);
        QCOMPARE(integer.GetValue(), 10);
        integer.SetValue(-11, nullptr);
        QCOMPARE(integer.GetValue(), -10);
        integer.SetStringValue(QStringLiteral("1000"), nullptr);
        QCOMPARE(integer.GetValue(), 10);
        integer.SetValue(3, nullptr); // the step is for the operator's controls
        QCOMPARE(integer.GetValue(), 3);
        QCOMPARE(integer.GetMin(), -10);
        QCOMPARE(integer.GetMax(), 10);
        QCOMPARE(integer.GetStep(), 2);
    }

    void aNumberThatIsClampedToTheOldOneNotifiesNobody()
    {
        Observed<IntegerValue> integer;
        integer.value->SetMinMax(0, 5, 1, nullptr);
        integer.value->SetValue(5, nullptr);
        integer.observer.Clear();
        integer.value->SetValue(6, nullptr);
        QCOMPARE(integer.observer.Codes(), NOTHING);
    }

    void settingTheRangeClampsAtOnceAndAnnouncesOnce()
    {
        Observed<IntegerValue> integer;
        integer.value->SetValue(100, nullptr);
        integer.observer.Clear();
        integer.value->SetMinMax(0, 50, 1, nullptr);
        QCOMPARE(integer.value->GetValue(), 50);
        QCOMPARE(integer.observer.Codes(), CONTENT);
        integer.value->SetMinMax(0, 60, 1, nullptr); // the number stays
        QCOMPARE(integer.observer.Count(), 2);
        integer.value->SetMinMax(0, 60, 1, nullptr); // everything stays
        QCOMPARE(integer.observer.Count(), 2);
    }

    void settingTheRangeLeavesTheCauseOut()
    {
        Observed<IntegerValue> integer;
        RecordingObserver other;
        integer.value->SetValue(100, nullptr);
        integer.observer.Clear();
        integer.value->AddObserver(&other);
        integer.value->SetMinMax(0, 50, 1, &integer.observer);
        integer.value->SetMin(60, &integer.observer);
        QCOMPARE(integer.observer.Codes(), NOTHING);
        QCOMPARE(other.Count(), 2);
        integer.value->DeleteObserver(&other);
    }

    void oneEndOfTheRangeCanBeSetAlone()
    {
        Observed<RealValue> real;
        real.value->SetMin(1.5, nullptr);
        QCOMPARE(real.value->GetValue(), 1.5);
        QCOMPARE(real.value->GetMax(), INFINITE);
        real.value->SetMax(2.5, nullptr);
        real.value->SetValue(9, nullptr);
        QCOMPARE(real.value->GetValue(), 2.5);
        real.value->SetStep(0.25, nullptr);
        QCOMPARE(real.value->GetStep(), 0.25);
        QCOMPARE(real.observer.Count(), 4);
    }

    void aMaximumBelowTheMinimumCountsAsTheMinimum()
    {
        IntegerValue integer;
        integer.SetMinMax(10, 5, 1, nullptr);
        QCOMPARE(integer.GetValue(), 10);
        QCOMPARE(integer.GetMax(), 10);
        integer.SetValue(7, nullptr);
        QCOMPARE(integer.GetValue(), 10);
        integer.SetMin(0, nullptr); // both ends are as they were set again
        QCOMPARE(integer.GetMax(), 5);
    }

    void whatIsNoNumberChangesNothing()
    {
        Observed<RealValue> real;
        real.value->SetMinMax(1, 3, 0.5, nullptr);
        real.value->SetValue(2, nullptr);
        real.observer.Clear();
        real.value->SetValue(NO_NUMBER, nullptr);
        real.value->SetMinMax(NO_NUMBER, NO_NUMBER, NO_NUMBER, nullptr);
        real.value->SetMin(NO_NUMBER, nullptr);
        real.value->SetMax(NO_NUMBER, nullptr);
        real.value->SetStep(NO_NUMBER, nullptr);
        QCOMPARE(real.value->GetValue(), 2.0);
        QCOMPARE(real.value->GetMin(), 1.0);
        QCOMPARE(real.value->GetMax(), 3.0);
        QCOMPARE(real.value->GetStep(), 0.5);
        QCOMPARE(real.observer.Codes(), NOTHING);
    }

    void everyNumberCanBeReadAsAReal()
    {
        IntegerValue integer;
        integer.SetValue(30000, nullptr);
        RealValue real;
        real.SetValue(0.25, nullptr);
        ValueBase* values[] = {&integer, &real};
        QCOMPARE(dynamic_cast<INumeric*>(values[0])->GetRealValue(), 30000.0);
        QCOMPARE(dynamic_cast<INumeric*>(values[1])->GetRealValue(), 0.25);
        TextValue text;
        ValueBase* const base = &text;
        QVERIFY(!dynamic_cast<INumeric*>(base));
    }

    // Content from another value, and commands

    void everyKindTakesOverTheContentOfItsOwnKindOnly_data() { kinds(); }

    void everyKindTakesOverTheContentOfItsOwnKindOnly()
    {
        QFETCH(int, kind);
        QFETCH(QString, content);
        const std::unique_ptr<ValueBase> from(newValue(kind));
        from->SetStringValue(content, nullptr);
        for (int other = 0; other < 5; ++other) {
            const std::unique_ptr<ValueBase> to(newValue(other));
            const QString before = to->GetStringValue();
            RecordingObserver observer;
            to->AddObserver(&observer);
            QVERIFY(!to->Compare(from.get()));
            QVERIFY(!to->Compare(nullptr));
            QCOMPARE(to->Assign(*from), other == kind);
            QCOMPARE(to->Compare(from.get()), other == kind);
            QCOMPARE(to->GetStringValue(), other == kind ? content : before);
            QCOMPARE(observer.Codes().contains(eCHANGE_CONTENT), other == kind);
            to->DeleteObserver(&observer);
        }
    }

    void everyKindIsSetByACommandThatCarriesItsName_data() { kinds(); }

    void everyKindIsSetByACommandThatCarriesItsName()
    {
        QFETCH(int, kind);
        QFETCH(QString, content);
        const std::unique_ptr<ValueBase> from(newValue(kind));
        from->SetName(QStringLiteral("value"), nullptr);
        from->SetStringValue(content, nullptr);
        const QString command = from->GetCommandStringForTransmission();
        QCOMPARE(command, QStringLiteral("value=") + content);

        const std::unique_ptr<ValueBase> to(newValue(kind));
        to->SetName(QStringLiteral("other"), nullptr);
        QVERIFY(!to->SetCommandString(command, nullptr));
        to->SetName(QStringLiteral("value"), nullptr);
        const QString before = to->GetStringValue();
        if (kind != 0) { // any text is a text
            QVERIFY(!to->SetCommandString(QStringLiteral("value=what?"), nullptr));
            QCOMPARE(to->GetStringValue(), before);
        }
        QVERIFY(to->SetCommandString(command, nullptr));
        QCOMPARE(to->GetStringValue(), content);
    }

    void aKindOfTheHostsOwnIsSetByACommandToo()
    {
        OwnKind value;
        value.SetName(QStringLiteral("own"), nullptr);
        QVERIFY(value.SetCommandString(QStringLiteral("own=content"), nullptr));
        QCOMPARE(value.GetCommandStringForRecording(), QStringLiteral("own=content"));
        QVERIFY(!value.SetCommandString(QStringLiteral("other=2"), nullptr));
        QVERIFY(!value.SetCommandString(QStringList{QStringLiteral("other=2")}, nullptr));
        QCOMPARE(value.GetStringValue(), QStringLiteral("content"));
    }

    void ofSeveralCommandsOneThatIsTakenIsEnough()
    {
        OwnKind value;
        value.SetName(QStringLiteral("own"), nullptr);
        QVERIFY(value.SetCommandString(
            QStringList{QStringLiteral("own=content"), QStringLiteral("other=2")}, nullptr));
        QCOMPARE(value.GetStringValue(), QStringLiteral("content"));
    }

    void aKindThatDoesNotAnnounceItsDeletionLeavesTheTreeAllTheSame()
    {
        HostTree tree;
        auto* const value = new OwnKind;
        value->SetName(QStringLiteral("own"), nullptr);
        QVERIFY(tree.Insert(QString(), value));
        QCOMPARE(tree.Find(QStringLiteral("own")), value);
        delete value;
        QVERIFY(!tree.Find(QStringLiteral("own")));
    }

    void whoHasAnnouncedItsDeletionIsFoundNoMore()
    {
        struct LookingBack : OwnKind
        {
            ~LookingBack() override
            {
                AnnounceDeletion();
                *found = tree->Find(QStringLiteral("own"));
            }
            HostTree* tree = nullptr;
            ValueBase** found = nullptr;
        };
        HostTree tree;
        auto* const value = new LookingBack;
        ValueBase* found = value;
        value->tree = &tree;
        value->found = &found;
        value->SetName(QStringLiteral("own"), nullptr);
        QVERIFY(tree.Insert(QString(), value));
        delete value;
        QVERIFY(!found);
    }

    // Transactions

    void aTransactionAnnouncesEachOfItsCodesOnceAtItsEnd()
    {
        Observed<IntegerValue> integer;
        std::unique_ptr<ValueTransaction> transaction(integer.value->CreateTransaction(
            {eCHANGE_CONTENT, eCHANGE_FORCED, eCHANGE_CONTENT}, nullptr));
        integer.value->SetValue(1, nullptr);
        integer.value->SetValue(2, nullptr);
        integer.value->HasChanged(eCHANGE_STATE, nullptr); // is not the transaction's
        QCOMPARE(integer.observer.Codes(), QVector<int>{eCHANGE_STATE});
        transaction.reset();
        QCOMPARE(integer.observer.Codes(),
                 (QVector<int>{eCHANGE_STATE, eCHANGE_CONTENT, eCHANGE_FORCED}));
        integer.value->SetValue(3, nullptr);
        QCOMPARE(integer.observer.Count(), 4);
    }

    void aTransactionLeavesItsCauseOut()
    {
        Observed<IntegerValue> integer;
        delete integer.value->CreateTransaction({eCHANGE_CONTENT}, &integer.observer);
        QCOMPARE(integer.observer.Codes(), NOTHING);
    }

    void theOuterOfTwoTransactionsAnnounces()
    {
        Observed<IntegerValue> integer;
        std::unique_ptr<ValueTransaction> outer(
            integer.value->CreateTransaction({eCHANGE_CONTENT}, nullptr));
        std::unique_ptr<ValueTransaction> inner(
            integer.value->CreateTransaction({eCHANGE_CONTENT}, nullptr));
        integer.value->SetValue(1, nullptr);
        inner.reset();
        QCOMPARE(integer.observer.Codes(), NOTHING);
        outer.reset();
        QCOMPARE(integer.observer.Codes(), CONTENT);
    }

    void aTransactionMayOutliveItsValue()
    {
        Observed<IntegerValue> integer;
        std::unique_ptr<ValueTransaction> transaction(
            integer.value->CreateTransaction({eCHANGE_CONTENT}, nullptr));
        integer.value.reset();
        QCOMPARE(integer.observer.Codes(), QVector<int>{eCHANGE_DELETED});
        transaction.reset();
        QCOMPARE(integer.observer.Codes(), QVector<int>{eCHANGE_DELETED});
    }

    void aValueMayBeDeletedByTheFirstCodeOfATransaction()
    {
        Observed<IntegerValue> integer;
        std::unique_ptr<ValueTransaction> transaction(
            integer.value->CreateTransaction({eCHANGE_CONTENT, eCHANGE_FORCED}, nullptr));
        integer.observer.onUpdate = [&](Observable*, TChangeCode code) {
            if (code == eCHANGE_CONTENT)
                integer.value.reset();
        };
        transaction.reset();
        QCOMPARE(integer.observer.Codes(), (QVector<int>{eCHANGE_CONTENT, eCHANGE_DELETED}));
    }

    // Plumbing

    void aValueTakesOverTheContentOfItsOwnKindOnly()
    {
        IntegerValue from;
        from.SetValue(9, nullptr);
        Observed<IntegerValue> to;
        to.value->SetMinMax(0, 5, 1, nullptr);
        to.observer.Clear();
        QVERIFY(!to.value->Compare(&from));
        QVERIFY(to.value->Assign(from));
        QCOMPARE(to.value->GetValue(), 5);
        QCOMPARE(to.observer.Codes(), CONTENT);
        TextValue text;
        text.SetValue(QStringLiteral("5"), nullptr);
        QVERIFY(!to.value->Assign(text));
        QVERIFY(!to.value->Compare(&text));
        QVERIFY(!to.value->Compare(nullptr));
        QCOMPARE(to.observer.Codes(), CONTENT);
    }

    void aCommandNamesItsValue()
    {
        IntegerValue value;
        value.SetName(QStringLiteral("speed"), nullptr);
        QVERIFY(value.SetCommandString(QStringLiteral("speed=12"), nullptr));
        QCOMPARE(value.GetValue(), 12);
        QVERIFY(!value.SetCommandString(QStringLiteral("tone=700"), nullptr));
        QVERIFY(!value.SetCommandString(QStringLiteral("speed=fast"), nullptr));
        QCOMPARE(value.GetValue(), 12);
        QVERIFY(value.SetCommandString(
            QStringList{QStringLiteral("tone=700"), QStringLiteral("speed=20")}, nullptr));
        QVERIFY(!value.SetCommandString(QStringList{QStringLiteral("tone=700")}, nullptr));
        QCOMPARE(value.GetCommandStringForTransmission(), QStringLiteral("speed=20"));
        QCOMPARE(value.GetCommandStringForRecording(), QStringLiteral("speed=20"));
        QCOMPARE(value.CreateNextCommand(), QStringLiteral("speed=20"));
    }

    void aValueMayBeDeletedByOneOfSeveralCommands()
    {
        Observed<IntegerValue> integer;
        integer.value->SetName(QStringLiteral("a"), nullptr);
        integer.observer.onUpdate = [&](Observable*, TChangeCode code) {
            if (code == eCHANGE_CONTENT)
                integer.value.reset();
        };
        QVERIFY(integer.value->SetCommandString(
            QStringList{QStringLiteral("a=1"), QStringLiteral("a=2")}, nullptr));
        QCOMPARE(integer.observer.Codes(), (QVector<int>{eCHANGE_CONTENT, eCHANGE_DELETED}));
    }

    void ofSeveralCommandsForAValueTheLastStays()
    {
        TextValue value;
        value.SetName(QStringLiteral("a"), nullptr);
        QStringList commands{QStringLiteral("a=1"), QStringLiteral("b=1"), QStringLiteral("a=2")};
        value.OptimizeCommandList(commands, value.CreateCommandListOptimizer());
        QCOMPARE(commands, (QStringList{QStringLiteral("b=1"), QStringLiteral("a=2")}));
    }

    void aValueAddsItselfToLists()
    {
        FlagValue value;
        value.SetName(QStringLiteral("save"), nullptr);
        value.SetValue(true, nullptr);
        QStringList list;
        value.PreWorkCommandList(list);
        value.AddCommand(list);
        value.AddCommandForTransmission(list);
        value.AddObjectStateStringForRecording(list);
        value.AddObjectStateStringForTransmission(list);
        QCOMPARE(list.size(), 4);
        QCOMPARE(list.count(QStringLiteral("save=1")), 4);
    }

    void theTimersOfRemoteControlChangeNothing()
    {
        Observed<IntegerValue> integer;
        integer.value->SetUpdateTimerTime(1);
        integer.value->OverrideTimer();
        integer.value->KillOverrideTimer();
        QCOMPARE(integer.observer.Codes(), NOTHING);
        QCOMPARE(integer.value->GetValue(), 0);
    }

    void everyKindHasItsTypeAndName()
    {
        QCOMPARE(TextValue().GetType(), eTYPE_TEXT);
        QCOMPARE(FlagValue().GetType(), eTYPE_FLAG);
        QCOMPARE(IntegerValue().GetType(), eTYPE_INTEGER);
        QCOMPARE(RealValue().GetType(), eTYPE_REAL);
        QCOMPARE(ValueSelection().GetType(), eTYPE_SELECTION);
        const QSet<QString> names{TextValue().GetTypeName(), FlagValue().GetTypeName(),
                                  IntegerValue().GetTypeName(), RealValue().GetTypeName(),
                                  ValueSelection().GetTypeName()};
        QCOMPARE(names.size(), 5);
        QVERIFY(!names.contains(QString()));
    }

    void aTransactionWithoutAValueAnnouncesNothing()
    {
        RecordingObserver observer;
        delete new ValueTransaction(nullptr, {eCHANGE_CONTENT}, &observer);
        QCOMPARE(observer.Codes(), NOTHING);
    }

    void aRealNumberHasTransactionsToo()
    {
        Observed<RealValue> real;
        const std::unique_ptr<ValueTransaction> transaction(
            real.value->CreateTransaction({eCHANGE_CONTENT}, nullptr));
        real.value->SetValue(1.5, nullptr);
        QCOMPARE(real.observer.Codes(), NOTHING);
    }
};

QTEST_APPLESS_MAIN(tst_Values)
#include "tst_values.moc"
