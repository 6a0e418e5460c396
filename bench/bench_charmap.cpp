// SPDX-License-Identifier: MIT
// Translation through a map file of Windows-1251 in both directions, beside a hand-written loop
// over a table that stands ready, iconv, ICU and QTextCodec; and the reading of files.
#include "bench/race.h"

#include "charmap/codechandler.h"
#include "host/standin/configuration.h"
#include "support/files.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTextCodec>

#include <iconv.h>
#include <unicode/ucnv.h>

#include <array>
#include <cstdlib>
#include <numeric>

namespace {

const char* const CHARSET = "windows-1251";
constexpr std::int64_t SINGLE = 1;
constexpr std::int64_t PIECE = 64 * 1024;
constexpr std::int64_t LONG = 16 * 1024 * 1024;
/// Single characters are timed by the thousand.
constexpr std::int64_t SINGLES_A_RUN = 4096;

/// The decoder modules table asks for its file name once, when the first handler is made.
const struct ModulesFile
{
    ModulesFile() { setConfigurationValue(QString(), "DecoderModulesFile", Path()); }
    QString Path() const { return m_dir.filePath("modules"); }
    QTemporaryDir m_dir;
} MODULES_FILE;

/// Every byte of the charset but 0x98, which it does not define.
QByteArray allBytes()
{
    QByteArray bytes;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != 0x98)
            bytes += static_cast<char>(byte);
    }
    return bytes;
}

QByteArray mapFile()
{
    QByteArray lines;
    const QByteArray bytes = allBytes();
    const QString decoded = QTextCodec::codecForName(CHARSET)->toUnicode(bytes);
    for (int i = 0; i < bytes.size(); ++i)
        lines += "0x" + QByteArray::number(uchar(bytes[i]), 16) + "\t0x" +
                 QByteArray::number(decoded[i].unicode(), 16) + "\n";
    return lines + "\n";
}

CodecHandler loadedHandler()
{
    QTemporaryDir dir;
    writeFile(dir.filePath("bench.ascii.map"), mapFile());
    CodecHandler handler;
    handler.SetAlphabetsDir(dir.path());
    if (!handler.SetAlphabet("bench - ASCII"))
        std::abort();
    return handler;
}

/// Words of Russian and English, as the stream of a decoder holds them.
QByteArray encodedText(std::int64_t size)
{
    const QByteArray words = QTextCodec::codecForName(CHARSET)->fromUnicode(
        QStringLiteral("\u0412\u0441\u0435\u043c \u0441\u0443\u0434\u0430\u043c, weather "
                       "warning 12 to 15, \u0432\u0435\u0442\u0435\u0440 "
                       "\u0441\u0435\u0432\u0435\u0440\u043d\u044b\u0439\r\n"));
    return words.repeated(int(size / words.size() + 1)).left(int(size));
}

/// One conversion descriptor, kept open as a stream of text would keep it.
class Iconv
{
public:
    Iconv(const char* to, const char* from)
        : m_converter(::iconv_open(to, from))
    {
        if (m_converter == reinterpret_cast<iconv_t>(-1))
            std::abort();
    }
    ~Iconv() { ::iconv_close(m_converter); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    template <typename Output, typename Input>
    Output Convert(const Input& input, std::size_t unitsBound)
    {
        using Unit = std::remove_reference_t<decltype(*std::declval<Output>().data())>;
        Output output(static_cast<int>(unitsBound), Qt::Uninitialized);
        char* from = const_cast<char*>(reinterpret_cast<const char*>(input.constData()));
        std::size_t fromLeft = std::size_t(input.size()) * sizeof *input.constData();
        char* to = reinterpret_cast<char*>(output.data());
        std::size_t toLeft = unitsBound * sizeof(Unit);
        ::iconv(m_converter, &from, &fromLeft, &to, &toLeft);
        output.resize(static_cast<int>(unitsBound - toLeft / sizeof(Unit)));
        return output;
    }

private:
    iconv_t m_converter;
};

class Icu
{
public:
    Icu()
    {
        UErrorCode error = U_ZERO_ERROR;
        m_converter = ucnv_open(CHARSET, &error);
        if (U_FAILURE(error))
            std::abort();
    }
    ~Icu() { ucnv_close(m_converter); }
    Icu(const Icu&) = delete;
    Icu& operator=(const Icu&) = delete;

    QString ToUnicode(const QByteArray& input)
    {
        QString output(input.size(), Qt::Uninitialized);
        UErrorCode error = U_ZERO_ERROR;
        auto* to = reinterpret_cast<UChar*>(output.data());
        const char* from = input.constData();
        ucnv_toUnicode(m_converter, &to, to + output.size(), &from, from + input.size(), nullptr,
                       false, &error);
        return output;
    }

    QByteArray FromUnicode(const QString& input)
    {
        QByteArray output(input.size(), Qt::Uninitialized);
        UErrorCode error = U_ZERO_ERROR;
        char* to = output.data();
        const auto* from = reinterpret_cast<const UChar*>(input.constData());
        ucnv_fromUnicode(m_converter, &to, to + output.size(), &from, from + input.size(), nullptr,
                         false, &error);
        return output;
    }

private:
    UConverter* m_converter = nullptr;
};

/// What one would write by hand where the whole table stands ready.
template <std::size_t Size>
class HandLoop
{
public:
    HandLoop() { std::iota(m_table.begin(), m_table.end(), ushort(0)); }
    ushort& operator[](std::size_t at) { return m_table[at]; }

    QString Translate(const QString& input) const
    {
        QString output(input.size(), Qt::Uninitialized);
        const auto* const from = reinterpret_cast<const ushort*>(input.constData());
        auto* const to = reinterpret_cast<ushort*>(output.data());
        for (int i = 0, size = input.size(); i < size; ++i)
            to[i] = from[i] < Size ? m_table[from[i]] : from[i];
        return output;
    }

private:
    std::array<ushort, Size> m_table;
};

/// Runs `translate` over the input, in single characters or as a whole.
template <typename Input, typename Translate>
std::function<void()> runOver(const std::vector<Input>& inputs, Translate translate)
{
    return [&inputs, translate] {
        for (const Input& input : inputs)
            benchmark::DoNotOptimize(translate(input));
    };
}

/// The text in pieces of `size`.
template <typename Input>
std::vector<Input> inputsOf(const Input& text, std::int64_t size)
{
    std::vector<Input> inputs;
    for (int start = 0; start < text.size(); start += int(size))
        inputs.push_back(text.mid(start, int(size)));
    return inputs;
}

void BM_Translate(benchmark::State& state)
{
    const std::int64_t count = std::max(state.range(0), SINGLES_A_RUN);
    const QByteArray encoded = encodedText(count);
    const auto bytes = inputsOf(encoded, state.range(0));
    const auto texts = inputsOf(QString::fromLatin1(encoded), state.range(0));

    CodecHandler handler = loadedHandler();
    HandLoop<256> table;
    const QString decoded = QTextCodec::codecForName(CHARSET)->toUnicode(allBytes());
    for (int i = 0; i < decoded.size(); ++i)
        table[uchar(allBytes()[i])] = decoded[i].unicode();
    Iconv iconv("UTF-16LE", CHARSET);
    Icu icu;
    QTextCodec* const codec = QTextCodec::codecForName(CHARSET);
    if (handler.Translate(texts[0]) != codec->toUnicode(bytes[0]) ||
        table.Translate(texts[0]) != codec->toUnicode(bytes[0]) ||
        iconv.Convert<QString>(bytes[0], std::size_t(bytes[0].size())) !=
            codec->toUnicode(bytes[0]) ||
        icu.ToUnicode(bytes[0]) != codec->toUnicode(bytes[0]))
        std::abort();

    race(state, count, runOver(texts, [&](const QString& text) { return handler.Translate(text); }),
         {{"hand_loop", runOver(texts, [&](const QString& text) { return table.Translate(text); })},
          {"iconv", runOver(bytes,
                            [&](const QByteArray& text) {
                                return iconv.Convert<QString>(text, std::size_t(text.size()));
                            })},
          {"icu", runOver(bytes, [&](const QByteArray& text) { return icu.ToUnicode(text); })},
          {"qtextcodec",
           runOver(bytes, [&](const QByteArray& text) { return codec->toUnicode(text); })}});
}
BENCHMARK(BM_Translate)->Arg(SINGLE)->Arg(16)->Arg(256)->Arg(PIECE)->Arg(LONG)->UseManualTime();

void BM_Backtranslate(benchmark::State& state)
{
    const std::int64_t count = std::max(state.range(0), SINGLES_A_RUN);
    QTextCodec* const codec = QTextCodec::codecForName(CHARSET);
    const auto texts = inputsOf(codec->toUnicode(encodedText(count)), state.range(0));

    CodecHandler handler = loadedHandler();
    HandLoop<0x10000> table;
    const QString decoded = codec->toUnicode(allBytes());
    for (int i = 0; i < decoded.size(); ++i)
        table[decoded[i].unicode()] = uchar(allBytes()[i]);
    Iconv iconv(CHARSET, "UTF-16LE");
    Icu icu;
    const QByteArray encoded = codec->fromUnicode(texts[0]);
    if (handler.Backtranslate(texts[0]) != QString::fromLatin1(encoded) ||
        table.Translate(texts[0]) != QString::fromLatin1(encoded) ||
        iconv.Convert<QByteArray>(texts[0], std::size_t(texts[0].size())) != encoded ||
        icu.FromUnicode(texts[0]) != encoded)
        std::abort();

    race(state, count,
         runOver(texts, [&](const QString& text) { return handler.Backtranslate(text); }),
         {{"hand_loop", runOver(texts, [&](const QString& text) { return table.Translate(text); })},
          {"iconv", runOver(texts,
                            [&](const QString& text) {
                                return iconv.Convert<QByteArray>(text, std::size_t(text.size()));
                            })},
          {"icu", runOver(texts, [&](const QString& text) { return icu.FromUnicode(text); })},
          {"qtextcodec",
           runOver(texts, [&](const QString& text) { return codec->fromUnicode(text); })}});
}
BENCHMARK(BM_Backtranslate)->Arg(SINGLE)->Arg(16)->Arg(256)->Arg(PIECE)->Arg(LONG)->UseManualTime();

void BM_LoadMapFile(benchmark::State& state)
{
    QTemporaryDir dir;
    writeFile(dir.filePath("bench.ascii.map"), mapFile());
    CodecHandler handler;
    handler.SetAlphabetsDir(dir.path());
    for (auto _ : state)
        benchmark::DoNotOptimize(handler.SetAlphabet("bench - ASCII"));
}
BENCHMARK(BM_LoadMapFile);

/// The folder is listed once and the names made up once.
void BM_ListMapFiles(benchmark::State& state)
{
    QTemporaryDir dir;
    for (int i = 0; i < state.range(0); ++i)
        writeFile(dir.filePath("map" + QString::number(i) + ".ita2.map"), {});
    CodecHandler handler;
    handler.SetDecoder("All");
    race(state, state.range(0),
         [&] {
             handler.SetAlphabetsDir(dir.path());
             benchmark::DoNotOptimize(handler.AvailableAlphabets());
         },
         {{"bare_listing",
           [&] { benchmark::DoNotOptimize(QDir(dir.path()).entryList(QDir::Files)); }}});
}
BENCHMARK(BM_ListMapFiles)->Arg(100)->Arg(10000)->UseManualTime();

/// A handler reads the decoder modules file when it is constructed.
void BM_ReadDecoderModulesFile(benchmark::State& state)
{
    const QString path = MODULES_FILE.Path();
    QByteArray lines;
    for (int i = 0; i < state.range(0); ++i)
        lines += QByteArray::number(i) + " 4 x" + QByteArray(" 1").repeated(26) + " I decoder " +
                 QByteArray::number(i * 7919 % 100000) + "\n";
    writeFile(path, lines);
    for (auto _ : state)
        benchmark::DoNotOptimize(CodecHandler());
    state.SetItemsProcessed(state.iterations() * state.range(0));
    if (CodecHandler().CharsetForDecoder("decoder 0") != eCHARSET_ITA2)
        state.SkipWithError("the file was not read");
}
BENCHMARK(BM_ReadDecoderModulesFile)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace
