// SPDX-License-Identifier: MIT
// Weak, unsteady and disturbed signals, as the bench makes them but shorter: what was read once is
// to be read from then on. The bounds leave a few characters to rounding, not to a regression.
#include "reception/corpus.h"
#include "support/codelist.h"

#include <QtTest>

using namespace testsupport;

namespace {

constexpr std::size_t LENGTH = 140;

const reception::Condition& conditionOf(const QString& name)
{
    for (const reception::Condition& condition : reception::conditions()) {
        if (condition.name == name.toStdString())
            return condition;
    }
    qFatal("no such condition");
}

// Sounds that are taken for keying now and then, and how many characters they may give in two
// minutes. Crashes that a filter has left narrow, the nulls of a carrier, syllables, notes and hops
// are keying for a moment each; time codes and the tones of a telephone are keyed indeed, and
// bursts of a teleprinter are heard through one of its two tones.
constexpr std::pair<const char*, int> LIMITS[] = {
    {"static crashes through", 6}, {"a carrier", 4},   {"speech", 60},  {"music", 45},
    {"hopping tones", 45},         {"time codes", 60}, {"ringing", 60}, {"teleprinters of", 60},
    {"SITOR in bursts", 400},
};

} // namespace

class tst_Reception : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aWeakOrDisturbedSignalIsStillRead_data()
    {
        QTest::addColumn<QString>("condition");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("mostErrors"); // of 140 characters
        const auto add = [](const char* condition, const char* kind, int mostErrors) {
            QTest::newRow(condition)
                << QString::fromLatin1(condition) << QString::fromLatin1(kind) << mostErrors;
        };
        add("snr3", "contact", 1);
        add("snr0", "groups", 2);
        add("snr-3", "prose", 8);
        add("snr-6", "contact", 45);
        add("fast-snr3", "groups", 2);
        add("filter-snr3", "prose", 1);
        add("filter-snr0", "contact", 2);
        add("fading", "groups", 1);
        add("scatter", "contact", 6);
        add("wander", "contact", 0);
        add("chirp", "prose", 0);
        add("wobble15", "prose", 2);
        add("settle30", "contact", 2);
        add("echo12", "prose", 2);
        add("echo9", "groups", 4);
        add("neighbour", "groups", 0);
        add("crowd", "prose", 1);
        add("clicks", "groups", 0);
        add("static", "contact", 5);
        add("hum", "prose", 1);
        add("jitter20", "contact", 1);
        add("fist", "contact", 2);
        add("speedup", "groups", 0);
        add("widegaps", "prose", 5);
        add("stations", "contact", 3);
        add("shortovers", "contact", 12);
        add("equalovers", "prose", 24);
        add("halves", "contact", 0);
        add("quickfading", "contact", 16);
        add("all", "groups", 5);
    }
    void aWeakOrDisturbedSignalIsStillRead()
    {
        QFETCH(QString, condition);
        QFETCH(QString, kind);
        QFETCH(int, mostErrors);
        const reception::Recording recording =
            reception::record(conditionOf(condition), kind.toStdString(), "test", LENGTH);
        const CodeList list = decodeAll(recording.samples, reception::RATE_Hz);
        const std::string sent = asReceived(recording.sent);
        const std::string received = asReceived(textOfCodes(list.codes(), '*'));
        const std::size_t errors = editDistance(sent, received);
        QVERIFY2(errors <= static_cast<std::size_t>(mostErrors),
                 (std::to_string(errors) + "\nsent " + sent + "\ngot  " + received).c_str());
    }
    // In its first half second the noise beside this signal is by chance opposite to it, as the
    // other tone of a teleprinter would be.
    void aSignalWhoseBeginLooksLikeOneOfTwoTonesIsReadFromItsBegin()
    {
        const reception::Recording recording =
            reception::record(conditionOf(QStringLiteral("quick-snr3")), "groups", "m6-2", LENGTH);
        const CodeList list = decodeAll(recording.samples, reception::RATE_Hz);
        const std::string sent = asReceived(recording.sent);
        const std::string received = asReceived(textOfCodes(list.codes(), '*'));
        QVERIFY2(editDistance(sent, received) <= 1, received.c_str());
    }
    void whereNobodyKeysNothingIsHeard_data()
    {
        QTest::addColumn<int>("silence");
        QTest::addColumn<int>("mostCharacters"); // in two minutes
        for (std::size_t i = 0; i < reception::silences().size(); ++i) {
            const QString title = QString::fromStdString(reception::silences()[i].title);
            const auto limit =
                std::find_if(std::begin(LIMITS), std::end(LIMITS), [&title](const auto& each) {
                    return title.startsWith(QLatin1String(each.first));
                });
            QTest::newRow(qPrintable(title))
                << int(i) << (limit == std::end(LIMITS) ? 0 : limit->second);
        }
    }
    void whereNobodyKeysNothingIsHeard()
    {
        QFETCH(int, silence);
        QFETCH(int, mostCharacters);
        std::string heard;
        for (const char* seed : {"one", "two", "three"}) {
            const std::vector<float> samples =
                reception::silences()[static_cast<std::size_t>(silence)].make(40.0, seed);
            const CodeList list = decodeAll(samples, reception::RATE_Hz);
            const std::vector<int> codes = list.codes();
            const bool timingMarks =
                std::any_of(codes.begin(), codes.end(), [](int code) { return code >= 64; });
            std::string given;
            for (const int code : codes)
                given += ' ' + std::to_string(code);
            QVERIFY2(mostCharacters > 0 || (!timingMarks && list.transmissions.empty()),
                     (seed + given).c_str());
            heard += textOfCodes(codes, '*');
        }
        const auto characters =
            std::count_if(heard.begin(), heard.end(), [](char c) { return c != ' '; });
        QVERIFY2(characters <= mostCharacters, heard.c_str());
    }
};

QTEST_APPLESS_MAIN(tst_Reception)
#include "tst_reception.moc"
