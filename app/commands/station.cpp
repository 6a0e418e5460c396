// SPDX-License-Identifier: MIT
// morsehost station: receivers, decoders and archive as a file says, until it is ended.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "station/service/decodercheck.h"
#include "station/service/service.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QSocketNotifier>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

namespace morsehost {

namespace {

// Signals become bytes of a pipe, and so events of the loop.
int g_signalPipe[2] = {-1, -1};

extern "C" void noteSignal(int number)
{
    const int before = errno;
    const char byte = static_cast<char>(number);
    static_cast<void>(!::write(g_signalPipe[1], &byte, 1));
    errno = before;
}

bool openSignalPipe()
{
    if (pipe2(g_signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return false;
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGHUP, SIGINT, SIGTERM})
        sigaction(number, &action, nullptr);
    return true;
}

void report(const QString& line)
{
    const QString time = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    std::fprintf(stderr, "%s %s\n", qPrintable(time), line.simplified().toUtf8().constData());
}

// False, with every fault printed, when there are any.
bool complainOf(const std::vector<ConfigurationFault>& faults, const QString& path)
{
    for (const ConfigurationFault& fault : faults) {
        complain(fault.line > 0 ? QStringLiteral("%1:%2").arg(path).arg(fault.line) : path,
                 fault.text);
    }
    return faults.empty();
}

bool readChecked(const QString& path, StationConfiguration& configuration)
{
    std::vector<ConfigurationFault> faults;
    configuration = readConfiguration(path, faults);
    return complainOf(faults, path);
}

// What runs already has shown whether its decoder takes it.
StationConfiguration withoutUnchanged(StationConfiguration configuration,
                                      const StationConfiguration& running)
{
    std::vector<ReceiverSettings>& all = configuration.receivers;
    all.erase(std::remove_if(all.begin(), all.end(),
                             [&running](const ReceiverSettings& one) {
                                 return std::find(running.receivers.begin(),
                                                  running.receivers.end(),
                                                  one) != running.receivers.end();
                             }),
              all.end());
    return configuration;
}

int run(Arguments& arguments)
{
    const QString path = arguments.operands().constFirst();
    StationConfiguration configuration;
    if (!readChecked(path, configuration))
        return EXIT_BAD_INPUT;
    const QString program = QCoreApplication::applicationFilePath();
    if (arguments.isSet("check"))
        return complainOf(decoderFaults(configuration, program), path) ? EXIT_DONE : EXIT_BAD_INPUT;
    if (!openSignalPipe()) {
        complain(QStringLiteral("no pipe can be opened for signals"));
        return EXIT_BAD_INPUT;
    }
    StationService service(program);
    QObject::connect(&service, &StationService::reported, report);
    QObject::connect(&service, &StationService::received, [](const ArchiveRecord& record) {
        const Transmission& transmission = record.transmission;
        report(QStringLiteral("%1: %2").arg(transmission.receiver, transmission.text));
    });
    QString error;
    if (!service.configure(configuration, error)) {
        complain(error);
        return EXIT_BAD_INPUT;
    }
    QSocketNotifier signals(g_signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&signals, &QSocketNotifier::activated, [&] {
        char number = 0;
        while (::read(g_signalPipe[0], &number, 1) == 1) {
            if (number != SIGHUP) {
                QCoreApplication::quit();
                return;
            }
            sd_notify(0, "RELOADING=1");
            StationConfiguration changed;
            error.clear();
            if (readChecked(path, changed) &&
                complainOf(decoderFaults(withoutUnchanged(changed, configuration), program),
                           path) &&
                service.configure(changed, error)) {
                configuration = changed;
                report(QStringLiteral("%1: taken over").arg(path));
            } else {
                report(QStringLiteral("%1: not taken over %2").arg(path, error));
            }
            sd_notify(0, "READY=1");
        }
    });
    sd_notify(0, "READY=1");
    QCoreApplication::exec();
    sd_notify(0, "STOPPING=1");
    service.stop();
    return EXIT_DONE;
}

} // namespace

Command stationCommand()
{
    return {{"station",
             "CONFIG",
             1,
             1,
             "Runs the receivers of CONFIG, and archives what they receive. SIGHUP reads\n"
             "CONFIG again; receivers that did not change continue undisturbed.",
             {{"check", nullptr, "only check CONFIG"}},
             "  morsehost station --check station.ini\n"},
            run};
}

} // namespace morsehost
