// SPDX-License-Identifier: MIT
// The order of the fields of the exported classes and of what they keep. It is part of the binary
// interface: a host derives from the classes, copies them and makes them in memory of its own. What
// is not interface lies behind one pointer at the end, so that it can change.
#include "charmap/charactermap.h"
#include "charmap/codechandler.h"
#include "charmap/decodermodulescenter.h"
#include "charmap/mappingdirectory.h"
#include "morse/morsetranslator.h"
#include "morse/simplemorsehandler.h"
#include "session/morsehandler.h"
#include "session/tavikresultdatahandler.h"
#include "support/slot.h"

#include <QtTest>

#include <algorithm>
#include <map>

namespace {

struct Field
{
    const char* name;
    std::ptrdiff_t offset;
    std::ptrdiff_t size;
    std::ptrdiff_t alignment;
};

template <typename Class, typename Type>
Field describe(const char* name, Type Class::*field)
{
    return {name, offsetOf(field), sizeof(Type), alignof(Type)};
}

/// Where the next thing of that alignment can stand.
std::ptrdiff_t aligned(std::ptrdiff_t offset, std::ptrdiff_t alignment)
{
    return (offset + alignment - 1) / alignment * alignment;
}

using Fields = std::map<int, Field>; ///< by the place in the lists below

std::map<QByteArray, Fields>& classes()
{
    static std::map<QByteArray, Fields> fieldsOfClasses;
    return fieldsOfClasses;
}

bool note(const char* className, int place, const Field& field)
{
    return classes()[className].insert({place, field}).second;
}

// An explicit instantiation may name a private field; it is noted when the program starts.
template <typename Names, int Place, auto Member>
struct Noted
{
    static inline const bool isNoted =
        note(Names::className, Place, describe(Names::fieldName, Member));
};

} // namespace

#define FIELD(Class, field)                                                                        \
    namespace {                                                                                    \
    struct Class##_##field                                                                         \
    {                                                                                              \
        static constexpr const char* className = #Class;                                           \
        static constexpr const char* fieldName = #field;                                           \
    };                                                                                             \
    template struct Noted<Class##_##field, __LINE__, &Class::field>;                               \
    }

using Quillon::DecoderModule;
using Quillon::DecoderModulesCenter;

FIELD(MorseTranslator, m_alphabetMap)
FIELD(MorseTranslator, m_unknownSymbol)
FIELD(MorseTranslator, m_textDirectionRTL)

FIELD(SimpleMorseHandler, m_alphabetsDir)
FIELD(SimpleMorseHandler, m_decoder)
FIELD(SimpleMorseHandler, m_alphabet)
FIELD(SimpleMorseHandler, m_morseMap)
FIELD(SimpleMorseHandler, m_textDirectionRTL)
FIELD(SimpleMorseHandler, m_pendingSymbols)
FIELD(SimpleMorseHandler, m_lastWasDigit)

FIELD(CodecHandler, m_charsetFiles)
FIELD(CodecHandler, m_decoderCharsets)
FIELD(CodecHandler, m_alphabetsDir)
FIELD(CodecHandler, m_decoder)
FIELD(CodecHandler, m_alphabet)
FIELD(CodecHandler, m_charMap)
FIELD(CodecHandler, m_textDirectionRTL)

FIELD(MorseHandler, m_pSymbol)
FIELD(MorseHandler, m_pMorseAvailable)
FIELD(MorseHandler, m_pMorseText)
FIELD(MorseHandler, m_pMorseAlphabet)
FIELD(MorseHandler, m_pMorseSaveToFile)
FIELD(MorseHandler, m_pMorseXmlSaveToFile)
FIELD(MorseHandler, m_pTextFileName)
FIELD(MorseHandler, m_pXmlFileName)
FIELD(MorseHandler, m_pCodeFileName)
FIELD(MorseHandler, m_pMorseAlphabetDirectory)
FIELD(MorseHandler, m_pTextDirectionRTL)
FIELD(MorseHandler, m_pFrequency)
FIELD(MorseHandler, m_pModtype)
FIELD(MorseHandler, m_pDecResult)
FIELD(MorseHandler, m_pTranslator)
FIELD(MorseHandler, m_strAlphabetDirectory)
FIELD(MorseHandler, m_strSymbolBuffer)
FIELD(MorseHandler, m_strCurrentSymbols)
FIELD(MorseHandler, m_strErrorMarks)
FIELD(MorseHandler, m_strSaveDirectory)
FIELD(MorseHandler, m_strCodeFileName)
FIELD(MorseHandler, m_strTextFileName)
FIELD(MorseHandler, m_strReserved1)
FIELD(MorseHandler, m_strReserved2)
FIELD(MorseHandler, m_strIpcIdentifier)
FIELD(MorseHandler, m_pTextFile)
FIELD(MorseHandler, m_pTextStream)
FIELD(MorseHandler, m_pCodeFile)
FIELD(MorseHandler, m_pCodeStream)
FIELD(MorseHandler, m_bMorseAvailable)
FIELD(MorseHandler, m_bSessionActive)
FIELD(MorseHandler, m_bSaveToFile)
FIELD(MorseHandler, m_bDigitMode)
FIELD(MorseHandler, m_nCodeColumn)
FIELD(MorseHandler, m_nTextColumn)
FIELD(MorseHandler, m_nLineLength)
FIELD(MorseHandler, m_symbolList)
FIELD(MorseHandler, m_pDateTime)
FIELD(MorseHandler, m_nPreviousTimestamp)
FIELD(MorseHandler, m_nCurrentTimestamp)
FIELD(MorseHandler, m_pResultDataHandler)
FIELD(MorseHandler, m_pGenXmlTunerDemodulatorSettings)
FIELD(MorseHandler, m_pXmlTunerDemodulatorSettings)

FIELD(TavikResultDataHandler, m_pResultData)
FIELD(TavikResultDataHandler, m_pTransmission)
FIELD(TavikResultDataHandler, m_pDataBlock)
FIELD(TavikResultDataHandler, m_strFilename)
FIELD(TavikResultDataHandler, m_nLastTimestamp)
FIELD(TavikResultDataHandler, m_strWorkDir)

FIELD(CharacterMap, table)
FIELD(CharacterMap, loaded)
FIELD(CharacterMap, rightToLeft)

FIELD(MappingDirectory, m_currentMap)
FIELD(MappingDirectory, m_currentCharset)
FIELD(MappingDirectory, m_enabled)
FIELD(MappingDirectory, m_history)
FIELD(MappingDirectory, m_ipcIdentifier)
FIELD(MappingDirectory, m_translatedFileDirectory)
FIELD(MappingDirectory, m_outputFile)
FIELD(MappingDirectory, m_outputStream)
FIELD(MappingDirectory, m_maps)
FIELD(MappingDirectory, m_decoderCharsets)
FIELD(MappingDirectory, m_retranslating)
FIELD(MappingDirectory, m_decoder)
FIELD(MappingDirectory, m_availableMaps)
FIELD(MappingDirectory, m_dataInput)
FIELD(MappingDirectory, m_dataOutput)
FIELD(MappingDirectory, m_translateAll)
FIELD(MappingDirectory, m_translatedFile)
FIELD(MappingDirectory, m_saveToFile)
FIELD(MappingDirectory, m_maxNumberOfChars)
FIELD(MappingDirectory, m_frequency)
FIELD(MappingDirectory, m_modulationType)
FIELD(MappingDirectory, m_channelIndex)
FIELD(MappingDirectory, m_textDirectionRTL)

FIELD(DecoderModule, id)
FIELD(DecoderModule, number)
FIELD(DecoderModule, type)
FIELD(DecoderModule, flags)
FIELD(DecoderModule, charset)
FIELD(DecoderModule, name)

FIELD(DecoderModulesCenter, m_fileName)
FIELD(DecoderModulesCenter, m_modules)
FIELD(DecoderModulesCenter, m_flag0)

class tst_Fields : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fieldsLieInTheirOrderWithNothingBetween_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("pointers"); // behind the fields
        QTest::addColumn<int>("size");

        const int table = sizeof(void*);
        const int object = sizeof(QObject);
        const auto row = [](const char* name, int first, int count, int pointers,
                            std::size_t size) {
            QTest::newRow(name) << QByteArray(name) << first << count << pointers << int(size);
        };
        row("MorseTranslator", table, 3, 0, sizeof(MorseTranslator));
        row("SimpleMorseHandler", table, 7, 0, sizeof(SimpleMorseHandler));
        row("CodecHandler", table, 7, 0, sizeof(CodecHandler));
        row("MorseHandler", object + table, 43, 1, sizeof(MorseHandler));
        row("TavikResultDataHandler", object, 6, 0, sizeof(TavikResultDataHandler));
        row("CharacterMap", 0, 3, 0, sizeof(CharacterMap));
        row("MappingDirectory", table, 23, 1, sizeof(MappingDirectory));
        row("DecoderModule", 0, 6, 0, sizeof(DecoderModule));
        row("DecoderModulesCenter", table, 3, 0, sizeof(DecoderModulesCenter));
    }

    void fieldsLieInTheirOrderWithNothingBetween()
    {
        QFETCH(QByteArray, name);
        QFETCH(int, first);
        QFETCH(int, count);
        QFETCH(int, pointers);
        QFETCH(int, size);

        const Fields& fields = classes()[name];
        QCOMPARE(int(fields.size()), count);
        std::ptrdiff_t end = first;
        std::ptrdiff_t alignment = sizeof(void*);
        for (const auto& [place, field] : fields) {
            QVERIFY2(field.offset == aligned(end, field.alignment), field.name);
            end = field.offset + field.size;
            alignment = std::max(alignment, field.alignment);
        }
        end = aligned(end, alignof(void*)) + pointers * std::ptrdiff_t(sizeof(void*));
        QCOMPARE(size, int(aligned(end, alignment)));
    }
};

QTEST_APPLESS_MAIN(tst_Fields)
#include "tst_fields.moc"
