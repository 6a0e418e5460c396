// SPDX-License-Identifier: MIT
// The interface through which the host drives every alphabet: a named table that turns the raw
// character output of a decoder into display text and back.
#pragma once

#include "morsehandler_export.h"

#include <QString>
#include <QStringList>

/// An alphabet handler. Call `SetAlphabetsDir`, `SetDecoder` and `SetAlphabet`, each again whenever
/// it changes, then translate. Use one handler from one thread at a time.
///
/// The host calls the virtual operations by their place in the table: this order is binary
/// interface. An implementation appends operations of its own behind the last.
class MORSEHANDLER_EXPORT IAlphabetHandler
{
public:
    virtual ~IAlphabetHandler();

    /// The folder in which the handler looks for its files. Loads no alphabet.
    virtual void SetAlphabetsDir(const QString& dir) = 0;
    /// Loads the alphabet of that name; "None" is the empty one. False when it could not be
    /// loaded: the handler then translates as if there were no table.
    virtual bool SetAlphabet(const QString& name) = 0;
    /// Sets the decoder that produces the text. Loads nothing.
    virtual void SetDecoder(const QString& decoder) = 0;
    /// Name of the current alphabet, as the handler completed it.
    virtual QString Alphabet() = 0;
    /// The names that `SetAlphabet` accepts for the current folder and decoder, "None" first.
    virtual QStringList AvailableAlphabets() = 0;
    /// Whether the text of the current alphabet runs from right to left.
    virtual bool TextDirectionRTL() = 0;
    /// Discards what is carried from one `Translate` to the next.
    virtual void ResetInternalState() = 0;
    /// Decoder output to display text.
    virtual QString Translate(const QString& input) = 0;
    /// Display text to decoder characters, as far as the table allows.
    virtual QString Backtranslate(const QString& input) = 0;

protected:
    IAlphabetHandler() = default;
    IAlphabetHandler(const IAlphabetHandler&) = default;
    IAlphabetHandler& operator=(const IAlphabetHandler&) = default;
};
