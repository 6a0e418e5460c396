// SPDX-License-Identifier: MIT
// A filter from the characters of a decoder to readable text, and back: 8-bit characters on the
// one side, UTF-8 on the other.
#pragma once

#include "charmap/ialphabethandler.h"

#include <QByteArray>
#include <QString>
#include <QTextCodec>

#include <memory>

namespace translate {

/// Translates one stream in pieces of any length, however characters are cut by them.
class Filter
{
public:
    /// `handler` has its alphabet loaded and outlives the filter.
    Filter(IAlphabetHandler& handler, bool back);

    QByteArray next(const QByteArray& piece);
    /// What is left at the end of the input: a character that was cut off.
    QByteArray finish();

    /// Back only: characters that no byte stands for, and bytes that were no UTF-8. Each was
    /// written as "?".
    qint64 replaced() const { return m_replaced; }
    /// The first of them, as "U+0416".
    QString firstReplaced() const { return m_firstReplaced; }

private:
    QByteArray toText(const QByteArray& piece);
    QByteArray toBytes(const QString& text);
    void replace(uint codePoint, QByteArray& bytes);

    IAlphabetHandler& m_handler;
    bool m_back;
    std::unique_ptr<QTextEncoder> m_encoder;
    std::unique_ptr<QTextDecoder> m_decoder;
    qint64 m_replaced = 0;
    QString m_firstReplaced;
};

struct FilterOptions
{
    QString mapsDirectory;
    QString map;     ///< "Greek - ASCII", or "Greek" where that is one file; "None" for no map
    QString decoder; ///< may be empty; decides between two maps of one short name
    bool back = false;
};

/// The subcommand, from one file descriptor to another until the input ends or nobody reads the
/// output any more. What has come in is written before more is waited for. SIGPIPE is ignored from
/// then on, in the whole process.
///
/// What went wrong; empty when nothing did: no such map, an input that cannot be read, an output
/// that cannot be written, or (with `back`) characters that had to be replaced by "?".
QString runTranslate(const FilterOptions& options, int inputDescriptor, int outputDescriptor);

} // namespace translate
