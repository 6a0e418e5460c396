// SPDX-License-Identifier: MIT
// Frames into a result document and through its save, beside a bare streaming writer that writes
// the same bytes; and what a frame costs in memory.
#include "host/resultdata.h"

#include <QFile>
#include <QTemporaryDir>
#include <QXmlStreamWriter>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <malloc.h>

using namespace TavikResultDataXml;

namespace {

constexpr unsigned long long STAMP_us = 1494584100123456;
constexpr auto STAMP_TEXT = "2017-05-12T10:15:00,123456Z";

QString letter(std::int64_t i)
{
    return QString(QLatin1Char(static_cast<char>('A' + i % 26)));
}

void fill(TavikResultData& document, std::int64_t frames)
{
    auto* const transmission = new Transmission;
    document.AddTransmission(transmission);
    auto* const block = new DataBlock(-1, 0, 0);
    transmission->AddDataBlock(block);
    for (std::int64_t i = 0; i < frames; ++i) {
        block->BeginFrame();
        block->SetTimeStamp(STAMP_us);
        block->AppendData(letter(i));
        block->EndFrame();
    }
}

void countFrames(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void framesIntoADocument(benchmark::State& state)
{
    double bytesPerFrame = 0;
    for (auto _ : state) {
        const auto before = mallinfo2();
        TavikResultData document;
        fill(document, state.range(0));
        const auto after = mallinfo2();
        bytesPerFrame =
            static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) /
            static_cast<double>(state.range(0));
    }
    countFrames(state);
    state.counters["bytes/frame"] = bytesPerFrame;
}

void framesIntoADocumentAndToDisk(benchmark::State& state)
{
    const QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("r.xml"));
    for (auto _ : state) {
        TavikResultData document;
        fill(document, state.range(0));
        if (!document.SaveFile(path))
            state.SkipWithError("not saved");
        state.PauseTiming();
        state.counters["file bytes"] = static_cast<double>(QFile(path).size());
        QFile::remove(path);
        state.ResumeTiming();
    }
    countFrames(state);
}

/// The same bytes without a document: no frame is kept, nothing is checked, renamed or synced.
void bareWriterToDisk(benchmark::State& state)
{
    const QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("r.xml"));
    for (auto _ : state) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            state.SkipWithError("not opened");
        QXmlStreamWriter xml(&file);
        xml.writeStartDocument();
        xml.writeCharacters(QStringLiteral("\n"));
        xml.writeStartElement(QStringLiteral("TavikResultData"));
        xml.writeAttribute(QStringLiteral("Version"), QStringLiteral("1.0"));
        xml.writeCharacters(QStringLiteral("\n  "));
        xml.writeStartElement(QStringLiteral("Transmission"));
        xml.writeCharacters(QStringLiteral("\n    "));
        xml.writeStartElement(QStringLiteral("DataBlock"));
        xml.writeAttribute(QStringLiteral("Channel"), QStringLiteral("-1"));
        xml.writeAttribute(QStringLiteral("Format"), QStringLiteral("0"));
        xml.writeAttribute(QStringLiteral("Flags"), QStringLiteral("0"));
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            xml.writeCharacters(QStringLiteral("\n      "));
            xml.writeStartElement(QStringLiteral("Frame"));
            xml.writeAttribute(QStringLiteral("Time"), QLatin1String(STAMP_TEXT));
            xml.writeCharacters(letter(i));
            xml.writeEndElement();
        }
        xml.writeCharacters(QStringLiteral("\n    "));
        xml.writeEndElement();
        xml.writeCharacters(QStringLiteral("\n  "));
        xml.writeEndElement();
        xml.writeCharacters(QStringLiteral("\n"));
        xml.writeEndDocument();
        file.close();
        state.PauseTiming();
        state.counters["file bytes"] = static_cast<double>(QFile(path).size());
        QFile::remove(path);
        state.ResumeTiming();
    }
    countFrames(state);
}

/// One frame more under a name that is in use: reading and copying what is there.
void oneFrameAddedToALongDocument(benchmark::State& state)
{
    const QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("r.xml"));
    {
        TavikResultData document;
        fill(document, state.range(0));
        document.SaveFile(path);
    }
    for (auto _ : state) {
        TavikResultData document;
        fill(document, 1);
        if (!document.SaveFile(path))
            state.SkipWithError("not saved");
    }
    countFrames(state);
}

} // namespace

BENCHMARK(framesIntoADocument)
    ->Range(1000, 1000000)
    ->RangeMultiplier(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(framesIntoADocumentAndToDisk)
    ->Range(1000, 1000000)
    ->RangeMultiplier(10)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(bareWriterToDisk)
    ->Range(1000, 1000000)
    ->RangeMultiplier(10)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(oneFrameAddedToALongDocument)
    ->Range(1000, 1000000)
    ->RangeMultiplier(10)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
