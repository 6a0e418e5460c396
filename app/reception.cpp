// SPDX-License-Identifier: MIT
#include "app/reception.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/options/alphabetoptions.h"
#include "host/standin/tracelog.h"
#include "host/trace.h"
#include "station/io/systemtext.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <QTemporaryFile>
#include <QThread>

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace morsehost {

namespace {

// Zero is where a frequency is not known; above are the highest bands in use.
constexpr double MIN_FREQUENCY_HZ = 1;
constexpr double MAX_FREQUENCY_HZ = 3e12;

// Hours of reception are not to be lost for a folder that could have been seen to be unusable. Only
// a file that is written tells: the system may refuse for many reasons.
bool canSaveInto(const QString& folder)
{
    if (QFileInfo::exists(folder) && !QFileInfo(folder).isDir()) {
        complain(folder, QStringLiteral("is no folder"));
        return false;
    }
    errno = 0;
    if (!QDir().mkpath(folder)) {
        complain(folder, QStringLiteral("the folder cannot be made: ") + systemError(errno));
        return false;
    }
    QTemporaryFile file(folder + QStringLiteral("/.morsehost-XXXXXX"));
    if (!file.open() || file.write("x") != 1 || !file.flush()) {
        complain(folder, QStringLiteral("no file can be written there: ") + file.errorString());
        return false;
    }
    return true;
}

} // namespace

std::vector<OptionRow> receptionOptionRows(std::vector<OptionRow> more)
{
    const std::vector<OptionRow> alphabet = alphabetOptionRows();
    std::vector<OptionRow> rows = {
        {"start", "TIME", "time of the first sample (ISO 8601); 1970-01-01 00:00 UTC without this"},
        {"save", "DIR",
         "write code file, text file and result document into DIR, which is made if need be"},
        {"frequency", "HZ", "receive frequency, for the names of the files"},
        {"codes", nullptr, "print the symbol codes instead of text"},
        {"json", nullptr, "print a JSON object a line per event"},
        {"trace", nullptr, "show the library's traces on standard error"},
    };
    rows.insert(rows.begin(), alphabet.begin(), alphabet.end());
    rows.insert(rows.begin(), more.begin(), more.end());
    return rows;
}

ReceptionOptions readReceptionOptions(Arguments& arguments)
{
    ReceptionOptions options;
    StationSettings& station = options.station;
    readAlphabetOptions(arguments, station);
    if (arguments.isSet("save"))
        station.saveDirectory =
            QDir::cleanPath(QDir::current().absoluteFilePath(arguments.text("save")));
    station.frequency_Hz = arguments.number("frequency", MIN_FREQUENCY_HZ, MAX_FREQUENCY_HZ);
    if (arguments.isSet("codes") && arguments.isSet("json"))
        arguments.fail(QStringLiteral("--codes and --json exclude each other"));
    options.form = arguments.isSet("codes")  ? ReportForm::Codes
                   : arguments.isSet("json") ? ReportForm::Json
                                             : ReportForm::Text;
    options.start_us = arguments.time("start").value_or(0);
    options.trace = arguments.isSet("trace");
    return options;
}

Reception::Reception(const ReceptionOptions& options, TextListener listener)
    : m_options(options)
    , m_listener(std::move(listener))
    , m_output(STDOUT_FILENO)
    , m_reporter(makeReporter(options.form, m_output))
    , m_station(options.station, [this](const QString& text) {
        if (m_listener && m_options.form == ReportForm::Text && !text.isEmpty())
            m_listener(!text.endsWith(QLatin1Char('\n')));
        m_reporter->text(text);
    })
{
    if (options.trace)
        setTraceMask(PLUGIN_TRACE_CLASS);
}

bool Reception::start()
{
    const StationSettings& station = m_options.station;
    return startWithAlphabet(m_station, station) &&
           (station.saveDirectory.isEmpty() || canSaveInto(station.saveDirectory));
}

void Reception::beginTransmission(long long sinceStart_us)
{
    // Documents are named by the second of the clock. A recording is read much faster than it was
    // received, and each of its transmissions is to have a document of its own.
    if (!m_options.station.saveDirectory.isEmpty()) {
        qint64 now_ms = QDateTime::currentMSecsSinceEpoch();
        if (now_ms / 1000 == m_lastDocument_s) {
            QThread::msleep(static_cast<unsigned long>(1000 - now_ms % 1000));
            now_ms = QDateTime::currentMSecsSinceEpoch();
        }
        m_lastDocument_s = now_ms / 1000;
    }
    time(sinceStart_us);
}

void Reception::time(long long sinceStart_us)
{
    const unsigned long long time_us =
        m_options.start_us + static_cast<unsigned long long>(sinceStart_us);
    m_reporter->time(time_us);
    m_station.receiveTime(time_us);
}

void Reception::symbol(int code)
{
    m_reporter->symbol(code);
    m_station.receiveSymbol(code);
}

void Reception::endTransmission()
{
    m_station.saveDocument();
}

int Reception::finish()
{
    m_station.saveDocument();
    m_station.stop();
    if (m_listener)
        m_listener(false);
    m_reporter->end();
    QStringList lost;
    if (const long long symbols = m_station.lostSymbols(); symbols > 0)
        lost += counted(symbols, "dot or dash", "dots and dashes");
    if (const long long documents = m_station.lostDocuments(); documents > 0)
        lost += counted(documents, "result document", "result documents");
    if (!lost.isEmpty()) {
        complain(m_options.station.saveDirectory,
                 lost.join(QLatin1String(" and ")) + QStringLiteral(" could not be saved"));
        return EXIT_BAD_INPUT;
    }
    if (!m_output.error().isEmpty()) {
        complain(QStringLiteral("standard output"), m_output.error());
        return EXIT_BAD_INPUT;
    }
    return EXIT_DONE;
}

} // namespace morsehost
