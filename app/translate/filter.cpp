// SPDX-License-Identifier: MIT
#include "app/translate/filter.h"

#include "app/console/complain.h"
#include "app/translate/mapfiles.h"
#include "charmap/codechandler.h"
#include "station/io/input.h"
#include "station/io/output.h"
#include "station/io/systemtext.h"

#include <csignal>

namespace translate {

namespace {

constexpr int piece_bytes = 64 * 1024;

/// The full name of the map that is meant; empty, with a line to `err`, when there is none or more
/// than one.
QString fullName(const FilterOptions& options, CodecHandler& handler, QTextStream& err)
{
    if (options.map.compare(QLatin1String("None"), Qt::CaseInsensitive) == 0)
        return options.map;
    const QVector<MapFile> files = mapFilesIn(QDir(options.mapsDirectory));
    const QStringList fitting = handler.AvailableAlphabets();
    QStringList names;
    for (const MapFile& file : files) {
        if (file.name.compare(options.map, Qt::CaseInsensitive) == 0)
            return file.name;
        if (file.base.compare(options.map, Qt::CaseInsensitive) == 0 &&
            (options.decoder.isEmpty() || fitting.contains(file.name)))
            names += file.name;
    }
    names.removeDuplicates();
    if (names.size() == 1)
        return names.first();
    err << "morsehost: ";
    if (names.isEmpty())
        err << options.mapsDirectory << ": no map '" << options.map << '\''
            << (options.decoder.isEmpty()
                    ? QString()
                    : QStringLiteral(" for the decoder '%1'").arg(options.decoder))
            << " (see 'morsehost maps')";
    else
        err << "the map '" << options.map << "' may be '" << names.join(QLatin1String("' or '"))
            << '\'';
    err << '\n';
    return {};
}

} // namespace

Filter::Filter(IAlphabetHandler& handler, bool back)
    : m_handler(handler)
    , m_back(back)
{
    QTextCodec* const utf8 = QTextCodec::codecForName("UTF-8");
    m_encoder.reset(utf8->makeEncoder(QTextCodec::IgnoreHeader));
    m_decoder.reset(utf8->makeDecoder());
}

QByteArray Filter::next(const QByteArray& piece)
{
    return m_back ? toBytes(m_decoder->toUnicode(piece)) : toText(piece);
}

QByteArray Filter::finish()
{
    QByteArray bytes;
    if (m_back && m_decoder->needsMoreData())
        replace(QChar::ReplacementCharacter, bytes);
    return bytes;
}

QByteArray Filter::toText(const QByteArray& piece)
{
    return m_encoder->fromUnicode(
        m_handler.Translate(QString::fromLatin1(piece.constData(), piece.size())));
}

QByteArray Filter::toBytes(const QString& text)
{
    const QString characters = m_handler.Backtranslate(text);
    QByteArray bytes;
    bytes.reserve(characters.size());
    for (int i = 0; i < characters.size(); ++i) {
        const QChar character = characters.at(i);
        if (character.unicode() <= 0xFF)
            bytes += char(character.unicode());
        else if (character.isHighSurrogate() && i + 1 < characters.size() &&
                 characters.at(i + 1).isLowSurrogate())
            replace(QChar::surrogateToUcs4(character, characters.at(++i)), bytes);
        else
            replace(character.unicode(), bytes);
    }
    return bytes;
}

void Filter::replace(uint codePoint, QByteArray& bytes)
{
    bytes += '?';
    if (m_replaced++ == 0) {
        m_firstReplaced = QStringLiteral("U+%1").arg(
            QString::number(codePoint, 16).toUpper().rightJustified(4, QLatin1Char('0')));
    }
}

int runTranslate(const FilterOptions& options, int inputDescriptor, int outputDescriptor,
                 QTextStream& err)
{
    // A reader that has gone away is met as an error of write, not as the end of the process.
    std::signal(SIGPIPE, SIG_IGN);
    err.setCodec("UTF-8");
    const auto fail = [&err](const QString& reason) {
        err << "morsehost: " << reason << '\n';
        err.flush();
        return 1;
    };

    CodecHandler handler;
    handler.SetAlphabetsDir(options.mapsDirectory);
    handler.SetDecoder(options.decoder);
    const QString name = fullName(options, handler, err);
    if (name.isEmpty()) {
        err.flush();
        return 1;
    }
    if (!handler.SetAlphabet(name)) {
        return fail(QStringLiteral("the map '%1' cannot be loaded: its name leads to no "
                                   "file that can be read (of the codec files, only ITA2.codec "
                                   "has a name that does)")
                        .arg(name));
    }

    Filter filter(handler, options.back);
    morsehost::Input input(inputDescriptor);
    morsehost::Output output(outputDescriptor);
    QByteArray buffer(piece_bytes, Qt::Uninitialized);
    for (bool more = true; more && !output.hasFailed();) {
        const auto count = static_cast<int>(input.read(buffer.data(), std::size_t(buffer.size())));
        more = count > 0;
        output.write(more ? filter.next(QByteArray::fromRawData(buffer.constData(), count))
                          : filter.finish());
    }
    if (!input.error().isEmpty())
        return fail(QStringLiteral("standard input: %1").arg(input.error()));
    if (output.isClosed())
        return 0;
    if (!output.error().isEmpty())
        return fail(QStringLiteral("standard output: %1").arg(output.error()));
    if (filter.replaced() > 0) {
        const bool isOne = filter.replaced() == 1;
        return fail(QStringLiteral("%1 cannot be written as a byte and became '?': %2")
                        .arg(morsehost::counted(filter.replaced(), "character", "characters"),
                             (isOne ? QString() : QStringLiteral("the first was ")) +
                                 filter.firstReplaced()));
    }
    return 0;
}

} // namespace translate
