// SPDX-License-Identifier: MIT
#include "host/standin/tracelog.h"
#include "host/trace.h"

#include <QTemporaryFile>
#include <QtTest>

#include <atomic>
#include <climits>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include <unistd.h>

class tst_Trace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theMaskStartsEmptyAndIsTheErrorHandlers()
    {
        QCOMPARE(ErrorHandler::Instance().GetTraceMask(), 0u);
        setTraceMask(0x21);
        QCOMPARE(ErrorHandler::Instance().GetTraceMask(), 0x21u);
        QVERIFY(isTraceWanted());
        setTraceMask(0xffffffff & ~0x20u);
        QVERIFY(!isTraceWanted());
        setTraceMask(0);
    }

    void aRecorderSwitchesTracesOnAndRestoresTheMask()
    {
        setTraceMask(0x3);
        {
            TraceRecorder recorder;
            QCOMPARE(traceMask(), 0x23u);
        }
        QCOMPARE(traceMask(), 0x3u);
        setTraceMask(0);
    }

    void aTraceArrivesWithItsPlace()
    {
        TraceRecorder recorder;
        _Q_Trace(QStringLiteral("message"), QStringLiteral("tools\\morsehandler"), 65535);
        QCOMPARE(recorder.Traces().size(), 1);
        QCOMPARE(recorder.Traces().first().message, QStringLiteral("message"));
        QCOMPARE(recorder.Traces().first().sourceFile, QStringLiteral("tools\\morsehandler"));
        QCOMPARE(recorder.Traces().first().line, 65535);
        recorder.Clear();
        QVERIFY(recorder.Traces().isEmpty());
    }

    void theInnerRecorderTakesTheTraces()
    {
        TraceRecorder outer;
        {
            TraceRecorder inner;
            traceMessage(QStringLiteral("inner"), QString(), 1);
            QCOMPARE(inner.Messages(), QStringList{QStringLiteral("inner")});
        }
        traceMessage(QStringLiteral("outer"), QString(), 1);
        QCOMPARE(outer.Messages(), QStringList{QStringLiteral("outer")});
    }

    void withoutASinkATraceIsOneLineOnStandardError()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        std::fflush(stderr);
        const int standardError = dup(STDERR_FILENO);
        dup2(file.handle(), STDERR_FILENO);
        _Q_Trace(QStringLiteral("two\r\nlines, gr\u00f6\u00dfer"), QStringLiteral("a\\b"), 7);
        _Q_TraceOld(QStringLiteral("old"));
        std::fflush(stderr);
        dup2(standardError, STDERR_FILENO);
        close(standardError);
        QVERIFY(file.seek(0));
        QCOMPARE(QString::fromUtf8(file.readAll()),
                 QStringLiteral("a\\b(7): two\\r\\nlines, gr\u00f6\u00dfer\nold\n"));
    }

    void theSinkIsCalledWhateverTheMaskSays()
    {
        QStringList messages;
        const TraceSink before = setTraceSink(
            [&](const QString& message, const QString&, int) { messages.append(message); });
        _Q_Trace(QStringLiteral("asked by the caller"), QString(), 1);
        traceMessage(QStringLiteral("not wanted"), QString(), 1);
        setTraceSink(before);
        QCOMPARE(messages, QStringList{QStringLiteral("asked by the caller")});
    }

    void aSinkMayTraceAndReplaceItself()
    {
        QStringList messages;
        const TraceSink before = setTraceSink([&](const QString& message, const QString&, int) {
            setTraceSink([&](const QString& inner, const QString&, int) {
                messages.append(QStringLiteral("second ") + inner);
            });
            _Q_Trace(QStringLiteral("nested"), QString(), 1);
            messages.append(QStringLiteral("first ") + message);
        });
        _Q_Trace(QStringLiteral("outer"), QString(), 1);
        setTraceSink(before);
        QCOMPARE(messages,
                 (QStringList{QStringLiteral("second nested"), QStringLiteral("first outer")}));
    }

    void theOldTraceFillsPlaceholders()
    {
        TraceRecorder recorder;
        const QByteArray name = QStringLiteral("Ströme.txt").toUtf8();
        _Q_TraceOld(QStringLiteral("file name already exists: %s"), name.constData());
        QCOMPARE(recorder.Traces().size(), 1);
        QCOMPARE(recorder.Messages().first(),
                 QStringLiteral("file name already exists: Ströme.txt"));
        QCOMPARE(recorder.Traces().first().sourceFile, QString());
        QCOMPARE(recorder.Traces().first().line, 0);
    }

    void everyPlaceholderIsFormatted()
    {
        TraceRecorder recorder;
        const auto last = [&] { return recorder.Messages().last(); };
        _Q_TraceOld(QStringLiteral("%d|%i|%5d|%-5d|%05d|%+d|% d"), 1, -2, 3, 4, 5, 6, 7);
        QCOMPARE(last(), QStringLiteral("1|-2|    3|4    |00005|+6| 7"));
        _Q_TraceOld(QStringLiteral("%u|%x|%X|%o|%#x"), 4294967295u, 255u, 255u, 8u, 16u);
        QCOMPARE(last(), QStringLiteral("4294967295|ff|FF|10|0x10"));
        _Q_TraceOld(QStringLiteral("%ld|%lld|%llu|%hd|%hhu|%zu|%jd|%td"), LONG_MIN, LLONG_MAX,
                    ULLONG_MAX, 65537, 257, sizeof(char), std::intmax_t(-9), std::ptrdiff_t(-3));
        QCOMPARE(last(), QStringLiteral("%1|9223372036854775807|18446744073709551615|1|1|1|-9|-3")
                             .arg(LONG_MIN));
        _Q_TraceOld(QStringLiteral("%.2f|%8.3f|%e|%g|%Lf"), 1.005, 2.5, 1e10, 0.5, 0.25L);
        QCOMPARE(last(), QStringLiteral("1.00|   2.500|1.000000e+10|0.5|0.250000"));
        _Q_TraceOld(QStringLiteral("%s|%8s|%-8s|%.2s|%ls|%c|%%"), "a", "b", "c", "def", L"wide",
                    'x');
        QCOMPARE(last(), QStringLiteral("a|       b|c       |de|wide|x|%"));
        _Q_TraceOld(QStringLiteral("%*d|%-*d|%*d|%*d|%.*s"), 4, 1, 4, 2, -4, 3, -2, 4, 1, "xyz");
        QCOMPARE(last(), QStringLiteral("   1|2   |3   |4 |x"));
        int object = 0;
        _Q_TraceOld(QStringLiteral("%p"), static_cast<void*>(&object));
        QVERIFY(last().startsWith(QLatin1String("0x")));
    }

    void aFormatFromAnywhereDoesNoHarm()
    {
        TraceRecorder recorder;
        const auto last = [&] { return recorder.Messages().last(); };
        _Q_TraceOld(QString());
        QCOMPARE(last(), QString());
        _Q_TraceOld(QStringLiteral("50%"));
        QCOMPARE(last(), QStringLiteral("50%"));
        _Q_TraceOld(QStringLiteral("%s then %y and %s"), "text");
        QCOMPARE(last(), QStringLiteral("text then %y and %s"));
        _Q_TraceOld(QStringLiteral("%5.3l"));
        QCOMPARE(last(), QStringLiteral("%5.3l"));
        _Q_TraceOld(QStringLiteral("%\u0564"), 1); // its low byte is that of "d"
        QCOMPARE(last(), QStringLiteral("%\u0564"));
        _Q_TraceOld(QStringLiteral("[%s]"), static_cast<const char*>(nullptr));
        QCOMPARE(last(), QStringLiteral("[(null)]"));
        _Q_TraceOld(QStringLiteral("[%ls]"), static_cast<const wchar_t*>(nullptr));
        QCOMPARE(last(), QStringLiteral("[(null)]"));
        _Q_TraceOld(QStringLiteral("[%s]"), "\xff");
        QCOMPARE(last(), QStringLiteral("[\ufffd]"));
        int written = 77;
        _Q_TraceOld(QStringLiteral("abc%n%d"), &written, 5);
        QCOMPARE(last(), QStringLiteral("abc5"));
        QCOMPARE(written, 77);
        _Q_TraceOld(QStringLiteral("%99999999999d"), 1);
        QCOMPARE(last().size(), 1000);
        _Q_TraceOld(QStringLiteral("%.99999999999f"), 1.0);
        QCOMPARE(last().size(), 1002);
        _Q_TraceOld(QStringLiteral("%*d"), INT_MIN, 1);
        QCOMPARE(last().size(), 1000);
        _Q_TraceOld(QStringLiteral("%*d"), INT_MAX, 1);
        QCOMPARE(last().size(), 1000);
        _Q_TraceOld(QStringLiteral("Umfang: \u20ac %d \u20ac"), 3);
        QCOMPARE(last(), QStringLiteral("Umfang: \u20ac 3 \u20ac"));
    }

    void eightThreadsMayTraceAtOnce()
    {
        constexpr int THREADS = 8;
        constexpr int TRACES = 500;
        TraceRecorder recorder;
        std::atomic<bool> isOver{false};
        std::vector<std::thread> threads;
        for (int i = 0; i < THREADS; ++i) {
            threads.emplace_back([i] {
                for (int j = 0; j < TRACES; ++j) {
                    if (j % 2)
                        traceMessage(QStringLiteral("new"), QStringLiteral("thread"), 1);
                    else
                        _Q_TraceOld(QStringLiteral("%s %d"), "old", i);
                }
            });
        }
        std::thread reader([&] {
            while (!isOver) {
                (void)recorder.Messages();
                (void)traceMask();
            }
        });
        for (std::thread& thread : threads)
            thread.join();
        isOver = true;
        reader.join();
        QCOMPARE(recorder.Traces().size(), THREADS * TRACES);
        QCOMPARE(recorder.Messages().count(QStringLiteral("new")), THREADS * TRACES / 2);
    }

    void aReplacedSinkIsNotCalledAnyMore()
    {
        TraceRecorder outer;
        std::atomic<int> late{0};
        std::atomic<bool> isOver{false};
        std::thread tracer([&] {
            while (!isOver)
                traceMessage(QStringLiteral("x"), QString(), 1);
        });
        for (int i = 0; i < 200; ++i) {
            const auto isReplaced = std::make_shared<std::atomic<bool>>(false);
            const TraceSink before = setTraceSink(
                [&, isReplaced](const QString&, const QString&, int) { late += *isReplaced; });
            setTraceSink(before);
            *isReplaced = true;
        }
        isOver = true;
        tracer.join();
        QCOMPARE(late.load(), 0);
    }

    void anErrorHandlerEndsThroughItsInterface()
    {
        struct Own : ErrorHandler
        {
            explicit Own(bool* ended)
                : isEnded(ended)
            {
            }
            ~Own() override { *isEnded = true; }
            unsigned int GetTraceMask() override { return 7; }
            bool* isEnded;
        };
        bool isEnded = false;
        std::unique_ptr<ErrorHandler> handler = std::make_unique<Own>(&isEnded);
        QCOMPARE(handler->GetTraceMask(), 7U);
        handler.reset();
        QVERIFY(isEnded);
    }

    void wideTextIsCutAndFilledLikeAnyOther()
    {
        TraceRecorder recorder;
        const auto last = [&] { return recorder.Messages().last(); };
        _Q_TraceOld(QStringLiteral("[%.2ls|%.9ls|%6ls|%lc|%-3lc]"), L"wide", L"wide", L"wide",
                    0x20ac, 0x20ac);
        QCOMPARE(last(), QStringLiteral("[wi|wide|  wide|\u20ac|\u20ac  ]"));
    }

    void aNulBehindAPercentSignIsNoPlaceholder()
    {
        TraceRecorder recorder;
        const QString format = QStringLiteral("a%") + QChar(0) + QStringLiteral("d");
        _Q_TraceOld(format, 1);
        QCOMPARE(recorder.Messages().last(), format);
    }

    void aPrecisionWithoutANumberIsZero()
    {
        TraceRecorder recorder;
        const auto last = [&] { return recorder.Messages().last(); };
        _Q_TraceOld(QStringLiteral("[%.d|%.d|%.f|%.s]"), 0, 7, 2.75, "text");
        QCOMPARE(last(), QStringLiteral("[|7|3|]"));
        _Q_TraceOld(QStringLiteral("[%.ls]"), L"text");
        QCOMPARE(last(), QStringLiteral("[]"));
    }
};

QTEST_APPLESS_MAIN(tst_Trace)
#include "tst_trace.moc"
