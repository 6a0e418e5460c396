// SPDX-License-Identifier: MIT
// morsehost: a small host around the library, for recordings and pipes.
#include "app/commands/commands.h"
#include "app/complain.h"
#include "app/exitstatus.h"
#include "app/interrupt.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

using morsehost::Arguments;
using morsehost::Command;

const std::vector<Command>& commands()
{
    // clang-format off
    static const std::vector<Command> rows = {
        morsehost::decodeCommand(),
        morsehost::inspectCommand(),
        morsehost::symbolsCommand(),
        morsehost::alphabetsCommand(),
        morsehost::mapsCommand(),
        morsehost::translateCommand(),
        morsehost::mapCommand(),
        morsehost::lintCommand(),
    };
    // clang-format on
    return rows;
}

void print(std::FILE* where, const QString& text)
{
    std::fputs(text.toUtf8().constData(), where);
}

QString overview()
{
    QString text = QStringLiteral("Usage: morsehost COMMAND [OPTION…] [ARGUMENT…]\n\nCommands:\n");
    for (const Command& command : commands()) {
        const QString summary = QString::fromUtf8(command.syntax.summary);
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.syntax.name), -10)
                    .arg(summary.section(QLatin1Char('.'), 0, 0).simplified());
    }
    text += QStringLiteral("\nOptions:\n"
                           "  --help     show this help; 'morsehost COMMAND --help' tells more\n"
                           "  --version  show the version\n\nExamples:\n");
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
    morsehost::complain(QStringLiteral("standard output"), QStringLiteral("cannot be written"));
    return morsehost::EXIT_BAD_INPUT;
}

int refuse(const QString& reason, const QString& hint)
{
    morsehost::complain(reason + QStringLiteral(" (see 'morsehost %1--help')").arg(hint));
    return morsehost::EXIT_BAD_USAGE;
}

// Whoever starts a program may have closed these three. What is opened next would take their place
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

} // namespace

int main(int argc, char* argv[])
{
    openMissingDescriptors();
    // Names and texts are UTF-8 whatever the locale says.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QCoreApplication application(argc, argv);
    morsehost::noteInterrupts();

    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.isEmpty()) {
        print(stderr, overview());
        return morsehost::EXIT_BAD_USAGE;
    }
    const QString first = words.constFirst();
    if (first == QLatin1String("--help") || first == QLatin1String("-h")) {
        print(stdout, overview());
        return afterOutput(morsehost::EXIT_DONE);
    }
    if (first == QLatin1String("--version")) {
        print(stdout, QStringLiteral("morsehost " MORSEHOST_VERSION "\n"));
        return afterOutput(morsehost::EXIT_DONE);
    }
    for (const Command& command : commands()) {
        if (first == QLatin1String(command.syntax.name))
            return runCommand(command, words.mid(1));
    }
    return refuse(QStringLiteral("no command '%1'").arg(first), QString());
}
