// SPDX-License-Identifier: MIT
// morsehost: a small host around the library, for recordings and pipes.
#include "app/commands/registry.h"
#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "station/io/filenamecodec.h"
#include "station/io/interrupt.h"
#include "station/io/systemtext.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

using morsehost::Arguments;
using morsehost::Command;
using morsehost::commands;
using morsehost::OptionRow;

const QLatin1String HELP("help");

void print(std::FILE* where, const QString& text)
{
    std::fputs(text.toUtf8().constData(), where);
}

QString overview()
{
    QString text = QStringLiteral("Usage: morsehost COMMAND [OPTION…] [ARGUMENT…]\n\nCommands:\n");
    for (const Command& command : commands())
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.syntax.name), -10)
                    .arg(morsehost::shortSummary(command));
    text += QStringLiteral("\nOptions:\n");
    for (const OptionRow& option : morsehost::programOptions())
        text += QStringLiteral("  --%1 %2\n")
                    .arg(QLatin1String(option.name), -8)
                    .arg(QString::fromStdString(option.help));
    text += QStringLiteral("\nExamples:\n");
    for (const Command& command : commands())
        text += QString::fromUtf8(command.syntax.examples);
    return text;
}

// Standard output may be a full disk. A reader that has gone away is no error.
int afterOutput(int status)
{
    errno = 0;
    const bool failed = std::fflush(stdout) != 0 || std::ferror(stdout) != 0;
    if (!failed || errno == EPIPE || status != morsehost::EXIT_DONE)
        return status;
    // What failed earlier, in the middle of a list, has left no number.
    morsehost::complain(QStringLiteral("standard output"), errno == 0
                                                               ? QStringLiteral("cannot be written")
                                                               : morsehost::systemError(errno));
    return morsehost::EXIT_BAD_INPUT;
}

int refuse(const QString& reason, const QString& hint)
{
    morsehost::complain(reason + QStringLiteral(" (see 'morsehost %1--help')").arg(hint));
    return morsehost::EXIT_BAD_USAGE;
}

// The caller of a program may have closed these three. What is opened next would take their place
// and be read or written in their stead.
void openMissingDescriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0)
            static_cast<void>(open("/dev/null", O_RDWR));
    }
}

int runCommand(const Command& command, const QStringList& words)
{
    Arguments arguments(command.syntax, words);
    if (arguments.wantsHelp()) {
        print(stdout, arguments.help());
        return afterOutput(morsehost::EXIT_DONE);
    }
    int status = morsehost::EXIT_BAD_USAGE;
    if (arguments.error().isEmpty())
        status = command.run(arguments);
    if (!arguments.error().isEmpty())
        return refuse(arguments.error(), QLatin1String(command.syntax.name) + QLatin1Char(' '));
    return afterOutput(status);
}

int run(const QString& name, const QStringList& words)
{
    for (const Command& command : commands()) {
        if (name == QLatin1String(command.syntax.name))
            return runCommand(command, words);
    }
    return refuse(QStringLiteral("no command '%1'").arg(name), QString());
}

// Of the command that follows, or of all.
int showHelp(const QStringList& words)
{
    const QString about = words.value(0);
    if (!about.isEmpty() && !about.startsWith(QLatin1Char('-')) && about != HELP)
        return run(about, {QStringLiteral("--help")});
    print(stdout, overview());
    return afterOutput(morsehost::EXIT_DONE);
}

} // namespace

int main(int argc, char* argv[])
{
    openMissingDescriptors();
    morsehost::useFileNameCodec();
    QCoreApplication application(argc, argv);
    morsehost::noteInterrupts();

    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.isEmpty()) {
        print(stderr, overview());
        return morsehost::EXIT_BAD_USAGE;
    }
    const QString& first = words.constFirst();
    if (first == HELP || first == QLatin1String("--help") || first == QLatin1String("-h"))
        return showHelp(words.mid(1));
    if (first == QLatin1String("--version")) {
        print(stdout, QStringLiteral("morsehost " MORSEHOST_VERSION "\n"));
        return afterOutput(morsehost::EXIT_DONE);
    }
    return run(first, words.mid(1));
}
