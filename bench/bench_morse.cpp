// SPDX-License-Identifier: MIT
// Translation of Morse symbols beside a hand-written trie of all codes that stands ready.
#include "bench/race.h"

#include "morse/morsetranslator.h"
#include "morse/simplemorsehandler.h"

#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstdlib>

namespace {

constexpr std::int64_t ONE_MIB = 1024 * 1024;

const char* const CODES[26] = {".-",   "-...", "-.-.", "-..",  ".",   "..-.", "--.",  "....", "..",
                               ".---", "-.-",  ".-..", "--",   "-.",  "---",  ".--.", "--.-", ".-.",
                               "...",  "-",    "..-",  "...-", ".--", "-..-", "-.--", "--.."};

/// What one would write by hand: one step down for each symbol.
class Trie
{
public:
    Trie()
    {
        for (int letter = 0; letter < 26; ++letter) {
            std::size_t node = 0;
            for (const char* symbol = CODES[letter]; *symbol; ++symbol) {
                std::size_t& next = m_next[node][*symbol == '-'];
                if (!next)
                    next = m_used++;
                node = next;
            }
            m_text[node] = QChar('A' + letter);
        }
    }

    /// Characters end at `gap`, words at `wordGap`.
    QString Translate(const QString& symbols, QChar gap, QChar wordGap) const
    {
        QString text;
        text.reserve(symbols.size() / 2);
        std::size_t node = 0;
        for (const QChar symbol : symbols) {
            if (symbol == '.') {
                node = m_next[node][0];
            } else if (symbol == '-') {
                node = m_next[node][1];
            } else {
                if (node)
                    text += m_text[node];
                if (symbol == wordGap)
                    text += ' ';
                else if (symbol != gap)
                    text += '\n';
                node = 0;
            }
        }
        return text;
    }

private:
    std::array<std::array<std::size_t, 2>, 256> m_next{};
    std::array<QChar, 256> m_text{};
    std::size_t m_used = 1;
};

QString symbolsOf(std::int64_t size, QChar gap, QChar wordGap)
{
    const QString words = "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG ";
    QString symbols;
    symbols.reserve(int(size) + 10);
    for (int i = 0; symbols.size() < size; ++i) {
        const QChar letter = words[i % words.size()];
        if (letter == ' ')
            symbols += wordGap;
        else
            symbols += CODES[letter.unicode() - 'A'] + QString(gap);
    }
    return symbols;
}

void BM_MorseTranslator(benchmark::State& state)
{
    const QString symbols = symbolsOf(state.range(0), 'c', 'w');
    MorseTranslator translator;
    translator.SetMorseAlphabet(QString());
    const Trie trie;
    if (translator.Translate(symbols) != trie.Translate(symbols, 'c', 'w'))
        std::abort();
    race(state, symbols.size(), [&] { benchmark::DoNotOptimize(translator.Translate(symbols)); },
         {{"trie", [&] { benchmark::DoNotOptimize(trie.Translate(symbols, 'c', 'w')); }}});
}
BENCHMARK(BM_MorseTranslator)->Arg(16)->Arg(1024)->Arg(ONE_MIB)->UseManualTime();

void loadBenchAlphabet(SimpleMorseHandler& handler, const QTemporaryDir& dir)
{
    QFile file(dir.filePath("bench.mal"));
    if (!file.open(QIODevice::WriteOnly))
        std::abort();
    for (int letter = 0; letter < 26; ++letter)
        file.write(QByteArray(1, char('A' + letter)) + "\t" + CODES[letter] + "\n");
    file.write("\n");
    file.close();
    handler.SetAlphabetsDir(dir.path());
    if (!handler.SetAlphabet("bench"))
        std::abort();
}

void BM_SimpleMorseHandler(benchmark::State& state)
{
    QTemporaryDir dir;
    SimpleMorseHandler handler;
    loadBenchAlphabet(handler, dir);
    const QString symbols = symbolsOf(state.range(0), ' ', '\t');
    const Trie trie;
    if (handler.Translate(symbols) != trie.Translate(symbols, ' ', '\t'))
        std::abort();
    race(state, symbols.size(), [&] { benchmark::DoNotOptimize(handler.Translate(symbols)); },
         {{"trie", [&] { benchmark::DoNotOptimize(trie.Translate(symbols, ' ', '\t')); }}});
}
BENCHMARK(BM_SimpleMorseHandler)->Arg(16)->Arg(1024)->Arg(ONE_MIB)->UseManualTime();

/// A live stream: every symbol comes by itself.
void BM_SimpleMorseHandlerBySymbol(benchmark::State& state)
{
    QTemporaryDir dir;
    SimpleMorseHandler handler;
    loadBenchAlphabet(handler, dir);
    const QString symbols = symbolsOf(state.range(0), ' ', '\t');
    for (auto _ : state) {
        for (const QChar symbol : symbols)
            benchmark::DoNotOptimize(handler.Translate(QString(symbol)));
    }
    state.SetItemsProcessed(state.iterations() * symbols.size());
}
BENCHMARK(BM_SimpleMorseHandlerBySymbol)->Arg(1024);

} // namespace
