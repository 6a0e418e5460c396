// SPDX-License-Identifier: MIT
// The base character sets on which the output of a decoder may rest.
#pragma once

#include <QString>

/// What the characters of a decoder are; the numbers are interface.
enum eBASE_CHARSET : int {
    eCHARSET_NONE = 0, ///< none, or unknown
    eCHARSET_ITA2 = 1,
    eCHARSET_ASCII = 2,
    eCHARSET_BOTH = 3, ///< the alphabets of ITA2 and of ASCII
};

/// "ITA2" and "ASCII"; "None" for every other. "None" is also the name of the empty alphabet.
const QString& baseCharsetName(eBASE_CHARSET charset);

/// The set that a letter of the decoder modules file stands for: "I", "A" and "B" for both; none
/// for every other.
eBASE_CHARSET baseCharsetOfLetter(char letter);
