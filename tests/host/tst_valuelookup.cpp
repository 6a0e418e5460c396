// SPDX-License-Identifier: MIT
#include "host/standin/hosttree.h"
#include "host/standin/tracelog.h"
#include "host/valuelookup.h"
#include "host/values.h"
#include "support/recordingobserver.h"

#include <QtTest>

#include <memory>

class tst_ValueLookup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_tree = std::make_unique<HostTree>(); }
    void cleanup() { m_tree.reset(); }

    void aValueIsFoundByItsPathAndKind()
    {
        auto* const text = m_tree->Add<TextValue>(QStringLiteral("Morse/Text"));
        QCOMPARE(findValue<TextValue>(QStringLiteral("Morse/Text")), text);
        QCOMPARE(findOrCreateValue<TextValue>(QStringLiteral("Morse/Text")), text);
    }

    void findingOnlyGivesNullForWhatIsMissing()
    {
        m_tree->Add<TextValue>(QStringLiteral("Morse/Text"));
        QVERIFY(!findValue<TextValue>(QStringLiteral("Morse/Code")));
        QVERIFY(!findValue<TextValue>(QStringLiteral("Morse/")));
        QVERIFY(!findValue<TextValue>(QString()));
        QVERIFY(!m_tree->Find(QStringLiteral("Morse/Code")));
    }

    void findingOnlyGivesNullForAnotherKind()
    {
        m_tree->Add<IntegerValue>(QStringLiteral("Morse/Text"));
        TraceRecorder traces;
        QVERIFY(!findValue<TextValue>(QStringLiteral("Morse/Text")));
        QVERIFY(!findValue<RealValue>(QStringLiteral("Morse/Text")));
        QVERIFY(traces.Traces().isEmpty());
    }

    void withoutATreeFindingOnlyGivesNull()
    {
        m_tree.reset();
        QVERIFY(!findValue<TextValue>(QStringLiteral("Morse/Text")));
    }

    void aMissingValueIsCreatedUnderItsParent_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("name");
        QTest::newRow("two nodes") << "Morse/Text"
                                   << "Text";
        QTest::newRow("many nodes") << "Receiver/1/Morse/Text"
                                    << "Text";
        QTest::newRow("no parent") << "Text"
                                   << "Text";
        QTest::newRow("at the root") << "/Text"
                                     << "Text";
    }

    void aMissingValueIsCreatedUnderItsParent()
    {
        QFETCH(QString, path);
        QFETCH(QString, name);
        TraceRecorder traces;
        auto* const created = findOrCreateValue<FlagValue>(path);
        QVERIFY(created);
        QCOMPARE(created->GetName(), name);
        QCOMPARE(m_tree->Find(path), static_cast<ValueBase*>(created));
        QCOMPARE(findValue<FlagValue>(path), created);
        QVERIFY(traces.Traces().isEmpty());
    }

    void everyKindCanBeCreated()
    {
        QVERIFY(findOrCreateValue<TextValue>(QStringLiteral("a/text")));
        QVERIFY(findOrCreateValue<FlagValue>(QStringLiteral("a/flag")));
        QVERIFY(findOrCreateValue<IntegerValue>(QStringLiteral("a/integer")));
        QVERIFY(findOrCreateValue<RealValue>(QStringLiteral("a/real")));
        QVERIFY(findOrCreateValue<ValueSelection>(QStringLiteral("a/selection")));
        QVERIFY(findValue<ValueSelection>(QStringLiteral("a/selection")));
        QVERIFY(findValue<RealValue>(QStringLiteral("a/real")));
    }

    void anotherKindUnderTheNameLeadsToADetachedValueAndOneTrace()
    {
        auto* const integer = m_tree->Add<IntegerValue>(QStringLiteral("Morse/Text"));
        RecordingObserver observer;
        TraceRecorder traces;
        const std::unique_ptr<TextValue> detached(
            findOrCreateValue<TextValue>(QStringLiteral("Morse/Text"), &observer));
        QCOMPARE(traces.Traces().size(), 1);
        QCOMPARE(
            traces.Traces().first().message,
            QStringLiteral("!!!!!!!MEMORY LEAK! The value with the path 'Morse/Text' could not "
                           "be created!!! A value of this name already exists for a different "
                           "type!!!!!!!!"));
        QCOMPARE(traces.Traces().first().sourceFile,
                 QStringLiteral("valueclasses\\valueobservermacros"));
        QCOMPARE(traces.Traces().first().line, 297);

        QVERIFY(detached);
        QCOMPARE(detached->GetName(), QStringLiteral("Text"));
        QCOMPARE(m_tree->Find(QStringLiteral("Morse/Text")), static_cast<ValueBase*>(integer));
        QVERIFY(!findValue<TextValue>(QStringLiteral("Morse/Text")));
        detached->SetValue(QStringLiteral("usable"), nullptr);
        QCOMPARE(observer.Codes(), QVector<int>{eCHANGE_CONTENT});
        detached->DeleteObserver(&observer);
    }

    void withTheTraceBitOffNothingIsTraced()
    {
        m_tree->Add<IntegerValue>(QStringLiteral("Morse/Text"));
        TraceRecorder traces;
        setTraceMask(~PLUGIN_TRACE_CLASS);
        const std::unique_ptr<TextValue> detached(
            findOrCreateValue<TextValue>(QStringLiteral("Morse/Text")));
        QVERIFY(detached);
        QVERIFY(traces.Traces().isEmpty());
    }

    void withoutATreeTheValueIsDetachedAndTraced()
    {
        m_tree.reset();
        TraceRecorder traces;
        const std::unique_ptr<RealValue> detached(
            findOrCreateValue<RealValue>(QStringLiteral("Receiver/Frequency")));
        QVERIFY(detached);
        QCOMPARE(detached->GetName(), QStringLiteral("Frequency"));
        QCOMPARE(traces.Traces().size(), 1);
        QVERIFY(traces.Messages().first().contains(QLatin1String("'Receiver/Frequency'")));
    }

    void aPathWithoutANameGivesADetachedValue()
    {
        TraceRecorder traces;
        const std::unique_ptr<TextValue> detached(
            findOrCreateValue<TextValue>(QStringLiteral("Morse/")));
        QVERIFY(detached);
        QVERIFY(!m_tree->Find(QStringLiteral("Morse/")));
        QCOMPARE(traces.Traces().size(), 1);
    }

    void aPathWithAPlaceholderIsTracedAsItStands()
    {
        m_tree->Add<IntegerValue>(QStringLiteral("100%1/%2"));
        TraceRecorder traces;
        const std::unique_ptr<TextValue> detached(
            findOrCreateValue<TextValue>(QStringLiteral("100%1/%2")));
        QVERIFY(traces.Messages().first().contains(QLatin1String("the path '100%1/%2' could")));
    }

    void theObserverIsRegisteredWithTheValueThatIsFound()
    {
        auto* const text = m_tree->Add<TextValue>(QStringLiteral("Morse/Text"));
        RecordingObserver observer;
        findOrCreateValue<TextValue>(QStringLiteral("Morse/Text"), &observer);
        text->SetValue(QStringLiteral("e"), nullptr);
        QCOMPARE(observer.Codes(), QVector<int>{eCHANGE_CONTENT});
        text->DeleteObserver(&observer);
    }

    void anObserverRegisteredTwiceIsNotifiedOnceOfAChange()
    {
        RecordingObserver observer;
        auto* const text = findOrCreateValue<TextValue>(QStringLiteral("Morse/Text"), &observer);
        text->AddObserver(&observer); // as the caller does once more
        text->SetValue(QStringLiteral("e"), nullptr);
        QCOMPARE(observer.Codes(), QVector<int>{eCHANGE_CONTENT});
        text->DeleteObserver(&observer);
        text->SetValue(QStringLiteral("t"), nullptr);
        QCOMPARE(observer.Count(), 1);
    }

private:
    std::unique_ptr<HostTree> m_tree;
};

QTEST_APPLESS_MAIN(tst_ValueLookup)
#include "tst_valuelookup.moc"
