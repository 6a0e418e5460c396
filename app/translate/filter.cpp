// SPDX-License-Identifier: MIT
#include "app/translate/filter.h"

#include "app/translate/mapfiles.h"
#include "charmap/codechandler.h"
#include "station/io/input.h"
#include "station/io/output.h"
#include "station/io/systemtext.h"
#include "tables/displayname.h"

#include <QDir>

#include <csignal>

namespace translate {

namespace {

constexpr int piece_bytes = 64 * 1024;

struct MeantMap
{
    QString name;  ///< in full; empty when there is none or more than one
    QString error; ///< then
};

MeantMap mapMeant(const FilterOptions& options, CodecHandler& handler)
{
    if (isNoAlphabet(options.map))
        return {options.map, {}};
    const QVector<MapFile> files = mapFilesIn(QDir(options.mapsDirectory));
    const QStringList fitting = handler.AvailableAlphabets();
    QStringList names;
    for (const MapFile& file : files) {
        if (file.name.compare(options.map, Qt::CaseInsensitive) == 0)
            return {file.name, {}};
        if (file.base.compare(options.map, Qt::CaseInsensitive) == 0 &&
            (options.decoder.isEmpty() || fitting.contains(file.name)))
            names += file.name;
    }
    names.removeDuplicates();
    if (names.size() == 1)
        return {names.first(), {}};
    if (!names.isEmpty())
        return {{},
                QStringLiteral("the map '%1' may be '%2'")
                    .arg(options.map, names.join(QLatin1String("' or '")))};
    const QString decoder = options.decoder.isEmpty()
                                ? QString()
                                : QStringLiteral(" for the decoder '%1'").arg(options.decoder);
    return {{},
            QStringLiteral("%1: no map '%2'%3 (see 'morsehost maps')")
                .arg(options.mapsDirectory, options.map, decoder)};
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

QString runTranslate(const FilterOptions& options, int inputDescriptor, int outputDescriptor)
{
    // A reader that has gone away is met as an error of write, not as the end of the process.
    std::signal(SIGPIPE, SIG_IGN);

    CodecHandler handler;
    handler.SetAlphabetsDir(options.mapsDirectory);
    handler.SetDecoder(options.decoder);
    const MeantMap map = mapMeant(options, handler);
    if (!map.error.isEmpty())
        return map.error;
    if (!handler.SetAlphabet(map.name))
        return QStringLiteral("the map '%1' cannot be loaded: its name leads to no file that can "
                              "be read (of the codec files, only ITA2.codec has a name that does)")
            .arg(map.name);

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
        return QStringLiteral("standard input: %1").arg(input.error());
    if (output.isClosed())
        return {};
    if (!output.error().isEmpty())
        return QStringLiteral("standard output: %1").arg(output.error());
    if (filter.replaced() > 0) {
        const bool isOne = filter.replaced() == 1;
        return QStringLiteral("%1 cannot be written as a byte and became '?': %2")
            .arg(morsehost::counted(filter.replaced(), "character", "characters"),
                 (isOne ? QString() : QStringLiteral("the first was ")) + filter.firstReplaced());
    }
    return {};
}

} // namespace translate
