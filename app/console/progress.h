// SPDX-License-Identifier: MIT
// How far a recording has been read, on a terminal.
#pragma once

namespace morsehost {

class Output;

/// Draws on standard error when that is a terminal, and nothing otherwise. Where standard output
/// is a terminal too, it draws only while no line of text is open, so that it tears none apart.
class Progress
{
public:
    Progress();
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Redraws when the whole percent has changed.
    void show(double fraction);
    /// Before text is written; `lineStaysOpen` is whether it ends within a line.
    void makeRoom(bool lineStaysOpen);

private:
    void erase();

    bool m_isWanted;
    bool m_sharesTerminal;
    bool m_lineIsOpen = false;
    bool m_isDrawn = false;
    int m_percent = -1;
};

} // namespace morsehost
