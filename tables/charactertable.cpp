// SPDX-License-Identifier: MIT
#include "tables/charactertable.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

constexpr int BYTES = 256;

// From so many characters of a text on, a table of all answers costs less than to look each of them
// up. Backwards, a look-up walks through the entries.
constexpr int WORTH_A_TABLE = 64;
constexpr int WORTH_A_SEARCHED_TABLE = 16;

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

ushort backOf(const CharacterMapping& characters, ushort c)
{
    for (auto entry = characters.cbegin(); entry != characters.cend(); ++entry) {
        if (entry->unicode() == c)
            return entry.key() == 0 ? c : asByte(entry.key());
    }
    return c;
}

/// What is to be written for each of a stretch of characters, one behind the other. Characters
/// outside it stay.
struct Stretch
{
    ushort first = 0;
    std::vector<ushort> written;

    QString Translate(const QString& text) const
    {
        // In locals, which what is written cannot overlap.
        const ushort* const to = written.data();
        const unsigned size = static_cast<unsigned>(written.size());
        const ushort from = first;
        return eachCharacter(text, [=](ushort c) {
            const unsigned at = static_cast<unsigned>(c) - from;
            return at < size ? to[at] : c;
        });
    }
};

/// All bytes.
Stretch forwardStretch(const CharacterMapping& characters)
{
    Stretch forward;
    forward.written.resize(BYTES);
    std::iota(forward.written.begin(), forward.written.end(), ushort(0));
    for (auto entry = characters.cbegin(); entry != characters.cend(); ++entry)
        forward.written[asByte(entry.key())] = displayed(*entry);
    return forward;
}

/// From the lowest to the highest character that the table can give.
Stretch backStretch(const CharacterMapping& characters)
{
    const auto [lowest, highest] = std::minmax_element(characters.cbegin(), characters.cend());
    Stretch back;
    back.first = lowest->unicode();
    back.written.resize(highest->unicode() - back.first + 1u);
    std::iota(back.written.begin(), back.written.end(), back.first);
    // Backwards, so that of several keys the first in order is the one that stays.
    for (auto entry = characters.cend(); entry != characters.cbegin();) {
        --entry;
        const ushort c = entry->unicode();
        back.written[c - back.first] = entry.key() == 0 ? c : asByte(entry.key());
    }
    return back;
}

} // namespace

void CharacterTable::Store(int line, signed char key, QChar character, Faults& faults)
{
    const int earlier = lines.value(key);
    if (earlier > 0) {
        faults.Error(line, "the byte %1 was given in line %2 already, which this line replaces",
                     static_cast<uchar>(key), earlier);
    } else if (character.unicode() == asByte(key) && key != ' ') {
        // A blank for a blank is how a table says that it means the blank.
        faults.Warning(line, "the byte %1 shows as itself without this line, too",
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
    return forwardStretch(characters).Translate(text);
}

QString translateBack(const CharacterMapping& characters, const QString& text)
{
    if (characters.isEmpty())
        return text;
    if (text.size() < WORTH_A_SEARCHED_TABLE)
        return eachCharacter(text, [&](ushort c) { return backOf(characters, c); });
    return backStretch(characters).Translate(text);
}
