// SPDX-License-Identifier: MIT
// What is shipped is true: every map equals the independent table that iconv has of it, every key
// of an alphabet can be received, every file has its origin written down.
#include "app/translate/mapfiles.h"
#include "charmap/codechandler.h"
#include "host/standin/configuration.h"
#include "morse/morsetranslator.h"
#include "support/files.h"
#include "tables/alphabetfile.h"
#include "tables/tableformat.h"

#include <QtTest>

#include <iconv.h>

namespace {

QDir folder(const char* name)
{
    return QDir(QStringLiteral(PROJECT_DATA_DIR "/") + QLatin1String(name));
}

QMap<uchar, QChar> mapOf(const QString& fileName)
{
    Faults faults;
    const CharacterMapping characters =
        formatReadFrom(fileName)
            ->readCharacters(contentOf(folder("maps").filePath(fileName)), faults)
            .characters;
    QMap<uchar, QChar> bytes;
    for (auto entry = characters.cbegin(); entry != characters.cend(); ++entry)
        bytes.insert(static_cast<uchar>(entry.key()), *entry);
    return bytes;
}

/// What a map shows for a byte: what it does not list stays as it is.
QChar shown(const QMap<uchar, QChar>& map, int byte)
{
    return map.value(uchar(byte), QChar(byte));
}

/// One byte in iconv's table of `charset`; no value where that table has none.
class Oracle
{
public:
    explicit Oracle(const QByteArray& charset)
        : m_converter(iconv_open("UTF-16LE", charset.constData()))
    {
    }
    ~Oracle()
    {
        if (isValid())
            iconv_close(m_converter);
    }
    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;

    bool isValid() const { return m_converter != iconv_t(-1); }

    QString character(int byte) const
    {
        char in = char(byte);
        char out[8];
        char* from = &in;
        char* to = out;
        size_t inLeft = 1;
        size_t outLeft = sizeof(out);
        iconv(m_converter, nullptr, nullptr, nullptr, nullptr);
        if (iconv(m_converter, &from, &inLeft, &to, &outLeft) == size_t(-1))
            return {};
        iconv(m_converter, nullptr, nullptr, &to, &outLeft);
        QString text;
        for (int i = 0; i + 1 < int(sizeof(out) - outLeft); i += 2)
            text += QChar(uchar(out[i]) | uchar(out[i + 1]) << 8);
        return text;
    }

private:
    iconv_t m_converter;
};

} // namespace

class tst_ShippedData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyMapCanBeChosenAndTurnedBack_data();
    void everyMapCanBeChosenAndTurnedBack();
    void theSampleDecodersCoverEveryCharacterSet();
    void mapsEqualIconv_data();
    void mapsEqualIconv();
    void theTildeIsAllThatDanishHasElse();
    void koi7N2IsLatinBelowAndTheCapitalsOfN1Above();
    void hebrewIsTheUpperHalfOfItsEightBitSuccessor();
    void russianTeleprinterLettersAreThoseOfKoi7();
    void everyRussianLetterOfTheTeleprinterHasACharacter();
    void usAndInternationalFiguresUndoEachOther();
    void everyKeyCanBeReceived_data();
    void everyKeyCanBeReceived();
    void onlySemiticScriptsRunRightToLeft();
    void theInternationalAlphabetHasTheSignsOfTheRecommendation();
    void lettersOfALanguageHaveItsCodes_data();
    void lettersOfALanguageHaveItsCodes();
    void cyrillicAlphabetsHoldEveryLetterThatHasACode_data();
    void cyrillicAlphabetsHoldEveryLetterThatHasACode();
    void everyFileHasItsOriginWrittenDown_data();
    void everyFileHasItsOriginWrittenDown();
};

void tst_ShippedData::initTestCase()
{
    // A process asks for the name of its decoder modules file once.
    setConfigurationValue(QString(), QStringLiteral("DecoderModulesFile"),
                          folder("decoders").filePath(QStringLiteral("decodermodules.txt")));
}

void tst_ShippedData::everyMapCanBeChosenAndTurnedBack_data()
{
    QTest::addColumn<QString>("name");
    for (const translate::MapFile& file : translate::mapFilesIn(folder("maps")))
        QTest::newRow(qPrintable(file.name)) << file.name;
}

void tst_ShippedData::everyMapCanBeChosenAndTurnedBack()
{
    QFETCH(QString, name);
    CodecHandler handler;
    handler.SetAlphabetsDir(folder("maps").path());
    QVERIFY(handler.SetAlphabet(name));
    QString bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += QChar(byte);
    const QString text = handler.Translate(bytes);
    QVERIFY(text != bytes);
    QCOMPARE(handler.TextDirectionRTL(), name.startsWith(QLatin1String("Hebrew")));
    for (int byte = 0; byte < 256; ++byte) {
        if (text.count(text.at(byte)) == 1)
            QCOMPARE(handler.Backtranslate(text.at(byte)), QString(bytes.at(byte)));
    }
}

void tst_ShippedData::theSampleDecodersCoverEveryCharacterSet()
{
    CodecHandler handler;
    QCOMPARE(handler.CharsetForDecoder(QStringLiteral("Baudot")), eCHARSET_ITA2);
    QCOMPARE(handler.CharsetForDecoder(QStringLiteral("ASCII RTTY")), eCHARSET_ASCII);
    QCOMPARE(handler.CharsetForDecoder(QStringLiteral("PSK31")), eCHARSET_BOTH);
    QCOMPARE(handler.CharsetForDecoder(QStringLiteral("Morse")), eCHARSET_NONE);
}

void tst_ShippedData::mapsEqualIconv_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("charset");
    const auto row = [](const char* file, const char* charset) {
        QTest::newRow(file) << QString::fromLatin1(file) << QByteArray(charset);
    };
    row("British.ascii.map", "BS_4730");
    row("French.ascii.map", "NF_Z_62-010");
    row("German.ascii.map", "DIN_66003");
    row("Greek.ascii.map", "GREEK7");
    row("Greek-CCITT.ascii.map", "GREEK-CCITT");
    row("Italian.ascii.map", "IT");
    row("KOI-7-N1.ascii.map", "KOI-7");
    row("Norwegian-Danish.ascii.map", "NS_4551-1");
    row("Spanish.ascii.map", "ES");
    row("Swedish-Finnish.ascii.map", "SEN_850200_B");
}

void tst_ShippedData::mapsEqualIconv()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, charset);

    const Oracle oracle(charset);
    QVERIFY2(oracle.isValid(), "this iconv has no such table");
    const QMap<uchar, QChar> map = mapOf(file);
    QVERIFY(!map.isEmpty());
    for (int byte = 0; byte < 256; ++byte) {
        const QString expected = oracle.character(byte);
        if (expected.isEmpty()) {
            // The standard leaves the byte undefined: the map does not touch it.
            QVERIFY2(!map.contains(uchar(byte)), qPrintable(QString::number(byte, 16)));
        } else {
            QCOMPARE(QString(shown(map, byte)), expected);
        }
    }
}

void tst_ShippedData::theTildeIsAllThatDanishHasElse()
{
    const Oracle danish("DS_2089");
    QVERIFY(danish.isValid());
    const QMap<uchar, QChar> map = mapOf(QStringLiteral("Norwegian-Danish.ascii.map"));
    for (int byte = 0; byte < 128; ++byte)
        QCOMPARE(QString(shown(map, byte)) == danish.character(byte), byte != '~');
}

void tst_ShippedData::koi7N2IsLatinBelowAndTheCapitalsOfN1Above()
{
    const Oracle n1("KOI-7");
    QVERIFY(n1.isValid());
    const QMap<uchar, QChar> map = mapOf(QStringLiteral("KOI-7-N2.ascii.map"));
    for (int byte = 0; byte < 128; ++byte) {
        const bool latin = byte >= 0x40 && byte < 0x60;
        QCOMPARE(QString(shown(map, byte)), latin ? QString(QChar(byte)) : n1.character(byte));
    }
}

void tst_ShippedData::hebrewIsTheUpperHalfOfItsEightBitSuccessor()
{
    const Oracle eightBit("ISO-8859-8");
    QVERIFY(eightBit.isValid());
    const QMap<uchar, QChar> map = mapOf(QStringLiteral("Hebrew.ascii.map"));
    for (int byte = 0; byte < 128; ++byte) {
        const bool hebrew = byte >= 0x60 && byte <= 0x7A;
        QCOMPARE(QString(shown(map, byte)), eightBit.character(hebrew ? byte | 0x80 : byte));
    }
}

void tst_ShippedData::russianTeleprinterLettersAreThoseOfKoi7()
{
    // Both codes put a Cyrillic letter where the Latin letter of its sound is, and agree.
    const Oracle koi7("KOI-7");
    QVERIFY(koi7.isValid());
    for (const char* file : {"Russian.ita2.map", "Russian-US.ita2.map"}) {
        const QMap<uchar, QChar> map = mapOf(QLatin1String(file));
        for (int letter = 'A'; letter <= 'Z'; ++letter)
            QCOMPARE(QString(shown(map, letter)), koi7.character(letter + 0x20));
    }
}

void tst_ShippedData::everyRussianLetterOfTheTeleprinterHasACharacter()
{
    // MTK-2 lacks Ё and Ъ, and writes Ч as the figure 4.
    const QString letters = QStringLiteral("АБВГДЕЖЗИЙКЛМНОПРСТУФХЦШЩЫЬЭЮЯ");
    for (const char* file : {"Russian.ita2.map", "Russian-US.ita2.map"}) {
        QString found;
        const QMap<uchar, QChar> map = mapOf(QLatin1String(file));
        for (const QChar character : map) {
            if (character.script() == QChar::Script_Cyrillic)
                found += character;
        }
        std::sort(found.begin(), found.end());
        QCOMPARE(found, letters);
    }
}

void tst_ShippedData::usAndInternationalFiguresUndoEachOther()
{
    const QMap<uchar, QChar> us = mapOf(QStringLiteral("US-TTY.ita2.map"));
    const QMap<uchar, QChar> international = mapOf(QStringLiteral("ITA2.codec"));
    QCOMPARE(us.size(), 5);
    QCOMPARE(international.size(), 5);
    // The pictures of control codes stand for the codes themselves.
    const auto byteOf = [](QChar character) {
        return uchar(character.unicode() >= 0x2400 ? character.unicode() - 0x2400
                                                   : character.unicode());
    };
    for (auto it = us.cbegin(); it != us.cend(); ++it)
        QCOMPARE(byteOf(international.value(byteOf(it.value()))), it.key());
}

void tst_ShippedData::everyKeyCanBeReceived_data()
{
    QTest::addColumn<QString>("path");
    const QFileInfoList files = folder("alphabets").entryInfoList({QStringLiteral("*.mal")});
    for (const QFileInfo& file : files)
        QTest::newRow(qPrintable(file.fileName())) << file.filePath();
}

void tst_ShippedData::everyKeyCanBeReceived()
{
    QFETCH(QString, path);
    MorseTranslator translator;
    QVERIFY(translator.SetMorseAlphabet(path));
    const QMap<QString, QString> alphabet = readAlphabetFile(contentOf(path)).codes;
    QVERIFY(alphabet.size() > 30);
    for (auto it = alphabet.cbegin(); it != alphabet.cend(); ++it)
        QCOMPARE(translator.DecodeMorse(it.value()), it.key());
}

void tst_ShippedData::onlySemiticScriptsRunRightToLeft()
{
    QStringList rightToLeft;
    const QFileInfoList files = folder("alphabets").entryInfoList({QStringLiteral("*.mal")});
    for (const QFileInfo& file : files) {
        MorseTranslator translator;
        translator.SetMorseAlphabet(file.filePath());
        if (translator.isTextDirectionRTL())
            rightToLeft += file.completeBaseName();
    }
    QCOMPARE(rightToLeft, (QStringList{QStringLiteral("Arabic"), QStringLiteral("Hebrew"),
                                       QStringLiteral("Persian")}));
}

void tst_ShippedData::theInternationalAlphabetHasTheSignsOfTheRecommendation()
{
    MorseTranslator translator;
    QVERIFY(translator.SetMorseAlphabet(folder("alphabets").filePath("International.mal")));
    QCOMPARE(translator.Translate(QStringLiteral(".--.-.c..-..c...-.-c")),
             QStringLiteral("@É<SK>"));
}

void tst_ShippedData::lettersOfALanguageHaveItsCodes_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("codes");
    QTest::addColumn<QString>("letters");
    const auto row = [](const char* file, const char* codes, const char* letters) {
        QTest::newRow(file) << QString::fromLatin1(file) << QString::fromLatin1(codes)
                            << QString::fromUtf8(letters);
    };
    row("Bulgarian.mal", "-..-c-.--c--.-c..--c.-.-c", "ЪЬЩЮЯ");
    row("French.mal", ".--.-c-.-..c.-..-c..-..c", "ÀÇÈÉ");
    row("Italian.mal", ".--.-c.-..-c..-..c.---.c---.c..--c", "ÀÈÉÌÒÙ");
    row("Spanish.mal", "..-.-c--.--c.--.-c..-..c---.c..--c--...-c", "¿ÑÁÉÓÜ¡");
    row("Ukrainian-own-codes.mal", "....c--.c----c--.-c--.--c..-..c.---.c-.--c", "ГҐХШЩЄЇИ");
    row("Ukrainian-Russian-codes.mal", "--.c....c----c--.-c..-..c.---.c-.--c", "ГХШЩЄЇИ");
}

void tst_ShippedData::lettersOfALanguageHaveItsCodes()
{
    QFETCH(QString, file);
    QFETCH(QString, codes);
    MorseTranslator translator;
    QVERIFY(translator.SetMorseAlphabet(folder("alphabets").filePath(file)));
    QTEST(translator.Translate(codes), "letters");
}

void tst_ShippedData::cyrillicAlphabetsHoldEveryLetterThatHasACode_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("letters");
    QTest::newRow("Bulgarian") << QStringLiteral("Bulgarian.mal")
                               << QStringLiteral("АБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЬЮЯ");
    QTest::newRow("Ukrainian") << "Ukrainian-own-codes.mal"
                               << QStringLiteral("ЄІЇАБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЬЮЯҐ");
    QTest::newRow("Ukrainian by Russian codes")
        << "Ukrainian-Russian-codes.mal" << QStringLiteral("ЄІЇАБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЬЮЯ");
}

void tst_ShippedData::cyrillicAlphabetsHoldEveryLetterThatHasACode()
{
    QFETCH(QString, file);
    const MorseAlphabet alphabet = readAlphabetFile(contentOf(folder("alphabets").filePath(file)));
    QString found;
    for (auto entry = alphabet.codes.cbegin(); entry != alphabet.codes.cend(); ++entry) {
        if (entry.key()[0].script() == QChar::Script_Cyrillic)
            found += entry.key();
    }
    QTEST(found, "letters");
}

void tst_ShippedData::everyFileHasItsOriginWrittenDown_data()
{
    QTest::addColumn<QString>("folderName");
    for (const char* name : {"alphabets", "maps", "decoders"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_ShippedData::everyFileHasItsOriginWrittenDown()
{
    QFETCH(QString, folderName);
    const QDir data = folder(qPrintable(folderName));
    const QString text = QString::fromUtf8(contentOf(data.filePath(QStringLiteral("README.md"))));
    const QStringList files = data.entryList(QDir::Files);
    QVERIFY(files.size() > 1);
    for (const QString& file : files) {
        if (file == QLatin1String("README.md"))
            continue;
        QVERIFY2(text.contains(QStringLiteral("| `%1` |").arg(file)), qPrintable(file));
    }
}

QTEST_APPLESS_MAIN(tst_ShippedData)
#include "tst_shippeddata.moc"
