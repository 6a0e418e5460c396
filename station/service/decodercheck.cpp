// SPDX-License-Identifier: MIT
#include "station/service/decodercheck.h"

#include "station/audio/bandsource.h"
#include "station/service/receiver.h"
#include "station/service/stationsections.h"

#include <QProcess>
#include <QRegularExpression>

namespace morsehost {

namespace {

OpenedBand openRecording(const ReceiverSettings& receiver)
{
    BandRequest request;
    request.name = receiver.file;
    request.isComplex = receiver.samples.isComplex;
    return openBand(request);
}

// What would be heard to its end is replaced by silence of the same rate.
ReceiverSettings asSamples(ReceiverSettings receiver, double rate_Hz)
{
    receiver.lines[QStringLiteral("rate")] = receiver.lines.value(QStringLiteral("file"));
    receiver.options =
        QStringList{QStringLiteral("--rate"), QString::number(rate_Hz, 'f', 0)} + receiver.options;
    receiver.file.clear();
    return receiver;
}

// The decoder's own words; empty when it takes what is asked of it.
QString refusal(ReceiverSettings receiver, const QString& program)
{
    // Pictures need a folder; whether files are kept has been looked at.
    receiver.options.removeAll(QStringLiteral("--pictures"));
    QProcess decoder;
    decoder.setStandardInputFile(QProcess::nullDevice());
    decoder.setStandardOutputFile(QProcess::nullDevice());
    decoder.start(program, decoderWords(receiver, QString()));
    if (!decoder.waitForFinished(-1))
        return decoder.errorString();
    if (decoder.exitStatus() == QProcess::NormalExit && decoder.exitCode() == 0)
        return {};
    QString words = QString::fromUtf8(decoder.readAllStandardError()).simplified();
    words = words.section(QStringLiteral("morsehost: "), 1).section(QStringLiteral(" (see "), 0, 0);
    words.remove(QStringLiteral("standard input: "));
    return words.isEmpty() ? QStringLiteral("the decoder fails") : words;
}

// An option within words, as a whole.
QRegularExpression asWord(const QString& option)
{
    return QRegularExpression(option + QStringLiteral("(?![\\w-])"));
}

// Of the key whose option the words name, or whose value.
int lineOf(const ReceiverSettings& receiver, const QString& words)
{
    int line = receiver.lines.value(QString());
    QString key;
    for (const QString& word : receiver.options) {
        const bool isOption = word.startsWith(QLatin1String("--"));
        if (isOption)
            key = word.mid(2).replace(QLatin1Char('-'), QLatin1Char('_'));
        if (isOption && words.contains(asWord(word)))
            return receiver.lines.value(key);
        if (!isOption && words.contains(word))
            line = receiver.lines.value(key);
    }
    return line;
}

// The words with the file's keys for the options of the command line.
QString inKeys(QString words)
{
    for (const stationfile::KeyRow& row : stationfile::keyRows()) {
        if (row.option)
            words.replace(asWord(QStringLiteral("--") + QLatin1String(row.option)),
                          QLatin1String(row.key.name));
    }
    return words;
}

} // namespace

std::vector<ConfigurationFault> decoderFaults(const StationConfiguration& configuration,
                                              const QString& program)
{
    std::vector<ConfigurationFault> faults;
    const auto ask = [&](const ReceiverSettings& receiver) {
        const QString words = refusal(receiver, program);
        if (!words.isEmpty())
            faults.push_back({lineOf(receiver, words), inKeys(words)});
    };
    for (const ReceiverSettings& receiver : configuration.receivers) {
        if (receiver.file.isEmpty()) {
            ask(receiver);
            continue;
        }
        const OpenedBand opened = openRecording(receiver);
        if (opened.source)
            ask(asSamples(receiver, opened.source->format().rate_Hz));
        else
            faults.push_back({receiver.lines.value(QStringLiteral("file")),
                              receiver.file + QStringLiteral(": ") + opened.error});
    }
    return faults;
}

} // namespace morsehost
