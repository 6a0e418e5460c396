// SPDX-License-Identifier: MIT
#include "tables/charactertable.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

constexpr int BYTES = 256;

/// To build a direction pays in a single call once it is used about as often as it has entries.
constexpr int WORTH_A_TABLE = BYTES / 4;

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

/// The table that a thread used last, and each of its directions once it was built. Text often
/// comes in single characters, none of which would pay for that by itself.
///
/// The entries are shared with those of whoever loaded them, who cannot change them but by making
/// new ones of his own. So the same entries are the same table.
struct LatestTable
{
    CharacterMapping characters;
    Stretch forward;
    Stretch back;
};

thread_local LatestTable t_latest;

/// Null where a few characters come for another table than the last: two handlers that take turns
/// shall not build one direction after the other.
LatestTable* latestTable(const CharacterMapping& characters, const QString& text)
{
    LatestTable& latest = t_latest;
    if (latest.characters.isSharedWith(characters))
        return &latest;
    latest = {characters, {}, {}};
    return text.size() < WORTH_A_TABLE ? nullptr : &latest;
}

} // namespace

QString translateForward(const CharacterMapping& characters, const QString& text)
{
    if (characters.isEmpty())
        return text;
    LatestTable* const latest = latestTable(characters, text);
    if (!latest)
        return eachCharacter(text, [&](ushort c) { return forwardOf(characters, c); });
    if (latest->forward.written.empty())
        latest->forward = forwardStretch(characters);
    return latest->forward.Translate(text);
}

QString translateBack(const CharacterMapping& characters, const QString& text)
{
    if (characters.isEmpty())
        return text;
    LatestTable* const latest = latestTable(characters, text);
    if (!latest)
        return eachCharacter(text, [&](ushort c) { return backOf(characters, c); });
    if (latest->back.written.empty())
        latest->back = backStretch(characters);
    return latest->back.Translate(text);
}
