// SPDX-License-Identifier: MIT
// The Morse handler without files: values, queue, characters, words, lines, translation again.
#include "session/morsehandler.h"

#include "host/standin/tracelog.h"
#include "support/files.h"
#include "support/fulldisk.h"
#include "support/morsefixture.h"
#include "support/outofmemory.h"
#include "support/privatemember.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <utility>

PRIVATE_MEMBER(TimeString, MorseHandler, CreateTimeString, QString (MorseHandler::*)());
PRIVATE_MEMBER(Identifier, MorseHandler, m_strIpcIdentifier, QString MorseHandler::*);
PRIVATE_MEMBER(AlphabetPath, MorseHandler, BuildAlphabetPath, QString (MorseHandler::*)());

template <typename Handler, typename = void>
struct HasPublicUpdate : std::false_type
{
};
template <typename Handler>
struct HasPublicUpdate<
    Handler, std::void_t<decltype(std::declval<Handler&>().Update(nullptr, TChangeCode()))>>
    : std::true_type
{
};
static_assert(HasPublicUpdate<IObserver>::value && !HasPublicUpdate<MorseHandler>::value,
              "values update a handler as their observer, and nobody else does");

namespace {

constexpr unsigned long long MORNING_us = 1494584100123456ULL; // 2017-05-12 10:15:00.123456 UTC

// Notes who is named as the cause of each write.
template <typename Kind, typename Content>
struct Noting : Kind
{
    void SetValue(Content content, IObserver* cause) override
    {
        causes += cause;
        Kind::SetValue(content, cause);
    }
    void HasChanged(TChangeCode code, IObserver* cause) override
    {
        announced += cause;
        Kind::HasChanged(code, cause);
    }
    QVector<IObserver*> causes;
    QVector<IObserver*> announced;
};

// The way in which values notify a handler.
IObserver& observerPart(MorseHandler& handler)
{
    return handler;
}

} // namespace

class tst_MorseHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "UTC"); }

    // Characters

    void aCharacterIsDecodedAtItsGap()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(".-");
        QCOMPARE(host.text->GetValue(), QString());
        host.send("c");
        QCOMPARE(host.text->GetValue(), QStringLiteral("A"));
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".-c"));
        // Nothing of it is left: the next gap decodes nothing.
        host.send("c");
        QCOMPARE(host.text->GetValue(), QString());
    }

    void aRepeatedCharacterIsAnnouncedAgain()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        host.send(".c.c.c");
        QCOMPARE(log.texts, QStringList({"E", "E", "E"}));
    }

    void whatTheHandlerWritesExcludesNobody()
    {
        using NotingText = Noting<TextValue, QString>;
        using NotingFlag = Noting<FlagValue, bool>;
        QTemporaryDir dir;
        MorseFixture host;
        host.wireFiles(dir.path());
        host.saveToFile->SetValue(true, nullptr);
        host.handler.StartNewMorseSession();
        const auto insert = [&](auto* value, const char* name) {
            value->SetName(QLatin1String(name), nullptr);
            QVERIFY(host.tree.Insert(QStringLiteral("n/"), value));
        };
        auto* const text = new NotingText;
        auto* const names = new NotingText;
        auto* const direction = new NotingFlag;
        auto* const trigger = new NotingFlag;
        auto* const request = new NotingFlag;
        insert(text, "text");
        insert(names, "names");
        insert(direction, "direction");
        insert(trigger, "trigger");
        insert(request, "request");
        host.handler.SetMorseText_ValuePath(QStringLiteral("n/text"));
        host.handler.SetTextDirectionRTL_ValuePath(QStringLiteral("n/direction"));
        host.handler.SetMorseXmlSaveToFile_ValuePath(QStringLiteral("n/trigger"));
        host.handler.SetGenXmlTunerDemodulatorSettingsPath(QStringLiteral("n/request"));
        host.handler.SetSaveDirectoryPath(dir.path(), QStringLiteral("n/names"),
                                          QStringLiteral("n/names"), QStringLiteral("n/names"));
        host.handler.ChangeAlphabet();
        host.handler.SetTimestamp(1);
        trigger->HasChanged(eCHANGE_FORCED, nullptr);
        host.handler.SetTimestamp(2); // asks again
        host.send(".c-wn");
        QCOMPARE(text->causes, QVector<IObserver*>(3, nullptr));
        QCOMPARE(names->causes, QVector<IObserver*>(4, nullptr)); // two documents, two files
        QCOMPARE(direction->causes, QVector<IObserver*>(1, nullptr));
        QCOMPARE(trigger->causes, QVector<IObserver*>(1, nullptr));
        QCOMPARE(request->causes, QVector<IObserver*>(1, nullptr));
        QCOMPARE(request->announced.constLast(), nullptr);
    }

    void theAnnouncementOfARepeatNamesTheHandlerAsItsCause()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        struct AnnouncedText : TextValue
        {
            void HasChanged(TChangeCode code, IObserver* cause) override
            {
                codes += code;
                causes += cause;
                TextValue::HasChanged(code, cause);
            }
            QVector<int> codes;
            QVector<IObserver*> causes;
        };
        auto* const text = new AnnouncedText;
        text->SetName(QStringLiteral("Announced"), nullptr);
        QVERIFY(host.tree.Insert(QStringLiteral("Morse/"), text));
        host.handler.SetMorseText_ValuePath(QStringLiteral("Morse/Announced"));
        host.send(".c");
        text->codes.clear();
        text->causes.clear();
        host.send(".c");
        QCOMPARE(text->codes, QVector<int>({3}));
        QCOMPARE(text->causes, QVector<IObserver*>({&host.handler}));
    }

    void anUnknownCharacterIsPublishedAsEmptyText()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        host.send(".c......c");
        QCOMPARE(log.texts, QStringList({"E", ""}));
    }

    void aWordGapAddsABlank()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        host.send("-.-.c--.-w-.-.cw");
        QCOMPARE(log.texts, QStringList({"C", "Q ", "C", " "}));
    }

    void aLoneDashAfterADigitIsACutZero_data()
    {
        QTest::addColumn<QString>("symbols");
        QTest::addColumn<QString>("text");
        QTest::newRow("after the last digit") << "----.c-c"
                                              << "90";
        QTest::newRow("right after the digit") << ".----c-c"
                                               << "10";
        QTest::newRow("and again, since zero is a digit") << ".----c-c-c"
                                                          << "100";
        QTest::newRow("not after a letter") << ".-c-c"
                                            << "AT";
        QTest::newRow("across a word gap") << ".----cw-c"
                                           << "1 0";
        QTest::newRow("not for a digit decoded at a word gap") << ".----w-c"
                                                               << "1 T";
        QTest::newRow("not at a word gap itself") << ".----c-w"
                                                  << "1T ";
        QTest::newRow("not for a longer code") << ".----c--c"
                                               << "1M";
    }

    void aLoneDashAfterADigitIsACutZero()
    {
        QFETCH(QString, symbols);
        QFETCH(QString, text);
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        host.send(qPrintable(symbols));
        QCOMPARE(log.joined(), text);
    }

    void aLineEndForgetsTheDigit()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.handler.SetTimestamp(1);
        host.handler.SetTimestamp(2);
        TextLog log(host.text);
        host.send(".----cn-c");
        QCOMPARE(log.joined(), QStringLiteral("1\nT"));
    }

    void aLineEndBeforeTwoTimeStampsDecodesOnlyThePendingCharacter()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.handler.SetTimestamp(1);
        TextLog log(host.text);
        host.send(".-n");
        QCOMPARE(log.texts, QStringList({"A"}));
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".-c"));
        // The step did nothing, so the digit is remembered.
        host.send(".----cn-c");
        QCOMPARE(log.joined(), QStringLiteral("A10"));
    }

    void aTimeStampThatStandsForNoneMakesNoLine()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        host.handler.SetTimestamp(1);
        host.handler.SetTimestamp(std::numeric_limits<unsigned long long>::max());
        host.send("n");
        host.handler.SetTimestamp(2);
        host.send("n");
        QCOMPARE(log.texts, QStringList());
        host.handler.SetTimestamp(3);
        host.send("n");
        QCOMPARE(log.texts, QStringList({"\n"}));
    }

    void aLineEndDecodesThePendingCharacterFirst()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.handler.SetTimestamp(1);
        host.handler.SetTimestamp(2);
        TextLog log(host.text);
        host.send(".-n");
        QCOMPARE(log.texts, QStringList({"A", "\n"}));
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".-c\n"));
    }

    void aRepeatedLineEndIsNotAnnouncedTwice()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.handler.SetTimestamp(1);
        host.handler.SetTimestamp(2);
        TextLog log(host.text);
        host.send("nn");
        QCOMPARE(log.texts, QStringList({"\n"}));
    }

    void errorMarksReachNeitherBufferNorCharacter()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        host.send(".dlp-c");
        QCOMPARE(log.joined(), QStringLiteral("A"));
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".-c"));
    }

    void theEighthBitOfACodeIsIgnored()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        for (const int code : {128, 129, 131})
            host.send(code);
        QCOMPARE(host.text->GetValue(), QStringLiteral("A"));
    }

    void anUnknownCodeIsNoSymbol()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        for (const int code : {0, 2, 6, 67, 127, 1, 3})
            host.send(code);
        QCOMPARE(host.text->GetValue(), QStringLiteral("A"));
    }

    void anyIntegerIsReadByItsLowSevenBits_data()
    {
        QTest::addColumn<int>("code");
        QTest::newRow("minus 128") << -128;
        QTest::newRow("smallest") << std::numeric_limits<int>::min();
        QTest::newRow("256") << 256;
    }

    void anyIntegerIsReadByItsLowSevenBits()
    {
        QFETCH(int, code);
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(code);
        host.send(3);
        QCOMPARE(host.text->GetValue(), QStringLiteral("E"));
    }

    void aLineEndIsASymbolToThoseWhoCountUnits()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.handler.SetTimestamp(1);
        host.handler.SetTimestamp(2);
        host.send(".cn-cw");
        // Buffer ".c\n-cw": "w" is one unit, the "c" before it none, "\n" and "-" one at the "c"
        // before.
        QCOMPARE(host.handler.TranslateText(true, true, 2), QStringLiteral("\nT "));
        host.handler.ClearSymbolBuffer();
        host.send(".cncc");
        // Buffer ".c\ncc": the line end alone counts as a character's symbols.
        QCOMPARE(host.handler.TranslateText(true, true, 1), QStringLiteral("\n"));
    }

    void whatIsPublishedIsInTheBufferAlready()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.handler.SetTimestamp(1);
        host.handler.SetTimestamp(2);
        TextLog log(host.text);
        QStringList buffers;
        log.onText = [&](const QString&) { buffers += host.handler.GetCurrentMorseSymbolString(); };
        host.send(".c-wn");
        QCOMPARE(buffers, QStringList({".c", ".c-w", ".c-w\n"}));
    }

    void clearingTheBufferKeepsTheCharacterBeingReceived()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(".");
        host.handler.ClearSymbolBuffer();
        host.send("-c");
        QCOMPARE(host.text->GetValue(), QStringLiteral("A"));
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral("-c"));
    }

    // The queue

    void codesBeforeTheSessionAreWorkedOffOnePerArrival()
    {
        MorseFixture host;
        TextLog log(host.text);
        host.send(".-c");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
        host.handler.StartNewMorseSession();
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
        host.send("-");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral("."));
        host.send("..");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".-c"));
        QCOMPARE(log.texts, QStringList({"A"}));
        host.send("c");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".-c-"));
    }

    void codesWaitWhileMorseIsNotAvailable()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.available->SetValue(false, nullptr);
        host.send(".-c");
        QCOMPARE(host.text->GetValue(), QString());
        host.available->SetValue(true, nullptr);
        host.send("...");
        QCOMPARE(host.text->GetValue(), QStringLiteral("A"));
    }

    void addSymbolIsAnArrivalLikeAnyOther()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        for (const int code : {0, 1, 3})
            host.handler.AddSymbol(code);
        QCOMPARE(host.text->GetValue(), QStringLiteral("A"));
    }

    void aSymbolFedByAnObserverOfTheTextWaitsItsTurn()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        int fed = 0;
        log.onText = [&](const QString&) {
            // Each of the first characters makes the observer key another one, "N".
            if (fed++ < 3) {
                for (const int code : {1, 0, 3})
                    host.handler.AddSymbol(code);
            }
        };
        host.send(".-c");
        QCOMPARE(log.joined(), QStringLiteral("ANNN"));
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".-c-.c-.c-.c"));
    }

    void aLongChainOfSymbolsFedByAnObserverDoesNotRecurse()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        int left = 100000;
        log.onText = [&](const QString&) {
            if (left-- > 0) {
                host.handler.AddSymbol(0);
                host.handler.AddSymbol(3);
            }
        };
        host.send(".c");
        QCOMPARE(log.texts.size(), 100001);
    }

    void anObserverThatThrowsCostsNoMoreThanItsOwnCode()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        bool isFirst = true;
        log.onText = [&](const QString&) {
            if (!std::exchange(isFirst, false))
                return;
            host.handler.AddSymbol(1); // waits its turn
            throw std::runtime_error("an observer");
        };
        host.send(".-");
        QVERIFY_EXCEPTION_THROWN(host.send("c"), std::runtime_error);
        host.send("c");
        QCOMPARE(log.texts, QStringList({"A", "T"}));
        host.send("..c");
        QCOMPARE(log.texts, QStringList({"A", "T", "I"}));
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".-c-c..c"));
    }

    void setMorseAvailableStartsAndStopsProcessing()
    {
        MorseFixture host;
        host.handler.SetMorseAvailable(true);
        host.send(".c");
        // No session has loaded an alphabet yet.
        QCOMPARE(host.text->GetValue(), QString());
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".c"));
        host.handler.SetMorseAvailable(false);
        host.send(".");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".c"));
    }

    void queuedCodesOutliveTheSession()
    {
        MorseFixture host;
        host.send(".-");
        host.handler.StartNewMorseSession();
        host.handler.EndMorseSession();
        host.handler.StartNewMorseSession();
        host.send("c");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral("."));
    }

    void setMorseAvailableFalseEndsTheSession()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.handler.SetMorseAvailable(false);
        host.available->SetValue(false, nullptr);
        host.available->SetValue(true, nullptr); // available again, but no session
        host.send(".");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
    }

    // The session

    void endMorseSessionForgetsTheReceivedSymbols()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(".----c-");
        host.handler.EndMorseSession();
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
        host.send(".");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
        // The dot stays queued, and the digit and the dash before the end are forgotten.
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        host.send("-c");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".-"));
        host.send("-");
        QCOMPARE(log.joined(), QStringLiteral("A"));
    }

    void aDigitOfTheSessionBeforeCutsNoZero()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(".----c");
        host.handler.EndMorseSession();
        host.handler.StartNewMorseSession();
        TextLog log(host.text);
        host.send("-c");
        QCOMPARE(log.joined(), QStringLiteral("T"));
    }

    void startNewMorseSessionReportsWhetherAFileWasRead()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("Test.mal"), "@ TextDirection RL\nX\t.-\n\n");
        MorseFixture host;
        QVERIFY(!host.handler.StartNewMorseSession());
        host.alphabetDirectory->SetValue(dir.path(), nullptr);
        host.alphabet->AddItems({"Test", "Missing", "../Test", "sub\\Test"}, nullptr);
        host.handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        host.handler.SetTextDirectionRTL_ValuePath(MorseValues::path("RightToLeft"));
        host.alphabet->Select(QStringLiteral("Test"), nullptr);
        QVERIFY(host.handler.StartNewMorseSession());
        QVERIFY(host.rightToLeft->GetValue());
        host.send(".-c");
        QCOMPARE(host.text->GetValue(), QStringLiteral("X"));
        host.alphabet->Select(QStringLiteral("Missing"), nullptr);
        QVERIFY(!host.handler.ChangeAlphabet());
        // The default alphabet leaves the direction as it was.
        QVERIFY(host.rightToLeft->GetValue());
        host.send(".-c");
        QCOMPARE(host.text->GetValue(), QStringLiteral("A"));
    }

    void theDirectoryMayEndInABackslashAndChange()
    {
        QTemporaryDir dir;
        writeFile(dir.filePath("Test.mal"), "X\t.-\n\n");
        MorseFixture host;
        host.alphabet->AddItems({"test"}, nullptr);
        host.alphabet->Select(QStringLiteral("test"), nullptr);
        host.alphabetDirectory->SetValue(QStringLiteral("nowhere"), nullptr);
        host.handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        QVERIFY(!host.handler.StartNewMorseSession());
        host.alphabetDirectory->SetValue(dir.path() + QLatin1Char('\\'), nullptr);
        QVERIFY(host.handler.StartNewMorseSession());
    }

    void theAlphabetDirectoryEndsInOneBackslash()
    {
        MorseFixture host;
        host.alphabet->AddItems({"Greek"}, nullptr);
        host.alphabet->Select(QStringLiteral("Greek"), nullptr);
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        host.handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        const auto path = [&] { return (host.handler.*memberOf(AlphabetPath()))(); };
        QCOMPARE(path(), QStringLiteral("\\Greek.mal"));
        for (const char* directory : {"d", "d\\"}) {
            host.alphabetDirectory->SetValue(QString::fromLatin1(directory), nullptr);
            QCOMPARE(path(), QStringLiteral("d\\Greek.mal"));
        }
    }

    void aDirectoryThatIsNotFoundLeavesTheOneBefore()
    {
        MorseFixture host;
        host.alphabet->AddItems({"Greek"}, nullptr);
        host.alphabet->Select(QStringLiteral("Greek"), nullptr);
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        host.alphabetDirectory->SetValue(QStringLiteral("d"), nullptr);
        host.handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        host.handler.SetMorseAlphabet_DirectoryPath(QStringLiteral("nowhere"));
        QCOMPARE((host.handler.*memberOf(AlphabetPath()))(), QStringLiteral("d\\Greek.mal"));
    }

    void anAlphabetNameIsNoPath()
    {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("sub")));
        writeFile(dir.filePath("sub/Test.mal"), "X\t.-\n\n");
        MorseFixture host;
        host.alphabetDirectory->SetValue(dir.path(), nullptr);
        host.handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        for (const char* name : {"sub/Test", "sub\\Test", "..\\Test"}) {
            host.alphabet->AddItem(QLatin1String(name), 0, 0, nullptr);
            host.alphabet->Select(QString(QLatin1String(name)), nullptr);
            QVERIFY2(!host.handler.StartNewMorseSession(), name);
        }
    }

    // The symbol buffer and its translation

    void theBufferSlidesBelowThirtyThousandCharacters()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(".-");
        for (int i = 0; i < 29997; ++i)
            host.send(".");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString().size(), 29999);
        QVERIFY(host.handler.GetCurrentMorseSymbolString().startsWith(QLatin1String(".-")));
        host.send("c");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString().size(), 29999);
        QVERIFY(host.handler.GetCurrentMorseSymbolString().startsWith(QLatin1String("-.")));
        QVERIFY(host.handler.GetCurrentMorseSymbolString().endsWith(QLatin1String(".c")));
        // However far it slides.
        for (int i = 0; i < 100000; ++i)
            host.send(i % 7 == 0 ? "c" : "-");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString().size(), 29999);
        QVERIFY(!host.handler.GetCurrentMorseSymbolString().contains(QLatin1Char('.')));
        host.send("w");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString().size(), 29999);
        QVERIFY(host.handler.GetCurrentMorseSymbolString().endsWith(QLatin1String("-w")));
    }

    void aPartOfTheBufferIsTranslatedAgain_data()
    {
        QTest::addColumn<QString>("symbols");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("text");
        // The part of ".-c-...w--" for two units is "c-...w".
        QTest::newRow("unfinished character skipped") << ".-c-...w--" << 2 << "B ";
        QTest::newRow("one unit is the word gap alone") << ".-c-...w--" << 1 << " ";
        QTest::newRow("three units reach the first") << ".-c-...w--" << 3 << "AB ";
        QTest::newRow("first character has no separator before it") << ".-c" << 2 << "A";
        QTest::newRow("more than there is") << ".-c-...c" << 100 << "AB";
        QTest::newRow("nothing completed") << ".-" << 5 << "";
        QTest::newRow("a word gap counts") << ".c.w.c" << 2 << " E";
        QTest::newRow("and its character beside it") << ".c.w.c" << 3 << "E E";
        QTest::newRow("a word gap before any character") << "w.-" << 1 << " ";
        QTest::newRow("empty buffer") << "" << 1 << "";
    }

    void aPartOfTheBufferIsTranslatedAgain()
    {
        QFETCH(QString, symbols);
        QFETCH(int, count);
        QFETCH(QString, text);
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(qPrintable(symbols));
        QCOMPARE(host.handler.TranslateText(true, true, count), text);
    }

    void thePartBeginsWithTheSeparatorThatCompletesTheCount()
    {
        QTemporaryDir dir;
        // An entry without a code is what the separator alone decodes to.
        writeFile(dir.filePath("Test.mal"), "B\t-...\n# nothing\n\n");
        MorseFixture host;
        host.alphabetDirectory->SetValue(dir.path(), nullptr);
        host.alphabet->AddItems({"Test"}, nullptr);
        host.alphabet->Select(QStringLiteral("Test"), nullptr);
        host.handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        QVERIFY(host.handler.StartNewMorseSession());
        host.send(".-c-...w--");
        QCOMPARE(host.handler.TranslateText(true, true, 2), QStringLiteral("# nothingB "));
    }

    void thePartFromTheFrontIsEmptyAndTheWholeIsWhole()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(".-c-...w--");
        QCOMPARE(host.handler.TranslateText(true, false, 5), QString());
        QCOMPARE(host.handler.TranslateText(false, true, 1), QStringLiteral("AB M"));
        QCOMPARE(host.handler.TranslateText(true, true, 0), QStringLiteral("AB M"));
        QCOMPARE(host.handler.TranslateText(true, true, -1), QStringLiteral("AB M"));
        host.handler.ClearSymbolBuffer();
        QCOMPARE(host.handler.TranslateText(false, true, 1), QString());
    }

    // Wiring

    void missingPathsAndOtherKindsLeaveARoleEmpty()
    {
        MorseValues values;
        MorseHandler handler;
        const QString missing = QStringLiteral("Morse/Missing");
        const QString wrong = MorseValues::path("Symbol");
        handler.SetSymbol_ValuePath(MorseValues::path("Text"));
        for (const QString& path : {missing, wrong, QString()}) {
            handler.SetMorseAvailable_ValuePath(path);
            handler.SetMorseText_ValuePath(path);
            handler.SetMorseAlphabet_ValuePath(path);
            handler.SetMorseSaveToFile_ValuePath(path);
            handler.SetMorseXmlSaveToFile_ValuePath(path);
            handler.SetMorseAlphabet_DirectoryPath(path);
            handler.SetTextDirectionRTL_ValuePath(path);
            handler.SetFrequency_ValuePath(path);
            handler.SetModtype_ValuePath(path);
            handler.SetDecResult_ValuePath(path);
            handler.SetGenXmlTunerDemodulatorSettingsPath(path);
            handler.SetXmlTunerDemodulatorSettings(path);
            handler.SetSaveDirectoryPath(QString(), path, path, path);
        }
        QCOMPARE(values.tree.Find(missing), nullptr);
        QCOMPARE(handler.GetMorseAlphabet(), nullptr);
        // Nothing is attached, and everything can be called all the same.
        QVERIFY(!handler.StartNewMorseSession());
        handler.SetMorseAvailable(true);
        handler.SetTimestamp(1);
        handler.SetTimestamp(2);
        for (const int code : {0, 3, 4, 5, 64})
            handler.AddSymbol(code);
        QCOMPARE(handler.GetCurrentMorseSymbolString(), QStringLiteral(".cw\n"));
        handler.EndMorseSession();
    }

    void everythingCanBeCalledWithoutATree()
    {
        MorseHandler handler;
        handler.SetSymbol_ValuePath(QStringLiteral("a"));
        handler.SetMorseAvailable_ValuePath(QStringLiteral("a"));
        QVERIFY(!handler.StartNewMorseSession());
        handler.AddSymbol(0);
        QCOMPARE(handler.GetCurrentMorseSymbolString(), QString());
        handler.EndMorseSession();
    }

    void aNewPathLeavesTheValueBefore()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        auto* const other = host.tree.Add<IntegerValue>(QStringLiteral("Other/Symbol"));
        host.handler.SetSymbol_ValuePath(QStringLiteral("Other/Symbol"));
        host.send(".");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
        other->SetValue(1, nullptr);
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral("-"));
        host.handler.SetSymbol_ValuePath(QStringLiteral("nowhere"));
        other->SetValue(0, nullptr);
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral("-"));
    }

    void aValueInTwoRolesIsStillHeardOfWhenItLeavesOne()
    {
        MorseFixture host;
        host.handler.SetModtype_ValuePath(MorseValues::path("Modulation"));
        host.handler.SetDecResult_ValuePath(MorseValues::path("Modulation"));
        host.handler.SetModtype_ValuePath(QStringLiteral("nowhere"));
        // Its deletion reaches the role that is left; nothing is followed afterwards.
        delete host.modulation;
        host.handler.SetDecResult_ValuePath(QStringLiteral("nowhere"));
        QVERIFY(!host.tree.Find(MorseValues::path("Modulation")));
    }

    void aValueIsLeftWithItsLastRole()
    {
        MorseFixture host;
        host.handler.SetModtype_ValuePath(MorseValues::path("Modulation"));
        host.handler.SetDecResult_ValuePath(MorseValues::path("Modulation"));
        host.handler.SetModtype_ValuePath(QStringLiteral("nowhere"));
        QVERIFY(!host.modulation->AddObserver(&host.handler)); // registered still
        host.handler.SetDecResult_ValuePath(QStringLiteral("nowhere"));
        QVERIFY(host.modulation->AddObserver(&host.handler));
        host.modulation->DeleteObserver(&host.handler);
    }

    void aDeletedValueIsForgottenInEveryRole()
    {
        MorseFixture host;
        host.handler.SetModtype_ValuePath(MorseValues::path("Modulation"));
        host.handler.SetDecResult_ValuePath(MorseValues::path("Modulation"));
        delete host.modulation;
        host.handler.SetModtype_ValuePath(QStringLiteral("nowhere"));
        host.handler.SetDecResult_ValuePath(QStringLiteral("nowhere"));
        QVERIFY(!host.tree.Find(MorseValues::path("Modulation")));
    }

    void valuesMayBeDeletedInAnyOrder_data()
    {
        QTest::addColumn<int>("first");
        for (int first = 0; first < 16; ++first)
            QTest::addRow("starting with value %d", first) << first;
    }

    void valuesMayBeDeletedInAnyOrder()
    {
        QFETCH(int, first);
        QTemporaryDir dir;
        MorseFixture host;
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        host.handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        host.handler.SetTextDirectionRTL_ValuePath(MorseValues::path("RightToLeft"));
        host.handler.SetFrequency_ValuePath(MorseValues::path("Frequency"));
        host.handler.SetModtype_ValuePath(MorseValues::path("Modulation"));
        host.handler.SetDecResult_ValuePath(MorseValues::path("DecoderResult"));
        host.wireFiles(dir.path());
        host.saveToFile->SetValue(true, nullptr);
        host.handler.StartNewMorseSession();
        ValueBase* const values[] = {
            host.symbol,       host.available,     host.text,         host.alphabet,
            host.rightToLeft,  host.saveToFile,    host.saveDocument, host.frequency,
            host.modulation,   host.decoderResult, host.settings,     host.settingsRequest,
            host.textFileName, host.codeFileName,  host.xmlFileName,  host.alphabetDirectory};
        unsigned long long time = MORNING_us;
        for (int i = 0; i < 16; ++i) {
            delete values[(first + i) % 16];
            for (const int code : {0, 1, 3, 64, 4, 5})
                host.handler.AddSymbol(code);
            host.handler.SetTimestamp(time += 1000);
            host.handler.ChangeAlphabet();
        }
        QCOMPARE(host.handler.GetMorseAlphabet(), nullptr);
        host.handler.StartNewMorseSession();
        host.handler.AddSymbol(0);
        // The availability value is gone, so nothing more is processed.
        const QString symbols = host.handler.GetCurrentMorseSymbolString();
        host.handler.AddSymbol(0);
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), symbols);
    }

    void anObserverMayDeleteTheTextValueWhenItIsNotified()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(".c");
        auto log = std::make_unique<TextLog>(host.text);
        TextValue* const text = host.text;
        log->onText = [text](const QString&) { delete text; };
        host.send(".c-c");
        QVERIFY(!host.tree.Find(MorseValues::path("Text")));
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral(".c.c-c"));
    }

    void aDeletedValueThatReportsAnotherStateIsKept()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.symbol->HasChanged(eCHANGE_DELETED, nullptr);
        host.send(".");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral("."));
    }

    void aValueThatSaysItGoesIsLeft()
    {
        MorseFixture host;
        host.symbol->SetState(eSTATE_DELETED, nullptr);
        host.symbol->HasChanged(eCHANGE_DELETED, nullptr);
        QVERIFY(host.symbol->AddObserver(&host.handler)); // is not registered any more
        host.symbol->DeleteObserver(&host.handler);
    }

    void aValueThatIsNotObservedIsLeftAloneInStateOne()
    {
        MorseFixture host;
        host.handler.SetTextDirectionRTL_ValuePath(MorseValues::path("RightToLeft"));
        host.rightToLeft->SetValue(true, nullptr);
        host.rightToLeft->SetState(eSTATE_DELETED, nullptr);
        host.handler.ChangeAlphabet();
        QVERIFY(host.rightToLeft->GetValue());
        host.rightToLeft->SetState(eSTATE_VALID, nullptr);
        host.handler.ChangeAlphabet();
        QVERIFY(!host.rightToLeft->GetValue());
    }

    void aReplacedValueThatIsNotObservedIsFoundAgain()
    {
        MorseFixture host;
        host.handler.SetTextDirectionRTL_ValuePath(MorseValues::path("RightToLeft"));
        delete host.rightToLeft;
        host.handler.ChangeAlphabet();
        auto* const again = host.tree.Add<FlagValue>(MorseValues::path("RightToLeft"));
        again->SetValue(true, nullptr);
        host.handler.ChangeAlphabet();
        QVERIFY(!again->GetValue());
    }

    void everyObservedValueThatSaysItGoesIsLeft()
    {
        MorseValues values;
        MorseHandler handler;
        handler.SetMorseXmlSaveToFile_ValuePath(MorseValues::path("SaveDocument"));
        handler.SetXmlTunerDemodulatorSettings(MorseValues::path("Settings"));
        handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        for (ValueBase* value : std::initializer_list<ValueBase*>{
                 values.saveDocument, values.settings, values.alphabetDirectory}) {
            value->SetState(eSTATE_DELETED, nullptr);
            value->HasChanged(eCHANGE_DELETED, nullptr);
            QVERIFY2(value->AddObserver(&handler), qPrintable(value->GetName()));
            value->DeleteObserver(&handler);
        }
    }

    void theDocumentTriggerIsSetToTrueWhenAttached()
    {
        MorseFixture host;
        struct Listener : IObserver
        {
            void Update(Observable*, TChangeCode code) override { codes += code; }
            QVector<int> codes;
        } others;
        host.saveDocument->AddObserver(&others);
        host.handler.SetMorseXmlSaveToFile_ValuePath(MorseValues::path("SaveDocument"));
        QVERIFY(host.saveDocument->GetValue());
        // What the handler replays to itself, nobody else hears.
        QCOMPARE(others.codes, QVector<int>({3}));
        host.saveDocument->DeleteObserver(&others);
    }

    void aForcedSymbolIsTracedOnly()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        TraceRecorder traces;
        host.symbol->HasChanged(eCHANGE_FORCED, nullptr);
        QCOMPARE(traces.Traces().size(), 1);
        QCOMPARE(traces.Traces().at(0).message, QStringLiteral("new line in morsehandler receive"));
        QCOMPARE(traces.Traces().at(0).sourceFile,
                 QStringLiteral("tools\\morsehandler\\morsehandler"));
        QCOMPARE(traces.Traces().at(0).line, 526);
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
        setTraceMask(0xFFFFFFFFU & ~0x20U);
        host.symbol->HasChanged(eCHANGE_FORCED, nullptr);
        QCOMPARE(traces.Traces().size(), 1);
    }

    void foreignSourcesAndOtherCodesAreIgnored()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        IntegerValue stranger;
        observerPart(host.handler).Update(&stranger, eCHANGE_CONTENT);
        observerPart(host.handler).Update(nullptr, eCHANGE_CONTENT);
        for (int code = 0; code < 64; ++code) {
            if (code != eCHANGE_CONTENT)
                observerPart(host.handler).Update(host.symbol, static_cast<TChangeCode>(code));
        }
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
        host.send(".");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral("."));
    }

    void aDestroyedHandlerIsNotNotifiedAnyMore()
    {
        MorseValues values;
        {
            MorseHandler handler;
            handler.SetSymbol_ValuePath(MorseValues::path("Symbol"));
            handler.SetFrequency_ValuePath(MorseValues::path("Frequency"));
            handler.SetModtype_ValuePath(MorseValues::path("Modulation"));
        }
        values.symbol->SetValue(1, nullptr);
        values.frequency->SetValue(1, nullptr);
        values.modulation->HasChanged(eCHANGE_CONTENT, nullptr);
        QCOMPARE(values.symbol->GetValue(), 1);
    }

    void aDestroyedHandlerIsRegisteredWithNoValue()
    {
        MorseValues values;
        auto handler = std::make_unique<MorseHandler>();
        IObserver* const former = handler.get();
        handler->SetSymbol_ValuePath(MorseValues::path("Symbol"));
        handler->SetMorseAvailable_ValuePath(MorseValues::path("Available"));
        handler->SetMorseText_ValuePath(MorseValues::path("Text"));
        handler->SetMorseSaveToFile_ValuePath(MorseValues::path("SaveToFile"));
        handler->SetMorseXmlSaveToFile_ValuePath(MorseValues::path("SaveDocument"));
        handler->SetXmlTunerDemodulatorSettings(MorseValues::path("Settings"));
        handler->SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        handler->SetFrequency_ValuePath(MorseValues::path("Frequency"));
        handler->SetModtype_ValuePath(MorseValues::path("Modulation"));
        handler->SetDecResult_ValuePath(MorseValues::path("DecoderResult"));
        handler.reset();
        for (ValueBase* value : std::initializer_list<ValueBase*>{
                 values.symbol, values.available, values.text, values.saveToFile,
                 values.saveDocument, values.settings, values.alphabetDirectory, values.frequency,
                 values.modulation, values.decoderResult}) {
            QVERIFY2(value->AddObserver(former), qPrintable(value->GetName()));
            value->DeleteObserver(former);
        }
    }

    void aHandlerThatMemoryFailsWhileItEndsTracesIt()
    {
        MorseValues values;
        TraceRecorder traces;
        auto handler = std::make_unique<MorseHandler>();
        handler->SetSymbol_ValuePath(MorseValues::path("Symbol"));
        {
            const OutOfMemory outOfMemory;
            handler.reset(); // leaving a value takes memory
            QVERIFY(OutOfMemory::HasHappened());
        }
        QCOMPARE(traces.Messages(),
                 QStringList{"Exception caught in MorseTranslator::~MorseHandler"});
        QCOMPARE(traces.Traces().at(0).sourceFile,
                 QStringLiteral("tools\\morsehandler\\morsehandler"));
        QCOMPARE(traces.Traces().at(0).line, 149);
        values.symbol->SetValue(1, nullptr); // no observer is left
    }

    void anExceptionWhileALostFileIsTracedStaysInTheDestructor()
    {
        QTemporaryDir dir;
        MorseFixture host;
        TraceRecorder traces;
        auto handler = std::make_unique<MorseHandler>();
        handler->SetSaveDirectoryPath(dir.path(), QString(), QString(), QString());
        handler->SetMorseSaveToFile_ValuePath(MorseValues::path("SaveToFile"));
        handler->SetMorseAvailable_ValuePath(MorseValues::path("Available"));
        host.saveToFile->SetValue(true, nullptr);
        handler->StartNewMorseSession();
        const FullDisk full(0);
        handler->AddSymbol(0);
        int thrown = 0;
        const TraceSink recorder = setTraceSink({});
        setTraceSink([&](const QString& message, const QString& sourceFile, int line) {
            if (thrown++ == 0)
                throw std::runtime_error("a trace");
            recorder(message, sourceFile, line);
        });
        handler.reset();
        setTraceSink(recorder);
        QCOMPARE(thrown, 2);
        QCOMPARE(traces.Messages(),
                 QStringList{"Exception caught in MorseTranslator::~MorseHandler"});
    }

    void aValueThatAnnouncesItsDeletionIsNotTaken()
    {
        struct Attacher : IObserver
        {
            void Update(Observable*, TChangeCode code) override
            {
                if (code == eCHANGE_DELETED)
                    handler.SetSymbol_ValuePath(MorseValues::path("Symbol"));
            }
            MorseHandler handler;
        } attacher;
        MorseValues values;
        attacher.handler.SetMorseAvailable(true);
        values.symbol->AddObserver(&attacher);
        delete values.symbol;
        auto* const symbol = values.tree.Add<IntegerValue>(MorseValues::path("Symbol"));
        symbol->SetValue(1, nullptr);
        QCOMPARE(attacher.handler.GetCurrentMorseSymbolString(), QString());
        attacher.handler.SetSymbol_ValuePath(MorseValues::path("Symbol"));
        symbol->SetValue(0, nullptr);
        QCOMPARE(attacher.handler.GetCurrentMorseSymbolString(), QStringLiteral("."));
    }

    void anAvailabilityThatIsAttachedInASessionCountsAtOnce()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.handler.SetMorseAvailable_ValuePath(MorseValues::path("RightToLeft")); // false
        host.send(".");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
    }

    void aValueThatIsNotAvailableWhenItIsAttachedCounts()
    {
        MorseFixture host;
        host.available->SetValue(false, nullptr);
        host.handler.SetMorseAvailable_ValuePath(MorseValues::path("Available"));
        host.handler.StartNewMorseSession();
        host.send(".");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QString());
        host.available->SetValue(true, nullptr);
        host.send("-");
        QCOMPARE(host.handler.GetCurrentMorseSymbolString(), QStringLiteral("."));
    }

    void aFlagInTwoRolesIsStillHeardOfWhenItLeavesTheFirst()
    {
        MorseFixture host;
        host.handler.SetMorseSaveToFile_ValuePath(MorseValues::path("Available"));
        host.handler.StartNewMorseSession();
        host.handler.SetMorseAvailable_ValuePath(MorseValues::path("SaveDocument"));
        host.handler.SetMorseAvailable(true);
        QTemporaryDir dir;
        host.handler.SetSaveDirectoryPath(dir.path(), QString(), QString(), QString());
        host.available->HasChanged(eCHANGE_CONTENT, nullptr);
        host.send(".c");
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 2);
        host.available->SetValue(false, nullptr);
        host.available->HasChanged(eCHANGE_FORCED, nullptr);
        host.send("-c");
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 2);
    }

    void aForcedStrangerIsNotTraced()
    {
        MorseFixture host;
        TraceRecorder traces;
        IntegerValue stranger;
        observerPart(host.handler).Update(&stranger, eCHANGE_FORCED);
        QCOMPARE(traces.Messages(), QStringList());
    }

    void theTimeStringCanBePartOfAFileName()
    {
        MorseHandler handler;
        const QDateTime before = QDateTime::currentDateTimeUtc();
        const QString text = (handler.*memberOf(TimeString()))();
        const QDateTime after = QDateTime::currentDateTimeUtc();
        const QString format = "yyyy-MM-dd__hh_mm_ss";
        QVERIFY(QDateTime::fromString(text, format).isValid());
        QVERIFY(before.toString(format) <= text && text <= after.toString(format));
    }

    void theIdentifierIsStored()
    {
        MorseHandler handler;
        handler.SetIpcIdentifier(QStringLiteral("A05"));
        QCOMPARE(handler.*memberOf(Identifier()), QStringLiteral("__SGA_IPC5"));
    }

    void hooksChangeNothingThatCanBeSeen()
    {
        MorseFixture host;
        host.handler.StartNewMorseSession();
        host.send(".");
        for (const char* id : {"A05", "B12", "5", "0", ""})
            host.handler.SetIpcIdentifier(QLatin1String(id));
        host.handler.SetBaudrate(1.5);
        host.handler.SetFrequencyOffset(-10);
        host.send("c");
        QCOMPARE(host.text->GetValue(), QStringLiteral("E"));
    }

    // Deletions in the middle of a notification

    void valuesMayBeDeletedByAnObserverOfTheText_data()
    {
        QTest::addColumn<QString>("path");
        for (const char* name : {"Symbol", "Available", "Text", "SaveToFile", "SaveDocument",
                                 "TextFileName", "CodeFileName", "Frequency", "Alphabet"})
            QTest::newRow(name) << MorseValues::path(name);
    }

    void valuesMayBeDeletedByAnObserverOfTheText()
    {
        QFETCH(QString, path);
        QTemporaryDir dir;
        MorseFixture host;
        host.handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        host.handler.SetFrequency_ValuePath(MorseValues::path("Frequency"));
        host.wireFiles(dir.path());
        host.saveToFile->SetValue(true, nullptr);
        host.handler.StartNewMorseSession();
        host.handler.SetTimestamp(MORNING_us);
        TextLog log(host.text);
        log.onText = [&](const QString&) { delete host.tree.Find(path); };
        host.send(".-");
        host.handler.AddSymbol(3);
        QVERIFY(!host.tree.Find(path));
        QCOMPARE(log.texts, QStringList({"A"}));
        for (const int code : {0, 3, 4, 5})
            host.handler.AddSymbol(code);
        QCOMPARE(host.handler.GetCurrentMorseSymbolString().left(3), QStringLiteral(".-c"));
    }

    void valuesMayBeDeletedByTheirObservers_data()
    {
        QTest::addColumn<QString>("path");
        for (const char* name : {"TextFileName", "CodeFileName", "XmlFileName", "SettingsRequest"})
            QTest::newRow(name) << MorseValues::path(name);
    }

    void valuesMayBeDeletedByTheirObservers()
    {
        QFETCH(QString, path);
        QTemporaryDir dir;
        MorseFixture host;
        host.wireFiles(dir.path());
        host.saveToFile->SetValue(true, nullptr);
        host.handler.StartNewMorseSession();
        struct Deleter : IObserver
        {
            void Update(Observable*, TChangeCode code) override
            {
                if (code == eCHANGE_CONTENT)
                    delete value;
            }
            ValueBase* value = nullptr;
        } deleter;
        deleter.value = host.tree.Find(path);
        deleter.value->AddObserver(&deleter);
        host.handler.SetTimestamp(MORNING_us);
        host.send(".-c");
        host.saveDocument->HasChanged(eCHANGE_FORCED, nullptr);
        QVERIFY(!host.tree.Find(path));
        QCOMPARE(host.text->GetValue(), QStringLiteral("A"));
        QCOMPARE(QDir(dir.path()).entryList({"*.txt", "*.xml"}).size(), 3);
    }
};

QTEST_GUILESS_MAIN(tst_MorseHandler)
#include "tst_morsehandler.moc"
