// SPDX-License-Identifier: MIT
// The whole program on a recording: how many times faster than it was received.
#include "support/keyer.h"
#include "support/soundfile.h"

#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <string>

namespace {

void decodeRecording(benchmark::State& state)
{
    const double rate_Hz = static_cast<double>(state.range(0));
    std::string text;
    for (int i = 0; i < 60; ++i)
        text += "THE QUICK BROWN FOX JUMPS OVER 13 LAZY DOGS ";
    testsupport::Path path;
    path.snr_dB = 20;
    const std::vector<float> samples =
        testsupport::sound(text, testsupport::Hand(), path, rate_Hz, "bench");
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("x.wav"));
    testsupport::writeSoundFile(file.toStdString(), rate_Hz, samples);
    QStringList words = {QStringLiteral("decode")};
    if (state.range(1) != 0)
        words += QStringLiteral("--live");
    for (auto _ : state) {
        QProcess process;
        process.start(QStringLiteral(MORSEHOST_PATH), words + QStringList(file));
        process.waitForFinished(-1);
        if (process.exitCode() != 0 || process.readAllStandardOutput().size() < 1000)
            state.SkipWithError("the recording was not decoded");
    }
    const double duration_s = static_cast<double>(samples.size()) / rate_Hz;
    state.counters["times real time"] = benchmark::Counter(
        duration_s * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(decodeRecording)
    ->ArgNames({"rate_Hz", "live"})
    ->ArgsProduct({{8000, 48000}, {0, 1}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
