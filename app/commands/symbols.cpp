// SPDX-License-Identifier: MIT
// morsehost symbols: symbol codes as numbers, straight into the symbol value.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/reception.h"
#include "morse/symbolcodes.h"
#include "station/io/descriptor.h"
#include "station/io/input.h"
#include "station/io/interrupt.h"

#include <QByteArray>

#include <cctype>
#include <memory>
#include <utility>

namespace morsehost {

namespace {

// What is longer is no code, however it goes on.
constexpr int MAX_WORD_BYTES = 64;
constexpr int MAX_CODE = 0xFF; // the eighth bit is the decoder's own

// The words of a text, however it is cut into pieces, with the line that each stands on.
class WordReader
{
public:
    explicit WordReader(int descriptor)
        : m_input(descriptor)
    {
    }

    bool next(QByteArray& word)
    {
        word.clear();
        for (;;) {
            if (m_position == m_size) {
                m_size = m_input.read(m_buffer, sizeof m_buffer);
                m_position = 0;
                if (m_size == 0)
                    return !word.isEmpty() && !isInterrupted();
            }
            const char c = m_buffer[m_position];
            if (std::isspace(static_cast<unsigned char>(c)) == 0) {
                word += c;
                if (word.size() > MAX_WORD_BYTES)
                    return true;
            } else if (!word.isEmpty()) {
                return true; // the blank is met again, and its line counted then
            } else if (c == '\n') {
                ++m_line;
            }
            ++m_position;
        }
    }

    long long line() const { return m_line; }
    const QString& error() const { return m_input.error(); }

private:
    Input m_input;
    char m_buffer[65536] = {};
    std::size_t m_size = 0;
    std::size_t m_position = 0;
    long long m_line = 1;
};

int run(Arguments& arguments)
{
    const ReceptionOptions options = readReceptionOptions(arguments, StartWords::Time);
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    const Descriptor descriptor(arguments.operands().constFirst());
    if (!descriptor.error().isEmpty()) {
        complain(descriptor.name(), descriptor.error());
        return EXIT_BAD_INPUT;
    }

    Reception reception(options);
    if (!reception.canBegin())
        return EXIT_BAD_INPUT;
    MorseStation& station =
        reception.begin({descriptor.name(), options.start_us, std::nullopt, RecordingKeys()});
    // Codes carry no time of their own: it stands still at the start. An end of line ends a
    // transmission, and the next code begins another.
    bool isOpen = false;
    auto words = std::make_unique<WordReader>(descriptor.number());
    QByteArray word;
    QString error;
    while (error.isEmpty() && !reception.isPointless() && words->next(word)) {
        bool ok = false;
        const int code = word.toInt(&ok);
        if (!ok || code < 0 || code > MAX_CODE) {
            error = QStringLiteral("line %1: '%2' is no symbol code")
                        .arg(words->line())
                        .arg(QString::fromUtf8(word.constData(), word.size()));
        } else if ((code & MORSE_SYMBOL_MASK) == eSYMBOL_NEW_LINE) {
            station.endTransmission(0);
            isOpen = false;
        } else {
            if (!std::exchange(isOpen, true))
                station.transmissionStarted(0);
            station.symbol(code, 0);
        }
    }
    if (error.isEmpty())
        error = words->error();
    const int status = reception.finish();
    if (error.isEmpty())
        return status;
    complain(descriptor.name(), error);
    return EXIT_BAD_INPUT;
}

} // namespace

Command symbolsCommand()
{
    return {
        {"symbols", "FILE|-", 1, 1,
         "Decodes symbol codes: decimal numbers, one or more a line. 0 dot, 1 dash, 3 end of\n"
         "character, 4 end of word, 5 end of line, 64 dot too short, 65 dash too long, 66 pause\n"
         "too short.",
         receptionOptionRows({}, StartWords::Time),
         "  echo 0 0 0 3 1 1 1 3 0 0 0 3 | morsehost symbols -\n"
         "  morsehost decode --codes recording.flac | morsehost symbols --alphabet Greek -\n"},
        run};
}

} // namespace morsehost
