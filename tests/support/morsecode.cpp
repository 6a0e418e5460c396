// SPDX-License-Identifier: MIT
#include "support/morsecode.h"

#include "morse/symbolcodes.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace testsupport {

namespace {

struct Row
{
    char character;
    const char* elements;
};

constexpr Row TABLE[] = {
    {'A', ".-"},      {'B', "-..."},   {'C', "-.-."},    {'D', "-.."},    {'E', "."},
    {'F', "..-."},    {'G', "--."},    {'H', "...."},    {'I', ".."},     {'J', ".---"},
    {'K', "-.-"},     {'L', ".-.."},   {'M', "--"},      {'N', "-."},     {'O', "---"},
    {'P', ".--."},    {'Q', "--.-"},   {'R', ".-."},     {'S', "..."},    {'T', "-"},
    {'U', "..-"},     {'V', "...-"},   {'W', ".--"},     {'X', "-..-"},   {'Y', "-.--"},
    {'Z', "--.."},    {'1', ".----"},  {'2', "..---"},   {'3', "...--"},  {'4', "....-"},
    {'5', "....."},   {'6', "-...."},  {'7', "--..."},   {'8', "---.."},  {'9', "----."},
    {'0', "-----"},   {'.', ".-.-.-"}, {',', "--..--"},  {'/', "-..-."},  {'+', ".-.-."},
    {'=', "-...-"},   {'?', "..--.."}, {'(', "-.--."},   {')', "-.--.-"}, {'-', "-....-"},
    {'"', ".-..-."},  {'_', "..--.-"}, {'\'', ".----."}, {':', "---..."}, {';', "-.-.-."},
    {'$', "...-..-"}, {'@', ".--.-."}, {'!', "-.-.--"},
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

const char* morseOf(char character)
{
    const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    for (const Row& row : TABLE) {
        if (row.character == upper)
            return row.elements;
    }
    return nullptr;
}

char characterOf(const std::string& elements)
{
    for (const Row& row : TABLE) {
        if (elements == row.elements)
            return row.character;
    }
    return 0;
}

std::string textOfCodes(const std::vector<int>& codes, char unknown)
{
    std::string text;
    std::string elements;
    bool afterDigit = false;
    const auto endCharacter = [&] {
        char character = characterOf(elements);
        if (afterDigit && elements == "-")
            character = '0';
        afterDigit = isDigit(character);
        if (character == 0 && !elements.empty())
            character = unknown;
        if (character != 0)
            text += character;
        elements.clear();
    };
    for (const int code : codes) {
        switch (static_cast<MORSE_SYMBOL>(code)) {
        case eSYMBOL_DOT:
            elements += '.';
            break;
        case eSYMBOL_DASH:
            elements += '-';
            break;
        case eSYMBOL_NEW_CHAR:
            endCharacter();
            break;
        case eSYMBOL_NEW_WORD:
        case eSYMBOL_NEW_LINE:
            if (!elements.empty())
                endCharacter();
            text += ' ';
            if (code == eSYMBOL_NEW_LINE)
                afterDigit = false;
            break;
        case eSYMBOL_DOT_TOO_SHORT:
        case eSYMBOL_DASH_TOO_LONG:
        case eSYMBOL_PAUSE_TOO_SHORT:
            break;
        }
    }
    if (!elements.empty())
        endCharacter();
    return text;
}

std::string asReceived(const std::string& sent)
{
    std::string text;
    bool afterDigit = false;
    for (const char c : sent) {
        if (std::isspace(static_cast<unsigned char>(c))) {
            if (!text.empty() && text.back() != ' ')
                text += ' ';
            continue;
        }
        char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        if (afterDigit && upper == 'T')
            upper = '0';
        afterDigit = isDigit(upper);
        text += upper;
    }
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

std::size_t editDistance(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row[b.size()];
}

double characterErrorRate(const std::string& sent, const std::string& received)
{
    const std::string a = asReceived(sent);
    const std::string b = asReceived(received);
    if (a.empty())
        return b.empty() ? 0.0 : 1.0;
    return static_cast<double>(editDistance(a, b)) / static_cast<double>(a.size());
}

} // namespace testsupport
