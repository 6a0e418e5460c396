// SPDX-License-Identifier: MIT
// Searching the archive. MORSEHANDLER_ARCHIVE_ROWS says how many
// transmissions it holds (default: 200000), MORSEHANDLER_ARCHIVE a file to keep it in between runs.
#include "station/archive/archive.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <random>

using namespace morsehost;

namespace {

constexpr qint64 FIRST_us = 1767225600000000; // 2026-01-01
constexpr qint64 APART_us = 3000000;

int rowCount()
{
    const int rows = qEnvironmentVariableIntValue("MORSEHANDLER_ARCHIVE_ROWS");
    return rows > 0 ? rows : 200000;
}

QString callSign(std::mt19937& random)
{
    const auto letter = [&random] { return QChar(static_cast<char>('A' + random() % 26)); };
    return QStringLiteral("D") + letter() + QString::number(random() % 10) + letter() + letter() +
           letter();
}

ArchiveRecord recordOf(int number, std::mt19937& random)
{
    ArchiveRecord record;
    Transmission& transmission = record.transmission;
    transmission.number = number;
    transmission.decoder = QStringLiteral("Morse");
    transmission.receiver = QStringLiteral("hf%1").arg(random() % 4);
    transmission.frequency_Hz =
        7000000.0 + double(random() % 40) * 1000 + double(random() % 4) * 7e6;
    transmission.speed_wpm = 12 + random() % 24;
    transmission.snr_dB = random() % 30;
    transmission.start_us = FIRST_us + qint64(number) * APART_us;
    transmission.stop_us = transmission.start_us + 8000000;
    // One in a hundred thousand is the one that is looked for.
    transmission.text = QStringLiteral("CQ TEST DE ") +
                        (number % 100000 == 777 ? QStringLiteral("DL0XYZ") : callSign(random)) +
                        QStringLiteral(" = UR 599 ") + QString::number(random() % 1000) +
                        QStringLiteral(" DE ") + callSign(random) + QStringLiteral(" K");
    record.key = QString::number(number, 36);
    return record;
}

Archive& archive()
{
    static QTemporaryDir folder;
    static std::unique_ptr<Archive> opened = [] {
        const QString kept = qEnvironmentVariable("MORSEHANDLER_ARCHIVE");
        const QString path = kept.isEmpty() ? folder.filePath("archive.db") : kept;
        QString error;
        std::unique_ptr<Archive> made = Archive::open(path, error);
        if (!made)
            qFatal("%s", qPrintable(error));
        std::mt19937 random(1);
        for (int row = int(made->count().value_or(0)); row < rowCount();) {
            std::vector<ArchiveRecord> records;
            for (; records.size() < 20000 && row < rowCount(); ++row)
                records.push_back(recordOf(row, random));
            if (!made->add(records))
                qFatal("%s", qPrintable(made->error()));
        }
        return made;
    }();
    return *opened;
}

void search(benchmark::State& state, const ArchiveQuery& query)
{
    Archive& searched = archive();
    std::size_t found = 0;
    for (auto _ : state) {
        const auto result = searched.search(query);
        if (!result)
            qFatal("%s", qPrintable(searched.error()));
        found = result->size();
    }
    state.counters["found"] = double(found);
    state.counters["rows"] = rowCount();
}

ArchiveQuery wordQuery(const char* word)
{
    ArchiveQuery query;
    query.words = QStringList{QLatin1String(word)};
    return query;
}

void rareWord(benchmark::State& state)
{
    search(state, wordQuery("DL0XYZ"));
}

void commonWord(benchmark::State& state)
{
    search(state, wordQuery("CQ"));
}

void wordSinceAndFrequency(benchmark::State& state)
{
    ArchiveQuery query = wordQuery("DL0XYZ");
    query.since_us = FIRST_us + qint64(rowCount()) * APART_us / 2;
    query.lowest_Hz = 7000000;
    query.highest_Hz = 7040000;
    search(state, query);
}

void commonWordInOneMinute(benchmark::State& state)
{
    ArchiveQuery query = wordQuery("CQ");
    query.since_us = FIRST_us + qint64(rowCount()) * APART_us / 2;
    query.until_us = *query.since_us + 60000000;
    search(state, query);
}

void beginningOfAWord(benchmark::State& state)
{
    search(state, wordQuery("DL0X*"));
}

void firstLetterOfAWord(benchmark::State& state)
{
    search(state, wordQuery("D*"));
}

void rangeOfTimeLongAgo(benchmark::State& state)
{
    ArchiveQuery query;
    query.since_us = FIRST_us + qint64(rowCount()) * APART_us / 5;
    query.until_us = FIRST_us + qint64(rowCount()) * APART_us * 3 / 5;
    search(state, query);
}

void oneFrequencyOfAReceiver(benchmark::State& state)
{
    ArchiveQuery query;
    query.lowest_Hz = 7009500;
    query.highest_Hz = 7010500;
    query.receiver = QStringLiteral("hf2");
    search(state, query);
}

} // namespace

BENCHMARK(rareWord)->Unit(benchmark::kMillisecond);
BENCHMARK(commonWord)->Unit(benchmark::kMillisecond);
BENCHMARK(wordSinceAndFrequency)->Unit(benchmark::kMillisecond);
BENCHMARK(commonWordInOneMinute)->Unit(benchmark::kMillisecond);
BENCHMARK(beginningOfAWord)->Unit(benchmark::kMillisecond);
BENCHMARK(firstLetterOfAWord)->Unit(benchmark::kMillisecond);
BENCHMARK(rangeOfTimeLongAgo)->Unit(benchmark::kMillisecond);
BENCHMARK(oneFrequencyOfAReceiver)->Unit(benchmark::kMillisecond);
