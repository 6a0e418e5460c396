// SPDX-License-Identifier: MIT
#include "app/reporter.h"

#include "app/console/complain.h"
#include "app/console/printable.h"
#include "morse/symbolcodes.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace morsehost {

namespace {

class TextReporter : public Reporter
{
public:
    TextReporter(Output& output, LineListener listener)
        : Reporter(output)
        , m_listener(std::move(listener))
    {
    }

    void source(const QString& name) override
    {
        write(QStringLiteral("==> %1 <==\n").arg(printableLine(name)));
    }

    // A blank is written before what follows it, so that no line ends with one. The line of a
    // transmission ends with it, so a line feed that comes later is none.
    void text(const QString& text) override
    {
        if (text == QLatin1String("\n")) {
            end();
            return;
        }
        const bool endsWord = text.endsWith(QLatin1Char(' '));
        const QString characters = endsWord ? text.chopped(1) : text;
        if (!characters.isEmpty())
            write((m_wordHasEnded ? QStringLiteral(" ") : QString()) +
                  (m_output.isTerminal() ? printable(characters) : characters));
        m_wordHasEnded = m_lineIsOpen && (endsWord || (m_wordHasEnded && characters.isEmpty()));
    }

    void transmission(const Transmission& /*transmission*/) override { end(); }

    void end() override
    {
        if (m_lineIsOpen)
            write(QStringLiteral("\n"));
    }

private:
    void write(const QString& text)
    {
        m_lineIsOpen = !text.endsWith(QLatin1Char('\n'));
        m_wordHasEnded = false;
        if (m_listener)
            m_listener(m_lineIsOpen);
        m_output.write(text.toUtf8());
    }

    LineListener m_listener;
    bool m_lineIsOpen = false;
    bool m_wordHasEnded = false; ///< and another may follow in the line
};

class CodesReporter : public Reporter
{
public:
    using Reporter::Reporter;

    void symbol(int code) override
    {
        const bool endsLine = code == eSYMBOL_NEW_WORD || code == eSYMBOL_NEW_LINE;
        m_output.write((m_lineIsOpen ? " " : "") + QByteArray::number(code) +
                       (endsLine ? "\n" : ""));
        m_lineIsOpen = !endsLine;
    }

    void end() override
    {
        if (m_lineIsOpen)
            m_output.write("\n");
        m_lineIsOpen = false;
    }

private:
    bool m_lineIsOpen = false;
};

class JsonReporter : public Reporter
{
public:
    using Reporter::Reporter;

    void source(const QString& name) override { event("source", {{QStringLiteral("name"), name}}); }

    void symbol(int code) override
    {
        const char* const mark = errorMark(code);
        if (mark)
            event("error", {{QStringLiteral("mark"), QLatin1String(mark)}});
    }

    void time(unsigned long long time_us) override
    {
        m_time = isoTime(static_cast<qint64>(time_us));
        event("time", {});
    }

    void text(const QString& text) override
    {
        if (text == QLatin1String("\n")) {
            event("line", {});
            return;
        }
        const bool endsWord = text.endsWith(QLatin1Char(' '));
        const QString character = endsWord ? text.chopped(1) : text;
        if (!character.isEmpty())
            event("character", {{QStringLiteral("text"), character}});
        if (endsWord)
            event("word", {});
    }

    void unknownCode(const QString& elements) override
    {
        event("unknown", {{QStringLiteral("code"), elements}});
    }

    void transmission(const Transmission& transmission) override
    {
        event("transmission", toJson(transmission));
    }

    void end() override { m_time.reset(); }

private:
    static const char* errorMark(int code)
    {
        switch (code) {
        case eSYMBOL_DOT_TOO_SHORT:
            return "dot too short";
        case eSYMBOL_DASH_TOO_LONG:
            return "dash too long";
        case eSYMBOL_PAUSE_TOO_SHORT:
            return "pause too short";
        default:
            return nullptr;
        }
    }

    void event(const char* kind, QJsonObject object)
    {
        object.insert(QStringLiteral("event"), QLatin1String(kind));
        if (m_time)
            object.insert(QStringLiteral("at"), *m_time);
        m_output.write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
    }

    std::optional<QString> m_time;
};

} // namespace

void Reporter::source(const QString& /*name*/) {}
void Reporter::end() {}

void Reporter::saving(const QString& message)
{
    complain(message);
}

std::unique_ptr<Reporter> makeReporter(ReportForm form, Output& output, LineListener listener)
{
    switch (form) {
    case ReportForm::Codes:
        return std::make_unique<CodesReporter>(output);
    case ReportForm::Json:
        return std::make_unique<JsonReporter>(output);
    case ReportForm::Text:
        break;
    }
    return std::make_unique<TextReporter>(output, std::move(listener));
}

} // namespace morsehost
