// SPDX-License-Identifier: MIT
// Stage: words to characters of eight bits, as a decoder puts them out.
#pragma once

#include "signal/teleprinter/line.h"
#include "signal/teleprinter/parameters.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace teleprinter {

enum class Unshift {
    Never,
    OnBlank, ///< a blank brings back the letters
    /// As the sender's machine does: seen from what follows a blank without a shift, as letters
    /// and as figures, and from figure shifts that are repeated after blanks. While it is not sure,
    /// a word after a blank is put out once it shows what it is, at the latest at its end.
    WhereSenderDoes,
};

class TextReader
{
public:
    virtual ~TextReader();

    /// What can be read up to this word; first data element is bit 0. `isDoubtful`: it may have
    /// been another one, or one before it may have been missed.
    virtual std::string read(unsigned word, bool isDoubtful = false) = 0;
    /// What still waited for further words.
    virtual std::string finish();
};

/// Letters and figures of ITA2.
std::unique_ptr<TextReader> makeIta2Reader(Unshift unshift, const TextParameters& parameters = {});

/// Seven to nine data elements; a ninth is parity. An eighth that turns out to be parity, or always
/// mark, is left out; unless the parity is known, the first characters wait for that.
std::unique_ptr<TextReader> makeAsciiReader(int dataBits, std::optional<Parity> parity = {},
                                            const TextParameters& parameters = {});

} // namespace teleprinter
