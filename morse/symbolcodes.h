// SPDX-License-Identifier: MIT
// The codes in which the host's Morse demodulator reports what it hears.
#pragma once

/// A code as it is stored. Every value that is not listed below is unknown.
using MorseSymbolCode = short;

/// Only these bits of a code count where a whole number comes in: 0x81 is a dash, too.
constexpr int MORSE_SYMBOL_MASK = 0x7F;

/// The codes that have a meaning.
enum MORSE_SYMBOL : MorseSymbolCode {
    eSYMBOL_DOT = 0,
    eSYMBOL_DASH = 1,
    eSYMBOL_NEW_CHAR = 3, ///< the gap that ends a character
    eSYMBOL_NEW_WORD = 4, ///< the gap that ends a word
    eSYMBOL_NEW_LINE = 5,
    eSYMBOL_DOT_TOO_SHORT = 64,
    eSYMBOL_DASH_TOO_LONG = 65,
    eSYMBOL_PAUSE_TOO_SHORT = 66,
};
