// SPDX-License-Identifier: MIT
#include "signal/teleprinter/ita2.h"

namespace teleprinter {

namespace {

struct Row
{
    char letter;
    char figure;
};

// What ITA2 has beside printed characters, as in ASCII.
constexpr char WHO_ARE_YOU = 0x05;
constexpr char BELL = 0x07;

constexpr Row TABLE[32] = {
    {0, 0},       {'E', '3'},         {'\n', '\n'}, {'A', '-'},  // 0x00
    {' ', ' '},   {'S', '\''},        {'I', '8'},   {'U', '7'},  // 0x04
    {'\r', '\r'}, {'D', WHO_ARE_YOU}, {'R', '4'},   {'J', BELL}, // 0x08
    {'N', ','},   {'F', '!'},         {'C', ':'},   {'K', '('},  // 0x0C
    {'T', '5'},   {'Z', '+'},         {'L', ')'},   {'W', '2'},  // 0x10
    {'H', '#'},   {'Y', '6'},         {'P', '0'},   {'Q', '1'},  // 0x14
    {'O', '9'},   {'B', '?'},         {'G', '&'},   {0, 0},      // 0x18
    {'M', '.'},   {'X', '/'},         {'V', '='},   {0, 0},      // 0x1C
};

} // namespace

std::uint8_t ita2Character(unsigned combination, bool figures)
{
    const Row& row = TABLE[combination & 0x1FU];
    return static_cast<std::uint8_t>(figures ? row.figure : row.letter);
}

} // namespace teleprinter
