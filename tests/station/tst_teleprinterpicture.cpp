// SPDX-License-Identifier: MIT
#include "station/picture/teleprinterpicture.h"

#include "support/drawn.h"

#include <QtTest>

using namespace inspect;

namespace {

// Words one after the other over a stretch, of a sender whose clock is not quite that of its speed.
SeenTeleprinter seenOver(double stretch_s, double baud)
{
    SeenTeleprinter seen;
    seen.rate_Hz = 8000.0;
    seen.samples.assign(static_cast<std::size_t>(stretch_s * seen.rate_Hz), 0.0F);
    seen.stretch = {0, static_cast<std::int64_t>(1e6 * stretch_s)};
    seen.line = teleprinter::Line{{teleprinter::Code::Ascii, 100.0, 7}, 1600.0, 1400.0, baud};
    const double element_us = 1e6 / baud;
    for (double at_us = 0.0; at_us + 9.0 * element_us < 1e6 * stretch_s;
         at_us += 10.0 * element_us) {
        TeleprinterWord word = {};
        word.seen.begin_us = static_cast<std::int64_t>(at_us);
        word.seen.end_us = static_cast<std::int64_t>(at_us + 9.0 * element_us);
        word.seen.element_us = element_us;
        word.seen.elements = 0x182;
        word.seen.count = 9;
        word.seen.isStartStop = true;
        word.seen.mark_Hz = 1600.0;
        word.seen.space_Hz = 1400.0;
        word.text = QStringLiteral("A");
        seen.words.push_back(word);
    }
    return seen;
}

} // namespace

class tst_TeleprinterPicture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noRowIsEmptyForAClockThatIsALittleFast()
    {
        for (const double baud : {99.9, 100.0, 100.1, 102.0}) {
            const auto drawn =
                testsupport::readDrawn(teleprinterPicture(seenOver(20.0, baud), "t"));
            QCOMPARE(drawn.error, QString());
            QCOMPARE(drawn.rows, 2);
        }
    }

    void everyCharacterIsDrawnOnce()
    {
        const SeenTeleprinter seen = seenOver(12.0, 110.0);
        const auto drawn = testsupport::readDrawn(teleprinterPicture(seen, "t"));
        QCOMPARE(drawn.inRows("text").size(), seen.words.size());
    }

    void whatIsForgottenLeavesWhatAStretchThatBeginsThenHas()
    {
        const SeenTeleprinter all = seenOver(12.0, 110.0);
        const auto heard = [&all](TeleprinterNotes& notes) {
            notes.sound(all.samples.data(), all.samples.size(), all.rate_Hz);
            notes.transmissionStarted(*all.line, 0);
            for (std::size_t i = 0; i < all.words.size(); ++i) {
                notes.word(all.words[i].seen);
                if (i == 10) {
                    notes.transmissionStopped(*all.line, all.words[i].seen.end_us);
                    notes.transmissionStarted(*all.line, all.words[i + 1].seen.begin_us);
                }
            }
        };
        TeleprinterNotes notes({0, 20000000});
        heard(notes);
        notes.forgetBefore(3000000);
        notes.forgetBefore(5000000);
        notes.forgetBefore(4000000); // is forgotten already
        TeleprinterNotes wanted({5000000, 20000000});
        heard(wanted);
        const SeenTeleprinter& seen = notes.seen();
        QCOMPARE(seen.stretch.from_us, wanted.seen().stretch.from_us);
        QCOMPARE(seen.firstSample, wanted.seen().firstSample);
        QCOMPARE(seen.samples.size(), wanted.seen().samples.size());
        QCOMPARE(seen.words.size(), wanted.seen().words.size());
        QCOMPARE(seen.words.front().seen.begin_us, wanted.seen().words.front().seen.begin_us);
        QCOMPARE(seen.transmissions.size(), std::size_t(1));
        QCOMPARE(seen.transmissions.size(), wanted.seen().transmissions.size());
    }

    void withoutAWordItSaysSo()
    {
        SeenTeleprinter seen = seenOver(5.0, 100.0);
        seen.words.clear();
        const auto drawn = testsupport::readDrawn(teleprinterPicture(seen, "t"));
        QCOMPARE(drawn.error, QString());
        QCOMPARE(drawn.inRows("nothing").size(), std::size_t(1));
    }
};

QTEST_GUILESS_MAIN(tst_TeleprinterPicture)
#include "tst_teleprinterpicture.moc"
