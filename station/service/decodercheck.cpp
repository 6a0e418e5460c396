// SPDX-License-Identifier: MIT
#include "station/service/decodercheck.h"

#include "station/audio/bandsource.h"
#include "station/service/receiver.h"

#include <QProcess>

namespace morsehost {

namespace {

QString recordingFault(const ReceiverSettings& receiver)
{
    BandRequest request;
    request.name = receiver.file;
    request.isComplex = receiver.samples.isComplex;
    const OpenedBand opened = openBand(request);
    return opened.source ? QString() : receiver.file + QStringLiteral(": ") + opened.error;
}

// The decoder's own words; empty when it takes what is asked of it.
QString refusal(const ReceiverSettings& receiver, const QString& program)
{
    // A recording would be heard to its end.
    ReceiverSettings silent = receiver;
    silent.file.clear();
    // Pictures need a folder; whether files are kept has been looked at.
    silent.options.removeAll(QStringLiteral("--pictures"));
    QProcess decoder;
    decoder.setStandardInputFile(QProcess::nullDevice());
    decoder.setStandardOutputFile(QProcess::nullDevice());
    decoder.start(program, decoderWords(silent, QString()));
    if (!decoder.waitForFinished(-1))
        return decoder.errorString();
    if (decoder.exitStatus() == QProcess::NormalExit && decoder.exitCode() == 0)
        return {};
    QString words = QString::fromUtf8(decoder.readAllStandardError()).simplified();
    words = words.section(QStringLiteral("morsehost: "), 1).section(QStringLiteral(" (see "), 0, 0);
    return words.isEmpty() ? QStringLiteral("the decoder fails") : words;
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
        if (isOption && words.contains(word + QLatin1Char(' ')))
            return receiver.lines.value(key);
        if (!isOption && words.contains(word))
            line = receiver.lines.value(key);
    }
    return line;
}

} // namespace

std::vector<ConfigurationFault> decoderFaults(const StationConfiguration& configuration,
                                              const QString& program)
{
    std::vector<ConfigurationFault> faults;
    for (const ReceiverSettings& receiver : configuration.receivers) {
        if (!receiver.file.isEmpty()) {
            const QString fault = recordingFault(receiver);
            if (!fault.isEmpty())
                faults.push_back({receiver.lines.value(QStringLiteral("file")), fault});
        }
        const QString words = refusal(receiver, program);
        if (!words.isEmpty())
            faults.push_back({lineOf(receiver, words), words});
    }
    return faults;
}

} // namespace morsehost
