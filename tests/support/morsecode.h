// SPDX-License-Identifier: MIT
// The international code, and how decoded text is compared with what was sent.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace testsupport {

/// Dots and dashes of one character (letter case ignored), null for a character without code.
const char* morseOf(char character);

/// The character of some dots and dashes, 0 when no character has that code.
char characterOf(const std::string& elements);

/// Symbol codes of the host contract to text: 0 dot, 1 dash, 3 end of character, 4 end of word;
/// a dash alone after a digit is a cut zero. Timing marks give no text; a character that has no
/// code gives `unknown`, or nothing when that is 0.
std::string textOfCodes(const std::vector<int>& codes, char unknown = 0);

/// Upper case, runs of blanks as one, none at the ends; a T alone of its character after a digit
/// reads as 0, as it will on the receiving side.
std::string asReceived(const std::string& sent);

/// The least number of characters to insert, delete or replace to make one text the other.
std::size_t editDistance(const std::string& a, const std::string& b);

/// Edit distance over the length of what was sent, both as received; 0 to 1 and above.
double characterErrorRate(const std::string& sent, const std::string& received);

} // namespace testsupport
