// SPDX-License-Identifier: MIT
#include "app/translate/filter.h"

#include "app/translate/mapfiles.h"
#include "charmap/codechandler.h"

#include <cerrno>
#include <csignal>

#include <poll.h>
#include <unistd.h>

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
        err << options.mapsDirectory << ": no map \"" << options.map << '"';
    else
        err << "the map \"" << options.map << "\" may be \""
            << names.join(QLatin1String("\" or \"")) << '"';
    err << '\n';
    return {};
}

QString systemError()
{
    return QString::fromLocal8Bit(strerror(errno));
}

bool waitFor(int descriptor, short events)
{
    pollfd waiting{descriptor, events, 0};
    return poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

/// Also for descriptors that do not block. -1 on an error, with errno set.
ssize_t readSome(int descriptor, char* buffer, size_t size)
{
    for (;;) {
        const ssize_t count = read(descriptor, buffer, size);
        if (count >= 0)
            return count;
        if (errno == EINTR)
            continue;
        if ((errno != EAGAIN && errno != EWOULDBLOCK) || !waitFor(descriptor, POLLIN))
            return -1;
    }
}

bool writeAll(int descriptor, const QByteArray& bytes)
{
    int written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            write(descriptor, bytes.constData() + written, size_t(bytes.size() - written));
        if (count >= 0)
            written += int(count);
        else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (!waitFor(descriptor, POLLOUT))
                return false;
        } else if (errno != EINTR)
            return false;
    }
    return true;
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
        return fail(QStringLiteral("the map \"%1\" cannot be loaded; only the codec file "
                                   "ITA2.codec can be chosen by name")
                        .arg(name));
    }

    Filter filter(handler, options.back);
    QByteArray buffer(piece_bytes, Qt::Uninitialized);
    for (bool more = true; more;) {
        const ssize_t count = readSome(inputDescriptor, buffer.data(), size_t(buffer.size()));
        if (count < 0)
            return fail(QStringLiteral("the input cannot be read: %1").arg(systemError()));
        more = count > 0;
        const QByteArray output =
            more ? filter.next(QByteArray::fromRawData(buffer.constData(), int(count)))
                 : filter.finish();
        if (!writeAll(outputDescriptor, output)) {
            if (errno == EPIPE)
                return 0;
            return fail(QStringLiteral("the output cannot be written: %1").arg(systemError()));
        }
    }
    if (filter.replaced() > 0) {
        return fail(QStringLiteral("%1 characters cannot be written as a byte and became \"?\", "
                                   "the first was %2")
                        .arg(filter.replaced())
                        .arg(filter.firstReplaced()));
    }
    return 0;
}

} // namespace translate
