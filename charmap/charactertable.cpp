// SPDX-License-Identifier: MIT
#include "charmap/charactertable.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

namespace {

constexpr int BYTES = 256;

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

ushort backOf(const CharacterMapping& characters, ushort c)
{
    for (auto entry = characters.cbegin(); entry != characters.cend(); ++entry) {
        if (entry->unicode() == c)
            return entry.key() == 0 ? c : asByte(entry.key());
    }
    return c;
}

template <typename Translate>
QString eachCharacter(const QString& text, Translate translate)
{
    QString result(text.size(), Qt::Uninitialized);
    const auto* const from = reinterpret_cast<const ushort*>(text.constData());
    auto* const to = reinterpret_cast<ushort*>(result.data());
    for (int i = 0, size = text.size(); i < size; ++i)
        to[i] = translate(from[i]);
    return result;
}

} // namespace

QString translateForward(const CharacterMapping& characters, const QString& text)
{
    // A table pays once it is used about as often as it has entries.
    if (text.size() < BYTES / 4)
        return eachCharacter(text, [&](ushort c) { return forwardOf(characters, c); });

    std::array<ushort, BYTES> table;
    std::iota(table.begin(), table.end(), ushort(0));
    for (auto entry = characters.cbegin(); entry != characters.cend(); ++entry)
        table[asByte(entry.key())] = displayed(*entry);
    return eachCharacter(text, [&table](ushort c) { return c < BYTES ? table[c] : c; });
}

QString translateBack(const CharacterMapping& characters, const QString& text)
{
    if (text.size() < BYTES / 4 || characters.isEmpty())
        return eachCharacter(text, [&](ushort c) { return backOf(characters, c); });

    // From the lowest to the highest character that the table can give.
    const auto [lowest, highest] = std::minmax_element(characters.cbegin(), characters.cend());
    const ushort first = lowest->unicode();
    std::vector<ushort> table(highest->unicode() - first + 1u);
    std::iota(table.begin(), table.end(), first);
    // Backwards, so that of several keys the first in order is the one that stays.
    for (auto entry = characters.cend(); entry != characters.cbegin();) {
        --entry;
        const ushort c = entry->unicode();
        table[c - first] = entry.key() == 0 ? c : asByte(entry.key());
    }
    const ushort* const keys = table.data();
    const unsigned size = static_cast<unsigned>(table.size());
    return eachCharacter(text, [=](ushort c) {
        const unsigned at = static_cast<unsigned>(c) - first;
        return at < size ? keys[at] : c;
    });
}
