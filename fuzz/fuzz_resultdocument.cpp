// SPDX-License-Identifier: MIT
// A result document, written by the stand-in host and read back. The input is a script that adds to
// a document and saves it under one of two names, or else a document that is there already.
#include "fuzz/fuzzing.h"
#include "host/resultdata.h"
#include "host/standin/resultreader.h"

#include <QBuffer>

#include <array>

using fuzzing::require;
using namespace TavikResultDataXml;

namespace {

/// As text comes back: what XML cannot hold is replaced.
QString readable(const QString& text)
{
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            result += c;
            result += text[++i];
            continue;
        }
        const ushort unit = c.unicode();
        const bool isControl = unit < 0x20 && unit != '\t' && unit != '\n' && unit != '\r';
        result +=
            isControl || c.isSurrogate() || unit > 0xFFFD ? QChar(QChar::ReplacementCharacter) : c;
    }
    return result;
}

bool isSame(const ResultFrame& a, const ResultFrame& b)
{
    return a.timestamp_us == b.timestamp_us && a.text == b.text;
}

template <typename List, typename Same>
bool areSame(const List& a, const List& b, Same same)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
}

bool isSameBlock(const ResultBlock& a, const ResultBlock& b)
{
    return a.channel == b.channel && a.format == b.format && a.flags == b.flags &&
           areSame(a.frames, b.frames, isSame);
}

bool isSameTransmission(const ResultTransmission& a, const ResultTransmission& b)
{
    return a.startTime == b.startTime && a.stopTime == b.stopTime &&
           areSame(a.blocks, b.blocks, isSameBlock);
}

using Transmissions = std::vector<ResultTransmission>;

/// Nothing when that is no result document.
std::optional<ResultDocument> documentIn(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QString error;
    auto document = readResultDocument(buffer, &error);
    require(document.has_value() == error.isEmpty(), "a refusal has a reason");
    return document;
}

constexpr std::array<const char*, 2> NAMES = {"a.xml", "b.xml"};

/// The document, and what its files ought to hold.
class Script
{
public:
    explicit Script(const fuzzing::Folder& folder)
        : m_folder(folder)
    {
        m_document.SetWorkDir(folder.path());
    }

    void step(fuzzing::Bytes& bytes)
    {
        switch (bytes.byte()) {
        case 'T': // a transmission
            m_transmission = new Transmission;
            m_block = nullptr;
            m_document.AddTransmission(m_transmission);
            m_document.AddTransmission(m_transmission);
            m_held.push_back({});
            break;
        case '<':
            if (m_transmission)
                m_transmission->SetStartTime(m_held.back().startTime = time(bytes));
            break;
        case '>':
            if (m_transmission)
                m_transmission->SetStopTime(m_held.back().stopTime = time(bytes));
            break;
        case 'B': { // a block
            const ResultBlock block{static_cast<int>(bytes.number(1)) - 1,
                                    static_cast<int>(bytes.number(2)),
                                    static_cast<int>(bytes.number(4)),
                                    {}};
            if (!m_transmission)
                break;
            m_block = new DataBlock(block.channel, block.format, block.flags);
            m_transmission->AddDataBlock(m_block);
            m_held.back().blocks.push_back(block);
            break;
        }
        case 'F': { // a frame: its time, its text
            const unsigned long long timestamp_us = bytes.number(7);
            const QString text = QString::fromUtf8(bytes.take(bytes.byte()));
            addFrame(timestamp_us, text);
            break;
        }
        case 'U': { // a frame of any code units
            const QByteArray units = bytes.take(std::size_t{2} * (bytes.byte() % 16U));
            QString text;
            for (int i = 0; i + 1 < units.size(); i += 2)
                text += QChar(static_cast<uchar>(units[i]), static_cast<uchar>(units[i + 1]));
            addFrame(0, text);
            break;
        }
        case 'S': // save what is not on disk, and forget it
            save(bytes.byte() % NAMES.size());
            break;
        default:
            break;
        }
    }

    void check()
    {
        for (std::size_t i = 0; i < NAMES.size(); ++i) {
            if (m_saved[i].empty())
                continue;
            const auto document = documentIn(m_folder.read(NAMES[i]));
            require(document.has_value(), "a document that was written can be read");
            require(areSame(document->transmissions, m_saved[i], isSameTransmission),
                    "a document that was written reads back the same");
        }
        int files = 0;
        for (const Transmissions& saved : m_saved)
            files += saved.empty() ? 0 : 1;
        require(m_folder.names().size() == files, "no other file is left behind");
    }

private:
    static QDateTime time(fuzzing::Bytes& bytes)
    {
        return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(bytes.number(6)), Qt::UTC);
    }

    void addFrame(unsigned long long timestamp_us, const QString& text)
    {
        if (!m_block)
            return;
        m_block->BeginFrame();
        m_block->SetTimeStamp(timestamp_us);
        m_block->AppendData(text.left(text.size() / 2));
        m_block->AppendData(text.mid(text.size() / 2));
        m_block->EndFrame();
        m_block->AppendData("behind the end");
        m_held.back().blocks.back().frames.push_back({timestamp_us, readable(text)});
    }

    void save(std::size_t name)
    {
        require(m_document.SaveFile(NAMES[name]), "a document can be saved");
        require(m_document.SaveFile(NAMES[name]), "and once more, which adds nothing");
        m_document.Reset();
        m_transmission = nullptr;
        m_block = nullptr;
        m_saved[name].insert(m_saved[name].end(), m_held.begin(), m_held.end());
        m_held.clear();
    }

    const fuzzing::Folder& m_folder;
    TavikResultData m_document;
    Transmission* m_transmission = nullptr;
    DataBlock* m_block = nullptr;
    Transmissions m_held;
    std::array<Transmissions, NAMES.size()> m_saved;
};

/// What is there already is added to, or left alone.
void saveBeside(const fuzzing::Folder& folder, const QByteArray& present)
{
    const auto before = documentIn(present);
    folder.write(NAMES[0], present);
    {
        TavikResultData document;
        document.SetWorkDir(folder.path());
        auto* const transmission = new Transmission;
        transmission->SetStartTime(QDateTime::fromMSecsSinceEpoch(0, Qt::UTC));
        document.AddTransmission(transmission);
        require(document.SaveFile(NAMES[0]), "a document can be saved");
    }
    const QByteArray after = folder.read(NAMES[0]);
    if (after == present) {
        require(folder.names() == QStringList({NAMES[0], "a_2.xml"}),
                "what cannot be added to is left alone, and the document goes beside it");
        return;
    }
    const QByteArray tag = "</TavikResultData>";
    const int end = present.lastIndexOf(tag);
    require(end >= 0 && present.mid(end + tag.size()).trimmed().isEmpty() &&
                after.startsWith(("|" + present.left(end)).trimmed().mid(1)),
            "what was there before is still there, byte by byte");
    // Of a document with odd attributes the reader takes nothing.
    if (!before)
        return;
    const auto added = documentIn(after);
    require(added.has_value() && added->transmissions.size() == before->transmissions.size() + 1,
            "a transmission is added");
    require(std::equal(before->transmissions.begin(), before->transmissions.end(),
                       added->transmissions.begin(), isSameTransmission),
            "what was there before is still there");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzzing::Folder folder;
    folder.empty();
    fuzzing::Bytes bytes(data, size);
    if (size > 0 && data[0] == '<') {
        saveBeside(folder, bytes.rest());
    } else {
        Script script(folder);
        while (!bytes.isEmpty())
            script.step(bytes);
        script.check();
    }
    return 0;
}
