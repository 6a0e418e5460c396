// SPDX-License-Identifier: MIT
// morsehost password: makes the hash of a password that the page of a station asks for.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "station/page/password.h"

#include <cstdio>
#include <termios.h>
#include <unistd.h>

namespace morsehost {

namespace {

constexpr int MAX_LINE_BYTES = 1024;

// A person who looks over a shoulder does not see what is typed.
class HiddenTyping
{
public:
    HiddenTyping()
        : m_isTerminal(tcgetattr(STDIN_FILENO, &m_before) == 0)
    {
        if (!m_isTerminal)
            return;
        std::fputs("Password: ", stderr);
        termios hidden = m_before;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    ~HiddenTyping()
    {
        if (!m_isTerminal)
            return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
        std::fputs("\n", stderr);
    }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;

private:
    termios m_before = {};
    bool m_isTerminal;
};

int run(Arguments& /*arguments*/)
{
    char line[MAX_LINE_BYTES] = {};
    {
        const HiddenTyping hidden;
        if (!std::fgets(line, sizeof line, stdin))
            line[0] = '\0';
    }
    QByteArray password(line);
    if (password.endsWith('\n'))
        password.chop(1);
    const QByteArray hash = password.isEmpty() ? QByteArray() : hashOfPassword(password);
    if (hash.isEmpty()) {
        complain(QStringLiteral("a password has from 1 to %1 bytes").arg(MAX_PASSWORD_BYTES));
        return EXIT_BAD_INPUT;
    }
    std::printf("%s\n", hash.constData());
    return EXIT_DONE;
}

} // namespace

Command passwordCommand()
{
    return {{"password",
             "",
             0,
             0,
             "Makes the hash of a password for the page of a station. The password is a line on\n"
             "standard input; a terminal does not show it.",
             {},
             "  morsehost password\n"},
            run};
}

} // namespace morsehost
