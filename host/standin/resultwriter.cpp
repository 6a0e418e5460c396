// SPDX-License-Identifier: MIT
#include "host/standin/resultwriter.h"

#include "host/resultdata.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QLockFile>
#include <QSaveFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <array>
#include <cctype>

namespace TavikResultDataXml {

namespace {

constexpr char VERSION[] = "1.0";
constexpr char END_OF_DOCUMENT[] = "</TavikResultData>";
constexpr qint64 COPY_BYTES = 1 << 16;
constexpr int LOCK_PATIENCE_ms = 2000;
constexpr int MOST_NAMES = 10000;

/// Writes transmissions element by element. Indentation is written by hand, so that transmissions
/// look the same whether they begin a document or are added to one.
class ContentWriter
{
public:
    explicit ContentWriter(QIODevice& device)
        : m_xml(&device)
    {
        m_xml.setCodec("UTF-8");
    }

    void BeginDocument()
    {
        m_xml.writeStartDocument();
        m_xml.writeCharacters(QStringLiteral("\n"));
        m_xml.writeStartElement(QStringLiteral("TavikResultData"));
        m_xml.writeAttribute(QLatin1String(VERSION_ATTRIBUTE), QLatin1String(VERSION));
    }

    /// Ends a document, also one that was begun by another writer. False when not all of what this
    /// writer wrote reached the device.
    bool EndDocument()
    {
        m_xml.writeCharacters(QStringLiteral("\n"));
        const QByteArray end = QByteArray(END_OF_DOCUMENT) + '\n';
        return m_xml.device()->write(end) == end.size() && !m_xml.hasError();
    }

    void Write(const TransmissionContent& transmission)
    {
        BeginElement(1, QStringLiteral("Transmission"));
        WriteTime(QStringLiteral("StartTime"), transmission.startTime);
        WriteTime(QStringLiteral("StopTime"), transmission.stopTime);
        for (const auto& block : transmission.blocks)
            Write(*block);
        EndElement(1);
    }

private:
    void Write(const BlockContent& block)
    {
        BeginElement(2, QStringLiteral("DataBlock"));
        m_xml.writeAttribute(QStringLiteral("Channel"), QString::number(block.channel));
        m_xml.writeAttribute(QStringLiteral("Format"), QString::number(block.format));
        m_xml.writeAttribute(QStringLiteral("Flags"), QString::number(block.flags));
        std::size_t textBegin = 0;
        for (const FrameContent& frame : block.frames) {
            BeginElement(3, QStringLiteral("Frame"));
            m_xml.writeAttribute(QStringLiteral("Time"), FrameTime(frame.timestamp_us));
            WriteText(block.text.data() + textBegin, frame.textEnd - textBegin);
            m_xml.writeEndElement();
            textBegin = frame.textEnd;
        }
        EndElement(2);
    }

    void BeginElement(int level, const QString& name)
    {
        m_xml.writeCharacters(m_indents[static_cast<std::size_t>(level)]);
        m_xml.writeStartElement(name);
    }

    void EndElement(int level)
    {
        m_xml.writeCharacters(m_indents[static_cast<std::size_t>(level)]);
        m_xml.writeEndElement();
    }

    void WriteTime(const QString& attribute, const QDateTime& time)
    {
        if (time.isValid())
            m_xml.writeAttribute(attribute,
                                 QLocale::c().toString(time, QLatin1String(DATE_TIME_FORMAT)));
    }

    /// The document's format of a time, with microseconds instead of milliseconds.
    QString FrameTime(unsigned long long timestamp_us)
    {
        constexpr unsigned long long MICROSECONDS = 1000000;
        const unsigned long long second = timestamp_us / MICROSECONDS;
        if (second != m_second || m_secondText.isEmpty()) {
            m_second = second;
            m_secondText = QLocale::c().toString(
                QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(second * 1000), Qt::UTC),
                QStringLiteral("yyyy-MM-ddThh:mm:ss,"));
        }
        std::array<QChar, 7> fraction;
        fraction[6] = QLatin1Char('Z');
        unsigned long long rest = timestamp_us % MICROSECONDS;
        for (std::size_t i = 6; i-- > 0; rest /= 10)
            fraction[i] = QLatin1Char(static_cast<char>('0' + rest % 10));
        return m_secondText + QString::fromRawData(fraction.data(), 7);
    }

    void WriteText(const char16_t* text, std::size_t size)
    {
        std::size_t written = 0;
        const auto writeUpTo = [&](std::size_t end) {
            if (end > written)
                m_xml.writeCharacters(
                    QString::fromRawData(reinterpret_cast<const QChar*>(text + written),
                                         static_cast<int>(end - written)));
        };
        for (std::size_t i = 0; i < size; ++i) {
            const char16_t unit = text[i];
            if (unit >= 0x20 && unit < 0xd800)
                continue;
            if (QChar::isHighSurrogate(unit) && i + 1 < size &&
                QChar::isLowSurrogate(text[i + 1])) {
                ++i;
                continue;
            }
            if (unit == u'\t' || unit == u'\n' || (unit >= 0xe000 && unit <= 0xfffd))
                continue;
            writeUpTo(i);
            written = i + 1;
            // A bare carriage return would be read back as a line feed; others XML cannot hold.
            if (unit == u'\r')
                m_xml.writeEntityReference(QStringLiteral("#13"));
            else
                m_xml.writeCharacters(QString(QChar::ReplacementCharacter));
        }
        writeUpTo(size);
    }

    QXmlStreamWriter m_xml;
    const std::array<QString, 4> m_indents{QStringLiteral("\n"), QStringLiteral("\n  "),
                                           QStringLiteral("\n    "), QStringLiteral("\n      ")};
    unsigned long long m_second = 0;
    QString m_secondText; ///< text of that second
};

bool writeRest(ContentWriter& writer, const Transmissions& transmissions)
{
    for (const auto& transmission : transmissions)
        writer.Write(*transmission);
    return writer.EndDocument();
}

/// Where transmissions are added to the result document in `file`: behind its last element. -1
/// when that is no document to add to.
qint64 positionToAddAt(QFile& file)
{
    QXmlStreamReader xml(&file);
    xml.readNext(); // the beginning of the document, which alone knows its encoding
    const QString encoding = xml.documentEncoding().toString();
    if (!encoding.isEmpty() && encoding.compare(QLatin1String("UTF-8"), Qt::CaseInsensitive) != 0)
        return -1;
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("TavikResultData"))
        return -1;
    if (xml.attributes().value(QLatin1String(VERSION_ATTRIBUTE)) != QLatin1String(VERSION))
        return -1;
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError())
        return -1;
    // Adding is done with bytes, so the end has to be the end tag in UTF-8 and nothing else.
    constexpr int TAG_BYTES = sizeof END_OF_DOCUMENT - 1;
    constexpr int TAIL_BYTES = 64;
    const qint64 tailBegin = std::max<qint64>(0, file.size() - TAIL_BYTES);
    const QByteArray tail = file.seek(tailBegin) ? file.read(TAIL_BYTES) : QByteArray();
    const int tag = tail.lastIndexOf(END_OF_DOCUMENT);
    if (tag < 0)
        return -1;
    if (!tail.mid(tag + TAG_BYTES).trimmed().isEmpty())
        return -1;
    int end = tag; // the white space before it is written again
    while (end > 0 && std::isspace(static_cast<unsigned char>(tail.at(end - 1))))
        --end;
    return tailBegin + end;
}

bool copyBytes(QFile& from, QIODevice& to, qint64 count)
{
    bool isWhole = from.seek(0);
    while (isWhole && count > 0) {
        const QByteArray piece = from.read(std::min(count, COPY_BYTES));
        isWhole = !piece.isEmpty() && to.write(piece) == piece.size();
        count -= piece.size();
    }
    return isWhole;
}

bool isNameTaken(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

/// "name_2.xml" and so on; empty when all are taken.
QString nextFreeName(const QString& path)
{
    const QFileInfo info(path);
    QString suffix = info.suffix();
    if (!suffix.isEmpty())
        suffix.prepend(QLatin1Char('.'));
    const QString stem = path.left(path.size() - suffix.size());
    for (int i = 2; i <= MOST_NAMES; ++i) {
        QString candidate = stem + QLatin1Char('_') + QString::number(i) + suffix;
        if (!isNameTaken(candidate))
            return candidate;
    }
    return {};
}

} // namespace

bool addToFile(const QString& path, const Transmissions& transmissions, IfTaken ifTaken)
{
    // Somebody else may be adding to the document of the same second.
    QLockFile lock(path + QStringLiteral(".lock"));
    if (!lock.tryLock(LOCK_PATIENCE_ms))
        return false;

    QString target = path;
    qint64 end = -1;
    QFile existing(path);
    if (isNameTaken(path)) {
        if (ifTaken == IfTaken::Add && QFileInfo(path).isFile() &&
            existing.open(QIODevice::ReadOnly))
            end = positionToAddAt(existing);
        if (end < 0)
            target = nextFreeName(path);
    }
    if (target.isEmpty())
        return false;

    QSaveFile file(target);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    ContentWriter writer(file);
    if (end < 0)
        writer.BeginDocument();
    else if (!copyBytes(existing, file, end))
        return false;
    // Committing does not look at what flushing runs into.
    return writeRest(writer, transmissions) && file.flush() && file.commit();
}

} // namespace TavikResultDataXml
