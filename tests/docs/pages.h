// SPDX-License-Identifier: MIT
// The project's Markdown pages, taken apart: fenced blocks, prose, links, headings.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace pages {

/// A fenced block. The words behind its opening fence say what it is and how it is checked:
///
/// - `console`: a session. Lines that begin with "$ " are run (a line that ends in a backslash goes
///   on, and so does a here-document), all others are what is printed; "…" stands for any text. A
///   command that fails is followed by "$ echo $?".
/// - `sh`: commands to paste, which have to succeed; an `output` block behind it is what they
/// print.
/// - `sh bare-machine`: commands that turn a bare machine into one on which the page can be
/// followed, run by scripts/try-packages.sh, which has one to spare; elsewhere only looked at.
/// - `sh not-run: REASON`: commands that no test can run; what they name has to exist.
/// - `cpp path=FILE`: lines of that file; other kinds may be taken from one too.
/// - `xml schema=FILE`: a document that is valid.
/// - `KIND file=NAME`: the content of a file that later blocks of the page use.
/// - `text WHAT`: none of these, and what it is instead.
///
/// The blocks of a page run in their order, in a folder of their own: one that looks like a clone,
/// or an empty one on a bare machine.
struct Block
{
    int line; ///< of its opening fence, from 1
    QString info;
    QStringList lines;

    QString kind() const;
    /// What stands behind `name=` in the info string; empty when it is not there.
    QString attribute(const QString& name) const;
    QString content() const;
};

struct Page
{
    QString name; ///< path below the project's folder
    QVector<Block> blocks;
    QStringList prose;      ///< all other lines, those of blocks left empty
    QStringList complaints; ///< what cannot be taken apart, such as blocks without a fence
};

Page parse(const QString& name, const QString& text);
/// Every page of the project, by name.
QVector<Page> readAll(const QString& projectFolder);

/// What the page calls places of its own: the anchors of its headings.
QStringList anchors(const Page& page);
/// Targets of the links in the prose, with their line.
QVector<QPair<int, QString>> links(const Page& page);
/// What stands between backquotes in the prose, with its line.
QVector<QPair<int, QString>> codeSpans(const Page& page);

/// The commands of a session and what it shows for each.
struct Command
{
    QString text;
    QString output;
};
QVector<Command> commands(const Block& session);
/// Whether a text is what is expected, "…" standing for any text; blanks at the ends of lines do
/// not count.
bool isAsShown(const QString& text, const QString& expected);

} // namespace pages
