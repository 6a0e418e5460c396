// SPDX-License-Identifier: MIT
// The tables of virtual operations of the exported classes: a host calls by place, not by name.
#include "charmap/codechandler.h"
#include "charmap/mappingdirectory.h"
#include "morse/morsetranslator.h"
#include "morse/simplemorsehandler.h"
#include "session/morsehandler.h"
#include "support/slot.h"

#include <QtTest>

#include <type_traits>

class tst_Tables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The destructor takes the first two places, as everywhere.
    void everyOperationStandsInItsPlace_data()
    {
        QTest::addColumn<int>("actual");
        QTest::addColumn<int>("place");

        int next = 2;
        const auto row = [&next](const char* name, int actual) {
            QTest::newRow(name) << actual << next++;
        };
        row("IAlphabetHandler::SetAlphabetsDir", slot(&IAlphabetHandler::SetAlphabetsDir));
        row("IAlphabetHandler::SetAlphabet", slot(&IAlphabetHandler::SetAlphabet));
        row("IAlphabetHandler::SetDecoder", slot(&IAlphabetHandler::SetDecoder));
        row("IAlphabetHandler::Alphabet", slot(&IAlphabetHandler::Alphabet));
        row("IAlphabetHandler::AvailableAlphabets", slot(&IAlphabetHandler::AvailableAlphabets));
        row("IAlphabetHandler::TextDirectionRTL", slot(&IAlphabetHandler::TextDirectionRTL));
        row("IAlphabetHandler::ResetInternalState", slot(&IAlphabetHandler::ResetInternalState));
        row("IAlphabetHandler::Translate", slot(&IAlphabetHandler::Translate));
        row("IAlphabetHandler::Backtranslate", slot(&IAlphabetHandler::Backtranslate));
        row("CodecHandler::CharsetForDecoder", slot(&CodecHandler::CharsetForDecoder));

        next = 2;
        row("IObserver::Update", slot(&IObserver::Update));
        next = 2;
        row("MappingDirectory::Update", slot(&MappingDirectory::Update));
    }

    void everyOperationStandsInItsPlace()
    {
        QFETCH(int, actual);
        QFETCH(int, place);
        QCOMPARE(actual, place);
    }

    void implementationsAddNoOtherVirtualOperations()
    {
        QCOMPARE(slot(&SimpleMorseHandler::Backtranslate), slot(&IAlphabetHandler::Backtranslate));
        QCOMPARE(slot(&MorseTranslator::DecodeMorse), -1);
        QCOMPARE(slot(&MorseTranslator::Translate), -1);
        QCOMPARE(slot(&MorseHandler::AddSymbol), -1);
        QCOMPARE(slot(&MappingDirectory::translate), -1);
    }

    void everyClassIsDestroyedThroughItsTable()
    {
        QVERIFY(std::has_virtual_destructor_v<MorseTranslator>);
        QVERIFY(std::has_virtual_destructor_v<IAlphabetHandler>);
        QVERIFY(std::has_virtual_destructor_v<SimpleMorseHandler>);
        QVERIFY(std::has_virtual_destructor_v<CodecHandler>);
        QVERIFY(std::has_virtual_destructor_v<MorseHandler>);
        QVERIFY(std::has_virtual_destructor_v<MappingDirectory>);
    }

    void aHandlerIsFirstAnObjectAndThenAnObserver()
    {
        MorseHandler handler;
        char* const whole = reinterpret_cast<char*>(&handler);
        QCOMPARE(reinterpret_cast<char*>(static_cast<QObject*>(&handler)), whole);
        QCOMPARE(reinterpret_cast<char*>(static_cast<IObserver*>(&handler)),
                 whole + sizeof(QObject));
    }

    void aMappingDirectoryIsAnObserverFromItsStart()
    {
        MappingDirectory directory{QString()};
        QCOMPARE(static_cast<void*>(static_cast<IObserver*>(&directory)),
                 static_cast<void*>(&directory));
    }
};

QTEST_GUILESS_MAIN(tst_Tables)
#include "tst_tables.moc"
