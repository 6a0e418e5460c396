// SPDX-License-Identifier: MIT
// What a reader of a table file notices: what the author wrote without effect, or with another
// effect than it seems. The library ignores it; a check of the file prints it.
#pragma once

#include <QChar>
#include <QString>
#include <QStringView>
#include <QVector>

struct Fault
{
    enum class Severity {
        Error,   ///< something has no effect, or another one than it seems
        Warning, ///< it works as written, but is probably not meant
    };

    int line = 0; ///< from 1; 0 concerns the file as a whole
    Severity severity = Severity::Error;
    QString text;
};

// Texts that several readers have.
inline constexpr char NO_ENTRY[] = "no entry is stored";
inline constexpr char LAST_LINE_LOST[] =
    "the last line of the file is never stored: end the file with an empty line";
inline constexpr char LATE_HEADER[] = "a header line below any other line is an entry";

/// As a message shows a part of a file, whose characters nobody has checked: in quotes, what cannot
/// be printed replaced, the end of a long text left out.
QString shown(QStringView text);
/// A character in quotes, if it can be printed, and its code point.
QString shown(QChar character);
/// A byte in hexadecimal, and its character.
QString shown(uchar byte);
/// A number, such as that of a line.
QString shown(int number);
/// A word of our own, as it is.
QString shown(QLatin1String word);

/// Collects the faults of one file, of which it keeps a bounded number: a file of garbage has
/// millions. Those that are not kept cost next to nothing.
class Faults
{
public:
    static constexpr int MOST = 1000;

    /// With `most` 0 it keeps none: for a reader that nobody asks.
    explicit Faults(int most = MOST)
        : m_most(most)
    {
    }

    /// "%1", "%2" and so on in the text stand for the arguments as `shown` renders them.
    template <typename... Arguments>
    void Error(int line, const char* text, const Arguments&... arguments)
    {
        Add(line, Fault::Severity::Error, text, arguments...);
    }
    template <typename... Arguments>
    void Warning(int line, const char* text, const Arguments&... arguments)
    {
        Add(line, Fault::Severity::Warning, text, arguments...);
    }

    /// Whether anybody asks for faults. If not, readers need not remember what only faults refer
    /// to.
    bool AreWanted() const { return m_most > 0; }

    /// Whether the next one would not be kept.
    bool IsFull() const { return m_kept.size() >= m_most; }

    /// What was kept, by ascending line. A last one says how many others there are.
    QVector<Fault> Take();

private:
    template <typename... Arguments>
    void Add(int line, Fault::Severity severity, const char* text, const Arguments&... arguments)
    {
        if (IsFull()) {
            ++m_omitted;
            return;
        }
        QString message = QString::fromUtf8(text);
        // All at once, since an argument may hold "%1" itself.
        if constexpr (sizeof...(arguments) > 0)
            message = message.arg(shown(arguments)...);
        m_kept.append({line, severity, message});
    }

    int m_most;
    QVector<Fault> m_kept;
    int m_omitted = 0;
};
