// SPDX-License-Identifier: MIT
// What holds for the table of every codec file and map file.
#pragma once

#include "fuzz/fuzzing.h"

#include "charmap/codechandler.h"
#include "tables/charactertable.h"
#include "tables/lint/lint.h"

namespace fuzzing {

/// So short a text is translated forwards without building a table.
constexpr int PIECE = 15;

/// Every byte, and some characters that are none.
inline QString allCharacters()
{
    QString text;
    for (ushort c = 0; c < 0x110; ++c)
        text += QChar(c);
    return text;
}

inline void requireTranslations(const CharacterMapping& characters)
{
    const QString text = allCharacters();
    const QString forward = translateForward(characters, text);
    require(forward.size() == text.size(), "one character for each, forward");
    for (int i = 0; i < text.size(); i += PIECE) {
        require(translateForward(characters, text.mid(i, PIECE)) == forward.mid(i, PIECE),
                "pieces are translated as the whole, forward");
    }

    QString displayed;
    for (const QChar c : characters)
        displayed += c;
    const QString back = translateBack(characters, displayed + text);
    require(back.size() == displayed.size() + text.size(), "one character for each, back");
    const QString again = translateForward(characters, back.left(displayed.size()));
    for (int i = 0; i < displayed.size(); i += PIECE) {
        require(translateBack(characters, displayed.mid(i, PIECE)) ==
                    back.left(displayed.size()).mid(i, PIECE),
                "pieces are translated as the whole, back");
    }
    for (int i = 0; i < displayed.size(); ++i) {
        const signed char key = characters.key(displayed[i]);
        if (key == 0)
            require(back[i] == displayed[i], "what only the byte 0 gives stays");
        else if (!displayed[i].isNull())
            require(again[i] == displayed[i], "what is translated back gives itself again");
    }
}

/// The table in the folder's file `name`, which the handler calls `alphabet`.
inline void requireSameHandler(const Folder& folder, const QString& alphabet,
                               const CharacterTable& table)
{
    CodecHandler handler;
    handler.SetAlphabetsDir(folder.path());
    require(handler.SetAlphabet(alphabet), "a handler can load the file");
    require(handler.TextDirectionRTL() == table.rightToLeft, "a handler knows the direction");
    const QString text = allCharacters();
    require(handler.Translate(text) == translateForward(table.characters, text),
            "a handler translates by the table");
    require(handler.Backtranslate(text) == translateBack(table.characters, text),
            "a handler translates back by the table");
}

/// Whatever the content, the findings are in order, in the file, and fit for a terminal.
inline lint::Report requireReport(const char* name, const QByteArray& bytes)
{
    lint::Report report = lint::lintBytes(QLatin1String(name), bytes);
    require(report.failure.isEmpty(), "every content can be checked");
    require(report.faults.size() <= Faults::MOST + 1, "findings are bounded");
    int line = 0;
    for (const Fault& fault : report.faults) {
        require(fault.line >= line && fault.line <= bytes.count('\n') + 1,
                "findings come in the order of the lines that there are");
        line = fault.line;
        for (const QChar c : fault.text)
            require(c.isPrint(), "findings can be printed");
    }
    return report;
}

inline void requireSameReport(const char* name, const QByteArray& bytes,
                              const CharacterTable& table)
{
    const lint::Report report = requireReport(name, bytes);
    require(report.entryCount == table.characters.size() && report.rightToLeft == table.rightToLeft,
            "the check reads what a reader reads that nobody asks for faults");
}

} // namespace fuzzing
