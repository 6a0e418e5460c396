// SPDX-License-Identifier: MIT
#include "signal/teleprinter/acquisition.h"

#include "support/random.h"
#include "support/teleprinterkeyer.h"

#include <QtTest>
#include <cmath>

using namespace testsupport;
using namespace teleprinter;

Q_DECLARE_METATYPE(Machine)

namespace {

constexpr double RATE_Hz = 8000.0;
const char* const TEXT =
    "CQ CQ DE DL0XYZ PSE K. THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG, 12345 67890\r\n"
    "WEATHER NORTH SEA: WIND WEST 5, LATER 7. SEA 3 METRES, VISIBILITY GOOD.\r\n";

// What is found in the first so many seconds of a sound.
std::optional<Acquired> acquired(const std::vector<float>& samples, const Known& known = {},
                                 const Line* followed = nullptr, double seconds = 4.0)
{
    const auto end = std::min(static_cast<std::int64_t>(samples.size()),
                              static_cast<std::int64_t>(seconds * RATE_Hz));
    demodulator::SampleHistory history(samples.size());
    history.push(samples.data(), static_cast<std::size_t>(end));
    Spectrum spectrum(RATE_Hz);
    for (std::int64_t at = 0; at + static_cast<std::int64_t>(spectrum.length()) <= end;
         at += spectrum.hop())
        spectrum.push(&samples[static_cast<std::size_t>(at)]);
    const Parameters parameters;
    return acquire({history, spectrum, parameters, RATE_Hz}, known, 0, end, followed);
}

std::vector<float> keyed(const Machine& machine, TonePath path = {})
{
    if (!path.snr_dB)
        path.snr_dB = 15.0;
    path.before_s = 0.3;
    return teleprinterSound(teleprinterElements(TEXT, machine, "acquisition"), path, RATE_Hz,
                            "acquisition");
}

// Shift-keyed elements that are drawn, one by one.
std::vector<float> data(double baud, double duration_s)
{
    Random random("acquisition");
    std::vector<Piece> elements;
    for (double at_s = 0.0; at_s < duration_s; at_s += 1.0 / baud)
        elements.push_back({random.below(2) == 0, 1.0 / baud});
    TonePath path;
    path.snr_dB = 12.0;
    path.before_s = path.after_s = 0.0;
    return teleprinterSound(elements, path, RATE_Hz, "acquisition");
}

Machine machine(TeleprinterCode code, double baud, double stop_bits = 1.5)
{
    Machine machine;
    machine.code = code;
    machine.baud = baud;
    machine.stop_bits = stop_bits;
    return machine;
}

} // namespace

class tst_Acquisition : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachKindOfLineIsFoundAsWhatItIs_data()
    {
        QTest::addColumn<Machine>("sender");
        QTest::addColumn<double>("shift_Hz");
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("isReversed");
        const auto add = [](const char* name, const Machine& sender, double shift_Hz, Code code,
                            bool isReversed = false) {
            QTest::newRow(name) << sender << shift_Hz << static_cast<int>(code) << isReversed;
        };
        using T = TeleprinterCode;
        add("ITA2, 45.45 Bd", machine(T::Ita2, 45.45), 170.0, Code::Ita2);
        add("ITA2, 45.45 Bd, reversed", machine(T::Ita2, 45.45), 170.0, Code::Ita2, true);
        add("ASCII, 200 Bd, reversed", machine(T::Ascii8, 200.0, 1.0), 170.0, Code::Ascii, true);
        add("Sitor-B, reversed", machine(T::SitorB, 100.0), 170.0, Code::Ccir476, true);
        add("ITA2, 50 Bd", machine(T::Ita2, 50.0), 450.0, Code::Ita2);
        add("ITA2, 75 Bd", machine(T::Ita2, 75.0, 1.0), 850.0, Code::Ita2);
        add("ASCII, 110 Bd", machine(T::Ascii7Even, 110.0, 2.0), 170.0, Code::Ascii);
        add("ASCII, 150 Bd", machine(T::Ascii7, 150.0, 1.0), 170.0, Code::Ascii);
        add("ASCII, 200 Bd", machine(T::Ascii8, 200.0, 1.0), 170.0, Code::Ascii);
        add("ASCII, 300 Bd", machine(T::Ascii8, 300.0, 1.0), 200.0, Code::Ascii);
        add("ASCII, 300 Bd, reversed", machine(T::Ascii8, 300.0, 1.0), 200.0, Code::Ascii, true);
        add("ASCII, 300 Bd, parity", machine(T::Ascii7Even, 300.0, 1.0), 200.0, Code::Ascii);
        add("Sitor-B", machine(T::SitorB, 100.0), 170.0, Code::Ccir476);
    }
    void eachKindOfLineIsFoundAsWhatItIs()
    {
        QFETCH(Machine, sender);
        QFETCH(double, shift_Hz);
        QFETCH(int, code);
        QFETCH(bool, isReversed);
        TonePath path;
        path.shift_Hz = shift_Hz;
        path.reversed = isReversed;
        // As it is looked for while it goes on.
        std::optional<Acquired> found;
        for (double seconds = 3.0; !found && seconds < 4.6; seconds += 0.5)
            found = acquired(keyed(sender, path), {}, nullptr, seconds);
        QVERIFY(found.has_value());
        QCOMPARE(static_cast<int>(found->line.kind.code), code);
        QCOMPARE(found->line.kind.baud, sender.baud);
        QCOMPARE(found->line.isReversed(), isReversed);
        QVERIFY(std::fabs(found->line.centre_Hz() - path.centre_Hz) < 0.1 * sender.baud);
        QVERIFY(std::fabs(found->line.shift_Hz() - shift_Hz) < 0.1 * sender.baud);
        QVERIFY(found->fit.contrast < AcquisitionParameters().mostContrast);
    }

    void fasterThanKnownIsNotLookedFor()
    {
        Known known;
        known.mostBaud = 100.0;
        for (const LineKind& kind : kindsToTry(known))
            QVERIFY(kind.baud <= 100.0);
        QVERIFY(!kindsToTry(known).empty());
        known.mostBaud = 300.0;
        QCOMPARE(kindsToTry(known).size(), lineKinds().size());
    }

    void whatIsKnownIsAllThatIsLookedFor()
    {
        const std::vector<float> samples = keyed(machine(TeleprinterCode::Ita2, 50.0));
        Known known;
        known.codes = {Code::Ascii, Code::Ccir476};
        QVERIFY(!acquired(samples, known));
        known = Known();
        known.reversed = true;
        QVERIFY(!acquired(samples, known));
        known.reversed = false;
        QVERIFY(acquired(samples, known).has_value());
    }

    // One is as good as any other as long as it fits.
    void lineThatIsFollowedIsNotFoundAgain()
    {
        const std::vector<float> samples = keyed(machine(TeleprinterCode::Ascii8, 200.0, 1.0));
        const auto found = acquired(samples);
        QVERIFY(found.has_value());
        QVERIFY(!acquired(samples, {}, &found->line));
        Line other = found->line;
        other.kind = {Code::Ita2, 75.0, 5};
        other.baud = 75.0;
        const auto instead = acquired(samples, {}, &other);
        QVERIFY(instead.has_value());
        QVERIFY(isSameLine(instead->line, found->line));
    }

    void otherSoundsAreNoLine_data()
    {
        QTest::addColumn<QString>("what");
        for (const char* what :
             {"noise", "noise through a filter", "hum", "two carriers", "data, 300 Bd"})
            QTest::newRow(what) << what;
    }
    void otherSoundsAreNoLine()
    {
        QFETCH(QString, what);
        Path path;
        path.before_s = 20.0;
        path.snr_dB = 15.0;
        if (what.endsWith(QLatin1String("filter")))
            path.filter_Hz = 500.0;
        if (what == QLatin1String("hum"))
            path.hum_dB = 6.0;
        std::vector<float> samples = sound(std::vector<Piece>(), path, RATE_Hz, "acquisition");
        if (what.startsWith(QLatin1String("data")))
            samples = data(what.section(QLatin1Char(' '), 1, 1).toDouble(), 20.0);
        if (what == QLatin1String("two carriers")) {
            for (std::size_t n = 0; n < samples.size(); ++n) {
                const double turns = static_cast<double>(n) / RATE_Hz;
                samples[n] += static_cast<float>(0.3 * std::sin(6.283185307 * 1415.0 * turns) +
                                                 0.3 * std::sin(6.283185307 * 1585.0 * turns));
            }
        }
        for (int piece = 0; piece < 5; ++piece) {
            const auto begin = samples.begin() + piece * static_cast<std::ptrdiff_t>(4 * RATE_Hz);
            const auto found = acquired(
                std::vector<float>(begin, begin + static_cast<std::ptrdiff_t>(4 * RATE_Hz)));
            QVERIFY2(!found, qPrintable(QString::number(piece)));
        }
    }
};

QTEST_GUILESS_MAIN(tst_Acquisition)
#include "tst_acquisition.moc"
