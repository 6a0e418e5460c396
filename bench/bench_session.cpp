// SPDX-License-Identifier: MIT
// Symbol codes through a whole Morse handler, from the symbol value to the text value; with files
// beside without, and beside a plain loop that writes and flushes the same bytes.
#include "support/morsefixture.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

// "PARIS " again and again, as a demodulator sends it.
constexpr char WORD[] = ".--.c.-c.-.c..c...cw";
constexpr int WORD_CODES = static_cast<int>(sizeof WORD) - 1;

void sendWords(MorseFixture& host, int words)
{
    for (int i = 0; i < words; ++i)
        host.send(WORD);
}

void codesToText(benchmark::State& state)
{
    const bool isFull = state.range(0) != 0;
    MorseFixture host;
    host.handler.StartNewMorseSession();
    if (isFull)
        sendWords(host, 2000);
    for (auto _ : state) {
        if (!isFull)
            host.handler.ClearSymbolBuffer();
        sendWords(host, 100);
    }
    state.SetItemsProcessed(state.iterations() * 100 * WORD_CODES);
}

// All handlers hear the same symbol value; the figure is the cost of a code for one of them.
void codesToManyHandlers(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    MorseValues values;
    values.available->SetValue(true, nullptr);
    std::vector<std::unique_ptr<MorseHandler>> handlers;
    for (std::size_t i = 0; i < count; ++i) {
        handlers.push_back(std::make_unique<MorseHandler>());
        MorseHandler& handler = *handlers.back();
        handler.SetSymbol_ValuePath(MorseValues::path("Symbol"));
        handler.SetMorseAvailable_ValuePath(MorseValues::path("Available"));
        const QString text = QStringLiteral("Text/%1").arg(i);
        values.tree.Add<TextValue>(text);
        handler.SetMorseText_ValuePath(text);
        handler.StartNewMorseSession();
    }
    for (auto _ : state) {
        for (const char* s = WORD; *s != '\0'; ++s) {
            const int code = MorseFixture::codeOf(*s);
            if (values.symbol->GetValue() == code)
                values.symbol->HasChanged(eCHANGE_CONTENT, nullptr);
            else
                values.symbol->SetValue(code, nullptr);
        }
    }
    state.SetItemsProcessed(state.iterations() * WORD_CODES * state.range(0));
}

void codesToTextAndFiles(benchmark::State& state)
{
    QTemporaryDir dir;
    MorseFixture host;
    host.wireFiles(dir.path());
    host.saveToFile->SetValue(true, nullptr);
    host.handler.StartNewMorseSession();
    for (auto _ : state)
        sendWords(host, 10);
    state.SetItemsProcessed(state.iterations() * 10 * WORD_CODES);
}

// What the handler writes for the same words: a symbol, a blank or a character at a time.
void plainWrites(benchmark::State& state)
{
    QTemporaryDir dir;
    QFile code(dir.filePath(QStringLiteral("code")));
    QFile text(dir.filePath(QStringLiteral("text")));
    code.open(QIODevice::WriteOnly);
    text.open(QIODevice::WriteOnly);
    const auto write = [](QFile& file, const char* bytes, qint64 size) {
        file.write(bytes, size);
        file.flush();
    };
    for (auto _ : state) {
        for (int word = 0; word < 10; ++word) {
            for (const char* s = WORD; *s != '\0'; ++s) {
                if (*s == '.' || *s == '-') {
                    write(code, s, 1);
                } else {
                    write(text, "A", 1);
                    if (*s == 'c')
                        write(code, " ", 1);
                }
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * 10 * WORD_CODES);
}

// A dot that goes to the code file, or finds no folder to go to.
void oneWrite(benchmark::State& state)
{
    const bool canBeWritten = state.range(0) != 0;
    QTemporaryDir dir;
    MorseFixture host;
    host.wireFiles(canBeWritten ? dir.path() : QStringLiteral("/no/such/folder"));
    host.saveToFile->SetValue(true, nullptr);
    host.handler.StartNewMorseSession();
    for (auto _ : state)
        host.send(0);
    state.SetItemsProcessed(state.iterations());
}

} // namespace

BENCHMARK(codesToText)->ArgName("bufferFull")->Arg(0)->Arg(1);
BENCHMARK(codesToManyHandlers)->ArgName("handlers")->Arg(1)->Arg(100)->Arg(10000);
BENCHMARK(codesToTextAndFiles);
BENCHMARK(plainWrites);
BENCHMARK(oneWrite)->ArgName("folderExists")->Arg(1)->Arg(0);
