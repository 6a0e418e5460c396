// SPDX-License-Identifier: MIT
// The mapping directory from the input value to the output value, beside the bare translation of
// the same text; its construction over a folder of many maps; and the history translated again.
#include "bench/race.h"

#include "charmap/codechandler.h"
#include "charmap/mappingdirectory.h"
#include "host/standin/configuration.h"
#include "host/standin/hosttree.h"
#include "support/files.h"

#include <QTemporaryDir>

#include <cstdlib>

namespace {

constexpr std::int64_t SINGLE = 1;
constexpr std::int64_t PIECE = 4 * 1024;
constexpr std::int64_t CHARACTERS_A_RUN = 64 * 1024;
constexpr int HISTORY = 10000;

QByteArray mapFile()
{
    QByteArray lines;
    for (int byte = 0x20; byte < 256; ++byte)
        lines += "0x" + QByteArray::number(byte, 16) + "\t0x" +
                 QByteArray::number(byte + 0x400, 16) + "\n";
    return lines + "\n";
}

/// The decoder modules table asks for its file name once, when the first map handler is made.
const struct ModulesFile
{
    ModulesFile()
    {
        const QString path = m_dir.filePath("modules");
        writeFile(path, "1 2 T" + QByteArray(" 0").repeated(26) + " A Packet\n");
        setConfigurationValue(QString(), "DecoderModulesFile", path);
    }
    QTemporaryDir m_dir;
} MODULES_FILE;

/// A host with the values of a mapping directory, in which the one map of its folder is chosen.
class Host
{
public:
    Host()
    {
        writeFile(m_dir.filePath("bench.ascii.map"), mapFile());
        directory = std::make_unique<MappingDirectory>(m_dir.path());
        decoder->AddItems({"Packet"}, nullptr);
        decoder->Select(QStringLiteral("Packet"), nullptr);
        directory->SetAvailableMaps_ValuePath("maps");
        directory->SetDecoder_ValuePath("decoder");
        directory->SetDataInput_ValuePath("input", nullptr);
        directory->SetDataOutput_ValuePath("output");
        directory->SetMaxNumberOfChars_ValuePath("max");
        directory->Enabled(true);
        directory->Init("bench - ASCII");
        handler.SetAlphabetsDir(m_dir.path());
        if (!handler.SetAlphabet("bench - ASCII") || directory->translate("A") != QChar(0x441))
            std::abort();
    }

private:
    QTemporaryDir m_dir;
    HostTree m_tree;

public:
    ValueSelection* const maps = m_tree.Add<ValueSelection>("maps");
    ValueSelection* const decoder = m_tree.Add<ValueSelection>("decoder");
    TextValue* const input = m_tree.Add<TextValue>("input");
    TextValue* const output = m_tree.Add<TextValue>("output");
    std::unique_ptr<MappingDirectory> directory;
    CodecHandler handler;
};

Host& host()
{
    static Host instance;
    return instance;
}

void BM_FromInputToOutput(benchmark::State& state)
{
    std::vector<QString> pieces;
    for (std::int64_t i = 0; i < CHARACTERS_A_RUN / state.range(0); ++i)
        pieces.push_back(QString(int(state.range(0)), QChar(int('A' + i % 26))));
    race(state, CHARACTERS_A_RUN,
         [&] {
             for (const QString& piece : pieces)
                 host().input->SetValue(piece, nullptr);
         },
         {{"bare_translation", [&] {
               for (const QString& piece : pieces)
                   benchmark::DoNotOptimize(host().handler.Translate(piece));
           }}});
}
BENCHMARK(BM_FromInputToOutput)->Arg(SINGLE)->Arg(PIECE)->UseManualTime();

void BM_TranslateHistory(benchmark::State& state)
{
    const QString text(HISTORY, 'A');
    host().directory->translate(text);
    race(state, HISTORY, [] { benchmark::DoNotOptimize(host().directory->TranslateHistory()); },
         {{"bare_translation", [&] { benchmark::DoNotOptimize(host().handler.Translate(text)); }}});
}
BENCHMARK(BM_TranslateHistory)->UseManualTime();

void BM_Construct(benchmark::State& state)
{
    host();
    QTemporaryDir dir;
    for (int i = 0; i < state.range(0); ++i)
        writeFile(dir.filePath("map" + QString::number(i) + ".ascii.map"), mapFile());
    for (auto _ : state)
        benchmark::DoNotOptimize(MappingDirectory(dir.path()));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Construct)->Arg(5)->Arg(500)->Unit(benchmark::kMillisecond);

} // namespace
