// SPDX-License-Identifier: MIT
// The alphabet handler for decoders whose output rests on ITA2 or ASCII.
#pragma once

#include "charmap/basecharset.h"
#include "charmap/ialphabethandler.h"
#include "morsehandler_export.h"

#include <QDir>
#include <QMap>
#include <QString>
#include <QStringList>

/// Lists the codec files and map files of a folder that fit the current decoder, and translates
/// text through one of them, character by character in both directions.
///
/// An alphabet is shown as "Greek - ITA2" (its full name) or "Greek" (its short one). Which base
/// character set a decoder has is read from the decoder modules file, once, by the constructor.
class MORSEHANDLER_EXPORT CodecHandler : public IAlphabetHandler
{
public:
    ///@{
    /// The global type and its values, under the names that they also have as members.
    using eBASE_CHARSET = ::eBASE_CHARSET;
    static constexpr eBASE_CHARSET eCHARSET_NONE = ::eCHARSET_NONE;
    static constexpr eBASE_CHARSET eCHARSET_ITA2 = ::eCHARSET_ITA2;
    static constexpr eBASE_CHARSET eCHARSET_ASCII = ::eCHARSET_ASCII;
    static constexpr eBASE_CHARSET eCHARSET_BOTH = ::eCHARSET_BOTH;
    ///@}

    /// No folder, the alphabet "None". Reads the decoder modules file; without one every decoder
    /// has no base character set.
    CodecHandler();
    /// A copy goes on by itself from the same state.
    CodecHandler(const CodecHandler& other);
    /// Takes over the state of `other`.
    CodecHandler& operator=(const CodecHandler& other);
    ~CodecHandler() override;

    /// Lists the files of the folder, hidden ones left out; the current table stays. The empty path
    /// lists nothing.
    void SetAlphabetsDir(const QString& dir) override;
    /// Loads the alphabet of that name; a short name is completed with the base character set of
    /// the decoder, with ASCII where it has both. "None", in any letter case, is no alphabet.
    /// False when there is no such file: `Alphabet` then gives the completed name all the same,
    /// and text passes through unchanged.
    bool SetAlphabet(const QString& name) override;
    void SetDecoder(const QString& decoder) override;
    QString Alphabet() override;
    /// "None", then in ascending order the full names that fit the decoder; for the decoder "All",
    /// in any letter case, the short names of all files.
    QStringList AvailableAlphabets() override;
    bool TextDirectionRTL() override;
    /// Does nothing: no state is carried from one translation to the next.
    void ResetInternalState() override;
    /// One character for each of `input`. What is above U+00FF or not in the table stays; what the
    /// table gives the code 0 becomes a blank.
    QString Translate(const QString& input) override;
    /// One character for each of `input`. Where several bytes give one character, the first from
    /// 0x80 to 0xFF, then from 0x00 to 0x7F. What no byte but 0 gives stays.
    QString Backtranslate(const QString& input) override;

    /// The base character set of that decoder, spelled exactly; none for an unknown decoder.
    virtual eBASE_CHARSET CharsetForDecoder(const QString& decoder);

private:
    QStringList allCodecs();
    QStringList possibleCodecsForDecoder(const QString& decoder);
    QString codecNameToFile(const QString& name);
    QString fileToCodecName(const QString& file);
    bool readCodecFile(const QString& file);
    bool readMapFile(const QString& file);

    // The order of the fields is binary interface.
    QMap<int, QStringList> m_charsetFiles; ///< file names by base character set
    QMap<QString, eBASE_CHARSET> m_decoderCharsets;
    QDir m_alphabetsDir;
    QString m_decoder;
    QString m_alphabet;
    QMap<signed char, QChar> m_charMap; ///< signed also where plain char is not
    bool m_textDirectionRTL = false;
};
