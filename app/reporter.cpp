// SPDX-License-Identifier: MIT
#include "app/reporter.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

namespace morsehost {

namespace {

constexpr int END_OF_WORD = 4;
constexpr int END_OF_LINE = 5;

class TextReporter : public Reporter
{
public:
    using Reporter::Reporter;

    void text(const QString& text) override
    {
        if (text.isEmpty())
            return;
        m_output.write(text.toUtf8());
        m_lineIsOpen = !text.endsWith(QLatin1Char('\n'));
    }

    void end() override
    {
        if (m_lineIsOpen)
            m_output.write("\n");
    }

private:
    bool m_lineIsOpen = false;
};

class CodesReporter : public Reporter
{
public:
    using Reporter::Reporter;

    void symbol(int code) override
    {
        const bool endsLine = code == END_OF_WORD || code == END_OF_LINE;
        m_output.write((m_lineIsOpen ? " " : "") + QByteArray::number(code) +
                       (endsLine ? "\n" : ""));
        m_lineIsOpen = !endsLine;
    }

    void end() override
    {
        if (m_lineIsOpen)
            m_output.write("\n");
    }

private:
    bool m_lineIsOpen = false;
};

class JsonReporter : public Reporter
{
public:
    using Reporter::Reporter;

    void symbol(int code) override
    {
        const char* const mark = errorMark(code);
        if (mark)
            event("error", {{QStringLiteral("mark"), QLatin1String(mark)}});
    }

    void time(unsigned long long time_us) override
    {
        m_time = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(time_us / 1000), Qt::UTC)
                     .toString(Qt::ISODateWithMs);
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

private:
    static const char* errorMark(int code)
    {
        switch (code) {
        case 64:
            return "dot too short";
        case 65:
            return "dash too long";
        case 66:
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

void Reporter::symbol(int /*code*/) {}
void Reporter::time(unsigned long long /*time_us*/) {}
void Reporter::text(const QString& /*text*/) {}
void Reporter::end() {}

std::unique_ptr<Reporter> makeReporter(ReportForm form, Output& output)
{
    switch (form) {
    case ReportForm::Codes:
        return std::make_unique<CodesReporter>(output);
    case ReportForm::Json:
        return std::make_unique<JsonReporter>(output);
    case ReportForm::Text:
        break;
    }
    return std::make_unique<TextReporter>(output);
}

} // namespace morsehost
