// SPDX-License-Identifier: MIT
// The pages on the file formats hold an example each and a table of what comes out of it. Both are
// read from the page here, so neither can go stale.
#include "tables/lint/lint.h"

#include "charmap/codechandler.h"
#include "host/standin/configuration.h"
#include "morse/morsetranslator.h"

#include "support/files.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

/// A page of the documentation, taken apart.
class Page
{
public:
    explicit Page(const char* name)
    {
        const QString path = QStringLiteral(PROJECT_DATA_DIR "/../docs/formats/");
        m_lines = QString::fromUtf8(contentOf(path + QLatin1String(name))).split(QLatin1Char('\n'));
    }

    /// The content of the first fenced block.
    QByteArray example() const
    {
        const int start = m_lines.indexOf(QRegularExpression(QStringLiteral("^```text file=.*")));
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
        writeFile(m_path, page.example());
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
    void initTestCase()
    {
        // A process asks for the name of its decoder modules file once.
        setConfigurationValue(QString(), QStringLiteral("DecoderModulesFile"), m_modules.path());
    }

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
        QVERIFY(lint::lintFile(file.path()).faults.isEmpty());
    }

    void theMapPageIsTrue()
    {
        const Page page("map.md");
        const ExampleFile file(page, QStringLiteral("Example.ascii.map"));
        CodecHandler handler;
        handler.SetAlphabetsDir(file.folder());
        QVERIFY(handler.SetAlphabet(QStringLiteral("Example - ASCII")));
        QVERIFY(page.says(saysRightToLeft));
        QVERIFY(handler.TextDirectionRTL());
        checkCharacters(page, handler, 5);
        // The line without a value is there to show what it does: lint says so too.
        QCOMPARE(lint::lintFile(file.path()).faults.size(), 2);
    }

    void theCodecPageIsTrue()
    {
        const Page page("codec.md");
        const ExampleFile file(page, QStringLiteral("ITA2.codec"));
        CodecHandler handler;
        handler.SetAlphabetsDir(file.folder());
        QVERIFY(handler.SetAlphabet(QStringLiteral("ITA2 - ITA2")));
        QVERIFY(page.says(saysLeftToRight));
        QVERIFY(!handler.TextDirectionRTL());
        checkCharacters(page, handler, 5);
    }

    void theDecoderModulesPageIsTrue()
    {
        const Page page("decodermodules.md");
        CodecHandler handler;
        handler.SetAlphabetsDir(QStringLiteral(PROJECT_DATA_DIR "/maps"));
        const auto rows = page.table(QStringLiteral("Decoder"));
        QCOMPARE(rows.size(), 4);
        for (const QStringList& row : rows) {
            handler.SetDecoder(row.at(0));
            const QStringList maps = handler.AvailableAlphabets();
            const QString offered = row.at(2);
            const bool both = offered == QLatin1String("both");
            QCOMPARE(maps.contains(QStringLiteral("Russian - ITA2")),
                     both || offered == QLatin1String("ITA2"));
            QCOMPARE(maps.contains(QStringLiteral("Greek - ASCII")),
                     both || offered == QLatin1String("ASCII"));
            QCOMPARE(maps.size() == 1, offered == QLatin1String("none"));
        }
    }

private:
    static void checkCharacters(const Page& page, CodecHandler& handler, int count)
    {
        const auto rows = page.table(QStringLiteral("Decoder"));
        QCOMPARE(rows.size(), count);
        for (const QStringList& row : rows)
            QCOMPARE(handler.Translate(row.at(0)), row.at(1));
    }

    ExampleFile m_modules{Page("decodermodules.md"), QStringLiteral("decodermodules.txt")};
};

QTEST_APPLESS_MAIN(tst_FormatPages)
#include "tst_formatpages.moc"
