// SPDX-License-Identifier: MIT
#include "tables/charactertable.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>
#include <vector>

namespace {

constexpr ushort BYTES = 256;

/// From so many characters of a text on, a table of all answers costs less than to look each of
/// them up. Backwards every look-up walks through the entries, and the table always costs less.
constexpr int WORTH_A_TABLE = 64;

ushort asByte(signed char key)
{
    return static_cast<uchar>(key);
}

ushort displayed(QChar stored)
{
    return stored.isNull() ? ushort(' ') : stored.unicode();
}

ushort forwardOf(const CharacterMapping& characters, ushort c)
{
    if (c >= BYTES)
        return c;
    const auto found = characters.constFind(static_cast<signed char>(c));
    return found == characters.cend() ? c : displayed(*found);
}

template <typename Translate>
QString eachCharacter(const QString& text, Translate translate)
{
    QString result(text.size(), Qt::Uninitialized);
    const auto* const from = reinterpret_cast<const ushort*>(text.constData());
    auto* const to = reinterpret_cast<ushort*>(result.data());
    // So short a loop is unrolled by hand, or else its speed depends on where the linker puts it.
#pragma GCC unroll 8
    for (int i = 0, size = text.size(); i < size; ++i)
        to[i] = translate(from[i]);
    return result;
}

/// What is to be written for each byte. Other characters stay.
class ForwardTable
{
public:
    explicit ForwardTable(const CharacterMapping& characters)
    {
        std::iota(m_written.begin(), m_written.end(), ushort(0));
        for (auto entry = characters.cbegin(); entry != characters.cend(); ++entry)
            m_written[asByte(entry.key())] = displayed(*entry);
    }

    QString Translate(const QString& text) const
    {
        const ushort* const written = m_written.data();
        return eachCharacter(text, [=](ushort c) { return c < BYTES ? written[c] : c; });
    }

private:
    std::array<ushort, BYTES> m_written;
};

/// Those of a stretch, in order, and a few behind it. A stretch may be long and is laid out for
/// every text, so it is done in steps that the compiler makes one instruction of.
std::vector<ushort> charactersFrom(ushort first, ushort last)
{
    constexpr std::size_t STEP = 8;
    std::vector<ushort> characters((last - first + STEP) / STEP * STEP);
    for (std::size_t start = 0; start < characters.size(); start += STEP) {
        for (std::size_t i = 0; i < STEP; ++i)
            characters[start + i] = static_cast<ushort>(first + start + i);
    }
    return characters;
}

/// What is to be written for each character from the lowest to the highest that the table can give.
/// Other characters stay.
class BackTable
{
public:
    /// Of a table that is not empty.
    explicit BackTable(const CharacterMapping& characters)
    {
        std::array<std::pair<ushort, ushort>, BYTES> entries;
        std::size_t count = 0;
        ushort highest = 0;
        for (auto entry = characters.cbegin(); entry != characters.cend(); ++entry) {
            const ushort c = entry->unicode();
            entries[count++] = {c, asByte(entry.key())};
            m_first = std::min(m_first, c);
            highest = std::max(highest, c);
        }
        m_written = charactersFrom(m_first, highest);
        // Backwards, so that of several keys the first in order is the one that stays.
        while (count-- > 0) {
            const auto [c, byte] = entries[count];
            m_written[c - std::size_t(m_first)] = byte == 0 ? c : byte;
        }
    }

    QString Translate(const QString& text) const
    {
        // In locals, which what is written cannot overlap.
        const ushort* const written = m_written.data();
        const unsigned size = static_cast<unsigned>(m_written.size());
        const ushort first = m_first;
        return eachCharacter(text, [=](ushort c) {
            const unsigned at = static_cast<unsigned>(c) - first;
            return at < size ? written[at] : c;
        });
    }

private:
    ushort m_first = 0xFFFF;
    std::vector<ushort> m_written;
};

} // namespace

void CharacterTable::Store(int line, signed char key, QChar character, Faults& faults)
{
    const int earlier = lines.value(key);
    if (earlier > 0) {
        faults.Error(line, "the byte %1 was given in line %2 already, which this line replaces",
                     static_cast<uchar>(key), earlier);
    } else if (character.unicode() == asByte(key) && key != ' ') {
        // A blank for a blank is how a table says that it means the blank.
        faults.Warning(line, "no effect: the byte %1 is shown as itself without this line",
                       static_cast<uchar>(key));
    }
    characters.insert(key, character);
    lines.insert(key, line);
}

QChar characterOfNumber(int line, int number, Faults& faults)
{
    const QChar character(static_cast<ushort>(number));
    if (number < 0 || number > 0xFFFF)
        faults.Error(line, "the character code does not fit in 16 bits: it is cut to %1",
                     character);
    else if (character.isSurrogate())
        faults.Error(line, "the character code %1 is half of a pair, not a character", character);
    return character;
}

QString translateForward(const CharacterMapping& characters, const QString& text)
{
    if (text.size() < WORTH_A_TABLE)
        return eachCharacter(text, [&](ushort c) { return forwardOf(characters, c); });
    return ForwardTable(characters).Translate(text);
}

QString translateBack(const CharacterMapping& characters, const QString& text)
{
    if (characters.isEmpty())
        return text;
    return BackTable(characters).Translate(text);
}
