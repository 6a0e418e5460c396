// SPDX-License-Identifier: MIT
#include "host/standin/resultreader.h"

#include "host/resultdata.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

#include <limits>

namespace TavikResultDataXml {

namespace {

class DocumentReader
{
public:
    explicit DocumentReader(QIODevice& device)
        : m_xml(&device)
    {
    }

    std::optional<ResultDocument> Read(QString* error)
    {
        ResultDocument document;
        if (m_xml.readNextStartElement()) {
            if (m_xml.name() == QLatin1String("TavikResultData"))
                ReadDocument(document);
            else
                m_xml.raiseError(QStringLiteral("no result document"));
        }
        while (!m_xml.atEnd())
            m_xml.readNext();
        if (!m_xml.hasError())
            return document;
        if (error)
            *error = QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(m_xml.errorString());
        return std::nullopt;
    }

private:
    void ReadDocument(ResultDocument& document)
    {
        document.version = m_xml.attributes().value(QLatin1String(VERSION_ATTRIBUTE)).toString();
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == QLatin1String("Transmission"))
                document.transmissions.push_back(ReadTransmission());
            else
                m_xml.skipCurrentElement();
        }
    }

    ResultTransmission ReadTransmission()
    {
        ResultTransmission transmission;
        transmission.startTime = ReadOptionalTime("StartTime");
        transmission.stopTime = ReadOptionalTime("StopTime");
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == QLatin1String("DataBlock"))
                transmission.blocks.push_back(ReadBlock());
            else
                m_xml.skipCurrentElement();
        }
        return transmission;
    }

    ResultBlock ReadBlock()
    {
        ResultBlock block{ReadNumber("Channel"), ReadNumber("Format"), ReadNumber("Flags"), {}};
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() != QLatin1String("Frame")) {
                m_xml.skipCurrentElement();
                continue;
            }
            const unsigned long long timestamp_us = ReadMicroseconds();
            block.frames.push_back({timestamp_us, m_xml.readElementText()});
        }
        return block;
    }

    int ReadNumber(const char* attribute)
    {
        bool ok = false;
        const int number = m_xml.attributes().value(QLatin1String(attribute)).toInt(&ok);
        if (!ok)
            m_xml.raiseError(QStringLiteral("bad %1").arg(QLatin1String(attribute)));
        return number;
    }

    QDateTime ReadOptionalTime(const char* attribute)
    {
        if (!m_xml.attributes().hasAttribute(QLatin1String(attribute)))
            return {};
        return ReadTime(attribute, 3).first;
    }

    unsigned long long ReadMicroseconds()
    {
        const auto [second, microseconds] = ReadTime("Time", 6);
        const qint64 second_ms = second.toMSecsSinceEpoch();
        constexpr qint64 LAST_ms =
            static_cast<qint64>(std::numeric_limits<unsigned long long>::max() / 1000);
        if (second.isValid() && (second_ms < 0 || second_ms > LAST_ms))
            m_xml.raiseError(QStringLiteral("bad Time"));
        return static_cast<unsigned long long>(second_ms) * 1000 + microseconds;
    }

    /// The time in an attribute; with six digits of the second's fraction the whole second and its
    /// microseconds, with three the time and 0.
    std::pair<QDateTime, unsigned int> ReadTime(const char* attribute, int digits)
    {
        static const QRegularExpression pattern(QStringLiteral(
            "^(-?\\d{4,8})-(\\d\\d)-(\\d\\d)T(\\d\\d):(\\d\\d):(\\d\\d),(\\d+)Z\\z"));
        const QString text = m_xml.attributes().value(QLatin1String(attribute)).toString();
        const QRegularExpressionMatch match = pattern.match(text);
        const QDate date(match.captured(1).toInt(), match.captured(2).toInt(),
                         match.captured(3).toInt());
        const QString fraction = match.captured(7);
        const QTime time(match.captured(4).toInt(), match.captured(5).toInt(),
                         match.captured(6).toInt(), digits == 3 ? fraction.toInt() : 0);
        // Without a match the date is that of no numbers.
        if (!date.isValid() || !time.isValid() || fraction.size() != digits) {
            m_xml.raiseError(QStringLiteral("bad %1").arg(QLatin1String(attribute)));
            return {};
        }
        return {QDateTime(date, time, Qt::UTC), digits == 3 ? 0u : fraction.toUInt()};
    }

    QXmlStreamReader m_xml;
};

} // namespace

std::optional<ResultDocument> readResultDocument(QIODevice& device, QString* error)
{
    return DocumentReader(device).Read(error);
}

} // namespace TavikResultDataXml
