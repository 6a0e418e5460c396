// SPDX-License-Identifier: MIT
// Tells the author of an alphabet, codec or map file what the library will make of it: what is
// lost, what hides what, and what is probably not meant. The rules are those of the library's
// readers; this pass keeps the line numbers that the readers throw away.
#pragma once

#include <QByteArray>
#include <QChar>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <QVector>

namespace lint {

enum class Severity {
    Error,   ///< something that the author wrote has no effect, or another one than it seems
    Warning, ///< it works as written, but is probably not meant
};

struct Finding
{
    int line = 0; ///< from 1; 0 concerns the file as a whole
    Severity severity = Severity::Error;
    QString message;
};

/// What a file is read as; its name decides.
enum class Kind {
    Unknown,
    Alphabet, ///< ".mal"
    Codec,    ///< ".codec"
    Map,      ///< ".ita2.map", ".ascii.map", and any other ".map"
};

/// The findings, by ascending line, and what the library stores when it reads the same bytes.
struct Report
{
    QString failure; ///< why the file could not be read; empty when it could
    QVector<Finding> findings;
    bool rightToLeft = false;
    QMap<QString, QString> alphabet; ///< key to code, for an alphabet
    QMap<uchar, QChar> characters;   ///< decoder byte to display character, for codecs and maps
};

Kind kindOf(const QString& fileName);

/// Checks the content of a file. At most a thousand findings are kept; a last one tells how many
/// more there are.
Report lintBytes(Kind kind, const QByteArray& bytes);

/// Checks the file at `path`, its name included. Files above 4 MiB and what is no regular file
/// are not read; neither are files of an unknown kind.
Report lintFile(const QString& path);

/// The subcommand: writes "file:line: message" to `out` for each finding ("file: message" where
/// it concerns the whole file), and one line to `err` for each file that cannot be read. 0 when all
/// files are clean, else 1.
int runLint(const QStringList& files, QTextStream& out, QTextStream& err);

} // namespace lint
