// SPDX-License-Identifier: MIT
// A station with receivers that end, stall and send rubbish. A shell script stands in for this
// program as the decoder, so that what it is given and what it answers are known.
#include "station/service/service.h"

#include "station/archive/archive.h"
#include "support/program.h"

#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace morsehost;

namespace {

// Reads all of its input, then reports the number of bytes as a transmission.
const char* const COUNTING_DECODER = R"(#!/bin/sh
echo rubbish
echo '{"event":"transmission","number":1,"start":"2026-11-22T10:00:00.000Z","stop":"2026-11-22T10:00:05.000Z","text":"FIRST"}'
n=$(wc -c)
echo '{"event":"transmission","number":2,"start":"2026-11-22T10:00:06.000Z","stop":"2026-11-22T10:00:09.000Z","text":"'$n'"}'
)";

// What locking a file fails with, as on a file system without locks; 0 to let it be.
int g_lockError = 0;

} // namespace

// In place of that of the system.
int flock(int file, int operation) noexcept
{
    if (g_lockError == 0)
        return static_cast<int>(syscall(SYS_flock, file, operation));
    errno = g_lockError;
    return -1;
}

class tst_Service : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString program(const char* script) const
    {
        const QString path = m_folder.filePath("decoder.sh");
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(script) < 0)
            qFatal("no script");
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    ReceiverSettings commandReceiver(const QString& name, const QString& command) const
    {
        ReceiverSettings settings;
        settings.name = name;
        settings.command = command;
        settings.isSaved = false;
        return settings;
    }

    StationConfiguration configuration(const std::vector<ReceiverSettings>& receivers) const
    {
        StationConfiguration made;
        made.name = "north";
        made.folder = m_folder.filePath("kept");
        made.archive = made.folder + "/archive.db";
        made.receivers = receivers;
        return made;
    }

private Q_SLOTS:
    void samplesReachTheDecoderAndItsTextTheArchive()
    {
        int received = 0;
        StationService service(program(COUNTING_DECODER));
        connect(&service, &StationService::received, [&received] { ++received; });
        QString error;
        // 30000 bytes, then it stays open.
        QVERIFY2(service.configure(
                     configuration({commandReceiver("hf", "head -c 30000 /dev/zero")}), error),
                 qPrintable(error));
        QTRY_VERIFY_WITH_TIMEOUT(received >= 2, testsupport::HANGS_ms);
        service.stop();
        const std::unique_ptr<Archive> archive =
            Archive::open(m_folder.filePath("kept/archive.db"), error);
        QVERIFY(archive);
        ArchiveQuery query;
        query.isOldestFirst = true;
        const auto found = archive->search(query);
        QVERIFY(found && found->size() >= 2);
        QCOMPARE((*found)[0].record.transmission.text, QString("FIRST"));
        QCOMPARE((*found)[0].record.transmission.receiver, QString("hf"));
        QCOMPARE((*found)[0].record.station, QString("north"));
        QCOMPARE((*found)[1].record.transmission.text, QString("30000"));
    }

    void aReceiverThatEndsIsStartedAgain()
    {
        Receiver::Surroundings surroundings;
        surroundings.program = program(COUNTING_DECODER);
        surroundings.firstPause_ms = 1;
        surroundings.longestPause_ms = 4;
        int downs = 0;
        QString problem;
        int decoders = 0;
        Receiver receiver(commandReceiver("hf", "echo no such tuner >&2; exit 3"), surroundings);
        connect(&receiver, &Receiver::stateChanged, [&] {
            downs += receiver.state() == ReceiverState::Down ? 1 : 0;
            if (receiver.state() == ReceiverState::Down)
                problem = receiver.problem();
        });
        connect(&receiver, &Receiver::decoded, [&](const QJsonObject& object) {
            decoders += object.value("text") == QJsonValue("FIRST") ? 1 : 0;
        });
        receiver.start();
        QTRY_VERIFY_WITH_TIMEOUT(decoders >= 3, testsupport::HANGS_ms);
        QVERIFY(downs >= 1);
        QCOMPARE(problem, QString("no such tuner"));
    }

    void aReceiverThatStallsIsDown()
    {
        Receiver::Surroundings surroundings;
        surroundings.program = program(COUNTING_DECODER);
        ReceiverSettings settings = commandReceiver("hf", "echo; exec tail -f /dev/null");
        settings.stall_s = 1;
        Receiver receiver(settings, surroundings);
        receiver.start();
        QTRY_VERIFY_WITH_TIMEOUT(receiver.state() == ReceiverState::Down, testsupport::HANGS_ms);
        QCOMPARE(receiver.problem(), QString("no samples for 1 s"));
    }

    void whatADecoderDoesNotTakeIsLostInWholeSamples()
    {
        const QString gate = m_folder.filePath("gate");
        Receiver::Surroundings surroundings;
        QCOMPARE(mkfifo(QFile::encodeName(gate).constData(), 0600), 0);
        surroundings.program = program(
            ("#!/bin/sh\nread -r word <'" + gate.toUtf8() + "'\necho '{\"bytes\":'$(wc -c)'}'\n")
                .constData());
        ReceiverSettings settings =
            commandReceiver("hf", "printf x; head -c 60000003 /dev/zero; printf yyyy");
        settings.samples.isComplex = true; // 4 bytes each
        qint64 arrived = -1;
        Receiver receiver(settings, surroundings);
        connect(&receiver, &Receiver::decoded, [&arrived](const QJsonObject& object) {
            arrived = qint64(object.value("bytes").toDouble());
        });
        receiver.start();
        QTRY_VERIFY_WITH_TIMEOUT(receiver.state() == ReceiverState::Down, testsupport::HANGS_ms);
        QFile file(gate);
        // For both ways, so that nobody has to read already.
        QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        QCOMPARE(file.write("open\n"), qint64(5));
        QTRY_VERIFY_WITH_TIMEOUT(arrived >= 0, testsupport::HANGS_ms);
        QVERIFY(receiver.bytesLost() > 0);
        QCOMPARE(arrived + receiver.bytesLost(), qint64(60000008));
        QCOMPARE(receiver.bytesLost() % 4, qint64(0));
    }

    void whatACommandHasStartedEndsWithIt()
    {
        const QString log = m_folder.filePath("ended");
        Receiver::Surroundings surroundings;
        surroundings.program = program(COUNTING_DECODER);
        // The shell waits for a process that writes no more.
        Receiver receiver(
            commandReceiver("hf", "(trap 'echo ended >" + log +
                                      "; exit' TERM; echo; tail -f /dev/null & wait); true"),
            surroundings);
        receiver.start();
        QTRY_VERIFY_WITH_TIMEOUT(receiver.state() == ReceiverState::Running, testsupport::HANGS_ms);
        receiver.stop();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(log), testsupport::HANGS_ms);
    }

    void aConnectionIsReadLikeACommand()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        Receiver::Surroundings surroundings;
        surroundings.program = program(COUNTING_DECODER);
        ReceiverSettings settings;
        settings.name = "net";
        settings.tcp = QString("127.0.0.1:%1").arg(server.serverPort());
        QStringList texts;
        Receiver receiver(settings, surroundings);
        connect(&receiver, &Receiver::decoded,
                [&](const QJsonObject& object) { texts += object.value("text").toString(); });
        receiver.start();
        QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), testsupport::HANGS_ms);
        QTcpSocket* const client = server.nextPendingConnection();
        client->write(QByteArray(5000, 'x'));
        client->disconnectFromHost();
        QTRY_VERIFY_WITH_TIMEOUT(texts.contains("5000"), testsupport::HANGS_ms);
        QCOMPARE(receiver.state(), ReceiverState::Down);
    }

    void aDecoderIsRenewedBetweenTransmissions()
    {
        const QString log = m_folder.filePath("renewals");
        const QString gate = m_folder.filePath("renewal-gate");
        QCOMPARE(mkfifo(QFile::encodeName(gate).constData(), 0600), 0);
        QFile file(gate);
        QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        const QByteArray script = "#!/bin/sh\necho begin >>'" + log.toUtf8() +
                                  "'\necho '{\"event\":\"time\"}'\nread -r word <'" +
                                  gate.toUtf8() + "'\necho end >>'" + log.toUtf8() +
                                  "'\necho '{\"event\":\"transmission\"}'\ncat >/dev/null\n";
        Receiver::Surroundings surroundings;
        surroundings.program = program(script.constData());
        surroundings.quiet_ms = 0;
        QStringList events;
        Receiver receiver(commandReceiver("hf", "echo; exec tail -f /dev/null"), surroundings);
        connect(&receiver, &Receiver::decoded, [&events](const QJsonObject& object) {
            events += object.value("event").toString();
        });
        receiver.start();
        QTRY_COMPARE_WITH_TIMEOUT(events, QStringList{"time"}, testsupport::HANGS_ms);
        QTRY_COMPARE_WITH_TIMEOUT(receiver.state(), ReceiverState::Running, testsupport::HANGS_ms);
        receiver.renewInPause();
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        QCOMPARE(file.write("open\n"), qint64(5));
        QTRY_COMPARE_WITH_TIMEOUT(events, QStringList({"time", "transmission", "time"}),
                                  testsupport::HANGS_ms);
        QFile lines(log);
        QVERIFY(lines.open(QIODevice::ReadOnly));
        QCOMPARE(lines.readAll(), QByteArray("begin\nend\nbegin\n"));
        QCOMPARE(file.write("open\n"), qint64(5));
    }

    void whatIsUnchangedGoesOn()
    {
        StationService service(program(COUNTING_DECODER));
        QString error;
        const ReceiverSettings first = commandReceiver("first", "cat /dev/zero");
        const ReceiverSettings second = commandReceiver("second", "cat /dev/zero");
        QVERIFY(service.configure(configuration({first, second}), error));
        const Receiver* const before = service.receivers().front();
        ReceiverSettings changed = second;
        changed.decoder = "band";
        QVERIFY(service.configure(configuration({first, changed}), error));
        QCOMPARE(service.receivers().front(), before);
        QCOMPARE(service.receivers().size(), std::size_t(2));
        QCOMPARE(service.receivers().back()->settings().decoder, QString("band"));
        QVERIFY(service.configure(configuration({changed}), error));
        QCOMPARE(service.receivers().size(), std::size_t(1));
    }

    void aReceiverThatIsSlowToEndHoldsUpNoOther()
    {
        // Reports when it has heard all, and the gate is open.
        const QString gate = m_folder.filePath("slow-gate");
        QCOMPARE(mkfifo(QFile::encodeName(gate).constData(), 0600), 0);
        QFile file(gate);
        QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        const QByteArray script = R"(#!/bin/sh
echo '{"event":"transmission","number":1,"text":"BEGIN '$1'"}'
cat >/dev/null
read -r word <')" + gate.toUtf8() +
                                  R"('
echo '{"event":"transmission","number":2,"text":"END '$1'"}'
)";
        QStringList texts;
        StationService service(program(script.constData()));
        connect(&service, &StationService::received, [&texts](const ArchiveRecord& record) {
            texts += record.transmission.receiver + ' ' + record.transmission.text;
        });
        QString error;
        const ReceiverSettings before = commandReceiver("hf", "cat /dev/zero");
        QVERIFY(service.configure(configuration({before}), error));
        QTRY_COMPARE_WITH_TIMEOUT(texts, QStringList({"hf BEGIN decode"}), testsupport::HANGS_ms);
        ReceiverSettings changed = before;
        changed.decoder = "band";
        const ReceiverSettings other = commandReceiver("other", "cat /dev/zero");
        QVERIFY(service.configure(configuration({changed, other}), error));
        QTRY_COMPARE_WITH_TIMEOUT(texts.size(), 2, testsupport::HANGS_ms);
        QCOMPARE(texts[1], QString("other BEGIN decode"));
        QCOMPARE(file.write("open\n"), qint64(5));
        QTRY_COMPARE_WITH_TIMEOUT(texts.size(), 4, testsupport::HANGS_ms);
        QCOMPARE(texts.mid(2), QStringList({"hf END decode", "hf BEGIN band"}));
        // Those that wait for the gate at the end.
        file.write("open\nopen\n");
    }

    void aRecordingIsHeardToItsEndBeforeItBeginsAgain()
    {
        // Takes longer than the second after which it is to begin again.
        const QString log = m_folder.filePath("order.txt");
        const QByteArray script = "#!/bin/sh\necho begin >>" + log.toUtf8() +
                                  "\nsleep 2.5\necho end >>" + log.toUtf8() + '\n';
        Receiver::Surroundings surroundings;
        surroundings.program = program(script.constData());
        surroundings.firstPause_ms = 50;
        ReceiverSettings settings;
        settings.name = "loop";
        settings.file = log;
        settings.repeat_s = 1;
        Receiver receiver(settings, surroundings);
        receiver.start();
        const auto lines = [&log] {
            QFile file(log);
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        QTRY_VERIFY_WITH_TIMEOUT(lines().count("begin") >= 3, testsupport::HANGS_ms);
        QVERIFY(lines().startsWith("begin\nend\nbegin\nend\nbegin\n"));
    }

    void aPageShowsWhatIsReceived()
    {
        QStringList lines;
        StationService service(program(COUNTING_DECODER));
        StationConfiguration made =
            configuration({commandReceiver("hf", "head -c 30000 /dev/zero")});
        made.page.address = "127.0.0.1";
        connect(&service, &StationService::reported,
                [&lines](const QString& line) { lines += line; });
        QString error;
        QVERIFY(service.configure(made, error));
        const int port = service.pagePort();
        QVERIFY(port > 0);
        QTcpSocket reader;
        reader.connectToHost("127.0.0.1", static_cast<quint16>(port));
        QVERIFY(reader.waitForConnected(testsupport::HANGS_ms));
        reader.write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
        QByteArray bytes;
        QTRY_VERIFY_WITH_TIMEOUT((bytes += reader.readAll()).contains("\"text\":\"30000\""),
                                 testsupport::HANGS_ms);
        QVERIFY(bytes.contains("\"name\":\"hf\""));
        QVERIFY(!lines.filter(QString("page: http://127.0.0.1:%1").arg(port)).isEmpty());
        // The same page again is not disturbed; without it, readers are ended.
        QVERIFY(service.configure(made, error));
        QCOMPARE(service.pagePort(), port);
        made.page = PageSettings();
        QVERIFY(service.configure(made, error));
        QCOMPARE(service.pagePort(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(reader.state(), QAbstractSocket::UnconnectedState,
                                  testsupport::HANGS_ms);
    }

    void aPageThatHasNoPlaceDoesNotStopTheReceivers()
    {
        QTcpServer taken;
        QVERIFY(taken.listen(QHostAddress::LocalHost));
        QStringList lines;
        int received = 0;
        StationService service(program(COUNTING_DECODER));
        StationConfiguration made =
            configuration({commandReceiver("hf", "head -c 30000 /dev/zero")});
        made.page.address = "127.0.0.1";
        made.page.port = taken.serverPort();
        connect(&service, &StationService::reported,
                [&lines](const QString& line) { lines += line; });
        connect(&service, &StationService::received, [&received] { ++received; });
        QString error;
        QVERIFY(service.configure(made, error));
        QTRY_VERIFY_WITH_TIMEOUT(received >= 2, testsupport::HANGS_ms);
        QCOMPARE(service.pagePort(), 0);
        QCOMPARE(lines.filter("tried again").size(), 1);
        taken.close();
        QTRY_VERIFY_WITH_TIMEOUT(service.pagePort() == made.page.port, testsupport::HANGS_ms);
    }

    void whatIsRefusedChangesNothing()
    {
        int received = 0;
        StationService service(program(COUNTING_DECODER));
        connect(&service, &StationService::received, [&received] { ++received; });
        QString error;
        StationConfiguration good = configuration({commandReceiver("hf", "cat /dev/zero")});
        good.folder = m_folder.filePath("first");
        good.archive = good.folder + "/archive.db";
        QVERIFY2(service.configure(good, error), qPrintable(error));
        StationConfiguration bad = good;
        bad.folder = m_folder.filePath("bad");
        bad.archive = bad.folder + "/archive.db";
        QVERIFY(QDir().mkpath(bad.folder));
        QFile file(bad.folder + "/unsent");
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!service.configure(bad, error));
        QVERIFY(!error.isEmpty());
        good.receivers.push_back(commandReceiver("other", "cat /dev/zero"));
        QVERIFY2(service.configure(good, error), qPrintable(error));
        QTRY_COMPARE_WITH_TIMEOUT(received, 2, testsupport::HANGS_ms);
        service.stop();
        const std::unique_ptr<Archive> archive = Archive::open(good.archive, error);
        QVERIFY(archive);
        QVERIFY(*archive->count() >= 2);
    }

    void aFolderThatCannotBeWrittenIsRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("for the archive") << "unsent";
        QTest::newRow("for the broker") << "unpublished";
    }
    void aFolderThatCannotBeWrittenIsRefused()
    {
        QFETCH(QString, name);
        StationService service(program(COUNTING_DECODER));
        StationConfiguration made = configuration({commandReceiver("a", "true")});
        made.folder = m_folder.filePath("closed-" + name);
        made.mqtt.url = "mqtt://localhost:1";
        made.mqtt.folder = made.folder + "/unpublished";
        QVERIFY(QDir().mkpath(made.folder + "/unsent"));
        QVERIFY(QDir().mkpath(made.folder + "/unpublished"));
        const QString closed = made.folder + '/' + name;
        for (const char* const below : {"", "/unsent", "/unpublished"})
            QVERIFY(QFile::setPermissions(made.folder + below, QFile::Permissions(0x7777)));
        QVERIFY(QFile::setPermissions(m_folder.path(), QFile::Permissions(0x7755)));
        QVERIFY(QFile::setPermissions(closed, QFile::ReadOwner | QFile::ExeOwner));
        QString error;
        bool isTaken = true;
        {
            // The superuser may write anywhere.
            const uid_t before = geteuid();
            QVERIFY(before != 0 || seteuid(65534) == 0);
            isTaken = service.configure(made, error);
            QCOMPARE(seteuid(before), 0);
        }
        QVERIFY(!isTaken);
        QVERIFY2(error.startsWith(closed + ": no file can be written there"), qPrintable(error));
        QVERIFY(service.receivers().empty());
        QVERIFY(
            QFile::setPermissions(closed, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

    void aFolderIsForOneStation()
    {
        StationService first(program(COUNTING_DECODER));
        StationService second(program(COUNTING_DECODER));
        // What the first one runs does not hold the folder behind its end.
        StationConfiguration shared = configuration({commandReceiver("a", "tail -f /dev/null")});
        shared.folder = m_folder.filePath("shared");
        QString error;
        QVERIFY2(first.configure(shared, error), qPrintable(error));
        QVERIFY(first.configure(shared, error));
        QVERIFY(!second.configure(shared, error));
        QCOMPARE(error, shared.folder + ": another station uses this folder");
        QVERIFY(second.receivers().empty());

        StationConfiguration own = shared;
        own.folder = m_folder.filePath("own");
        QVERIFY2(second.configure(own, error), qPrintable(error));
        QVERIFY(!second.configure(shared, error));
        first.stop();
        QVERIFY2(second.configure(shared, error), qPrintable(error));
    }

    void aFolderWithoutLocksIsRefused_data()
    {
        QTest::addColumn<int>("error");
        QTest::newRow("not supported") << EOPNOTSUPP;
        QTest::newRow("no lock server") << ENOLCK;
    }
    void aFolderWithoutLocksIsRefused()
    {
        QFETCH(int, error);
        StationService service(program(COUNTING_DECODER));
        StationConfiguration wanted = configuration({commandReceiver("a", "true")});
        QString reason;
        g_lockError = error;
        const bool isTaken = service.configure(wanted, reason);
        g_lockError = 0;
        QVERIFY(!isTaken);
        QVERIFY2(reason.startsWith(wanted.folder + ": the file system has no locks"),
                 qPrintable(reason));
        QVERIFY(service.receivers().empty());
        QVERIFY2(service.configure(wanted, reason), qPrintable(reason));
    }

    void aFolderThatCannotBeMadeIsRefused()
    {
        StationService service(program(COUNTING_DECODER));
        StationConfiguration bad = configuration({commandReceiver("a", "true")});
        bad.folder = "/dev/null/kept";
        QString error;
        QVERIFY(!service.configure(bad, error));
        QVERIFY(!error.isEmpty());
        QVERIFY(service.receivers().empty());
    }
};

QTEST_GUILESS_MAIN(tst_Service)
#include "tst_service.moc"
