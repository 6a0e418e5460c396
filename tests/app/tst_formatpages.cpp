// SPDX-License-Identifier: MIT
// The pages on the file formats hold an example each and a table of what comes out of it. Both are
// read from the page here, so neither can go stale.
#include "app/lint/lint.h"

#include "morse/morsetranslator.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

/// A page of the documentation, taken apart.
class Page
{
public:
    explicit Page(const char* name)
    {
        QFile file(QStringLiteral(PROJECT_DATA_DIR "/../docs/formats/") + QLatin1String(name));
        if (file.open(QIODevice::ReadOnly))
            m_lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    }

    /// The content of the first fenced block.
    QByteArray example() const
    {
        const int start = m_lines.indexOf(QStringLiteral("```text"));
        const int end = m_lines.indexOf(QStringLiteral("```"), start);
        if (start < 0 || end < 0)
            return {};
        return (m_lines.mid(start + 1, end - start - 1).join(QLatin1Char('\n')) + QLatin1Char('\n'))
            .toUtf8();
    }

    /// The rows of the table that begins with this header cell; cells without their backquotes.
    QVector<QStringList> table(const QString& firstHeader) const
    {
        QVector<QStringList> rows;
        bool inside = false;
        for (const QString& line : m_lines) {
            if (line.startsWith(QStringLiteral("| %1 |").arg(firstHeader)))
                inside = true;
            else if (inside && !line.startsWith(QLatin1Char('|')))
                break;
            else if (inside && !line.startsWith(QLatin1String("|---")))
                rows += cells(line);
        }
        return rows;
    }

    bool says(const QString& line) const { return m_lines.contains(line); }

private:
    static QStringList cells(const QString& line)
    {
        QStringList cells = line.split(QLatin1Char('|'));
        cells = cells.mid(1, cells.size() - 2);
        for (QString& cell : cells) {
            cell = cell.trimmed();
            if (cell == QLatin1String("(blank)"))
                cell = QStringLiteral(" ");
            else
                cell.remove(QLatin1Char('`'));
        }
        return cells;
    }

    QStringList m_lines;
};

/// The example as a file of that name in a folder of its own.
class ExampleFile
{
public:
    ExampleFile(const Page& page, const QString& name)
        : m_path(m_folder.filePath(name))
    {
        QFile file(m_path);
        if (file.open(QIODevice::WriteOnly))
            file.write(page.example());
    }
    QString path() const { return m_path; }
    QString folder() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
    QString m_path;
};

const QString saysRightToLeft = QStringLiteral("The text runs right to left.");
const QString saysLeftToRight = QStringLiteral("The text runs left to right.");

} // namespace

class tst_FormatPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theAlphabetPageIsTrue()
    {
        const Page page("alphabet.md");
        const ExampleFile file(page, QStringLiteral("Example.mal"));
        MorseTranslator translator;
        QVERIFY(translator.SetMorseAlphabet(file.path()));
        QVERIFY(page.says(saysRightToLeft));
        QVERIFY(translator.isTextDirectionRTL());
        const auto rows = page.table(QStringLiteral("Received"));
        QCOMPARE(rows.size(), 5);
        for (const QStringList& row : rows)
            QCOMPARE(translator.DecodeMorse(row.at(0)), row.at(1));
        QVERIFY(lint::lintFile(file.path()).findings.isEmpty());
    }
};

QTEST_APPLESS_MAIN(tst_FormatPages)
#include "tst_formatpages.moc"
