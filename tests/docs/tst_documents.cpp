// SPDX-License-Identifier: MIT
// What the pages show is what happens: their sessions are run, their code is that of the examples,
// their links lead somewhere. tests/docs/pages.h tells how a block says what it is.
#include "docs/pages.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

using pages::Block;
using pages::Page;

namespace {

const QDir project(QStringLiteral(PROJECT_DIR));

QString contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString at(const Page& page, int line)
{
    return QStringLiteral("%1:%2: ").arg(page.name).arg(line);
}

/// A folder that looks like a clone with its builds, in which pages may leave files behind.
class Clone
{
public:
    Clone()
    {
        for (const QString& name : project.entryList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            if (name != QLatin1String("build"))
                QFile::link(project.filePath(name), m_folder.filePath(name));
        }
        const QDir folder(m_folder.path());
        for (const char* preset : {"build/dev", "build/release"}) {
            folder.mkpath(QLatin1String(preset));
            const QDir build(folder.filePath(QLatin1String(preset)));
            QFile::link(QStringLiteral(PROGRAMS_DIR), build.filePath(QStringLiteral("bin")));
            QFile::link(QStringLiteral(LIBRARIES_DIR), build.filePath(QStringLiteral("lib")));
        }
        folder.mkpath(QStringLiteral(".programs"));
        const QDir programs(folder.filePath(QStringLiteral(".programs")));
        QFile::link(QStringLiteral(PROGRAMS_DIR "/morsehost"),
                    programs.filePath(QStringLiteral("morsehost")));
        for (const char* receiver : {"arecord", "rtl_fm", "nc"})
            QFile::link(project.filePath(QStringLiteral("tests/docs/receiver.sh")),
                        programs.filePath(QLatin1String(receiver)));
        m_environment.insert(QStringLiteral("PATH"),
                             programs.path() + QLatin1Char(':') +
                                 m_environment.value(QStringLiteral("PATH")));
        m_environment.insert(QStringLiteral("HOME"), m_folder.path());
        m_environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        m_environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
    }

    void write(const QString& name, const QString& content) const
    {
        QFile file(m_folder.filePath(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(content.toUtf8());
    }

    QString pathOf(const QString& name) const { return m_folder.filePath(name); }

    /// What a script prints on both channels.
    QString run(const QString& script, int* status, const QStringList& options = {}) const
    {
        QProcess shell;
        shell.setWorkingDirectory(m_folder.path());
        shell.setProcessEnvironment(m_environment);
        shell.setProcessChannelMode(QProcess::MergedChannels);
        shell.setStandardInputFile(QProcess::nullDevice());
        shell.start(QStringLiteral("bash"), options + QStringList{QStringLiteral("-c"), script});
        if (!shell.waitForFinished(240000))
            shell.kill();
        *status = shell.exitStatus() == QProcess::NormalExit ? shell.exitCode() : -1;
        return QString::fromUtf8(shell.readAllStandardOutput());
    }

private:
    QTemporaryDir m_folder;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
};

QString difference(const QString& what, const QString& shown, const QString& printed)
{
    return QStringLiteral("%1\n--- shown:\n%2\n--- printed:\n%3").arg(what, shown, printed);
}

QStringList checkSession(const Page& page, const Block& block, const Clone& clone)
{
    // After each command its status, behind a sign that no output holds.
    const auto commands = pages::commands(block);
    QString script;
    for (const pages::Command& command : commands)
        script += command.text + QStringLiteral("\n{ s=$?; printf '\\001%d\\n' $s; (exit $s); }\n");
    int status = 0;
    const QStringList pieces = clone.run(script, &status).split(QChar(1));
    QStringList complaints;
    if (commands.isEmpty() || !block.lines.first().startsWith(QLatin1String("$ ")))
        return {at(page, block.line) + QStringLiteral("a session begins with a command")};
    if (pieces.size() != commands.size() + 1)
        return {at(page, block.line) + QStringLiteral("the session broke off:\n") +
                pieces.join(QLatin1Char('\n'))};
    for (int i = 0; i < commands.size(); ++i) {
        QString output = pieces.at(i);
        if (i > 0)
            output = output.section(QLatin1Char('\n'), 1);
        const int ended = pieces.at(i + 1).section(QLatin1Char('\n'), 0, 0).toInt();
        if (!pages::isAsShown(output, commands.at(i).output))
            complaints += difference(at(page, block.line) + commands.at(i).text,
                                     commands.at(i).output, output);
        const bool isAsked =
            i + 1 < commands.size() && commands.at(i + 1).text == QLatin1String("echo $?");
        if (ended != 0 && !isAsked)
            complaints += at(page, block.line) + QStringLiteral("fails with %1: ").arg(ended) +
                          commands.at(i).text;
    }
    return complaints;
}

QStringList checkNotRun(const Page& page, const Block& block, const Clone& clone)
{
    static const QRegularExpression program(
        QStringLiteral("(?:^|[\\s;|(])((?:scripts|\\.ci)/[\\w.-]+)"));
    static const QRegularExpression built(QStringLiteral("build/\\w+/bin/(\\w+)"));
    QStringList complaints;
    int status = 0;
    const QString syntax = clone.run(block.content(), &status, {QStringLiteral("-n")});
    if (status != 0)
        complaints += at(page, block.line) + syntax;
    auto scripts = program.globalMatch(block.content());
    while (scripts.hasNext()) {
        const QString name = scripts.next().captured(1);
        if (!QFileInfo(project.filePath(name)).isExecutable())
            complaints += at(page, block.line) + name + QStringLiteral(" is no program");
    }
    auto targets = built.globalMatch(block.content());
    while (targets.hasNext()) {
        const QString name = targets.next().captured(1);
        int found = 0;
        clone.run(
            QStringLiteral("grep -rqw --exclude-dir=build --include=CMakeLists.txt -e '%1' '%2' ||"
                           "compgen -G '%2/*/%1.cpp' || compgen -G '%2/*/*/%1.cpp'")
                .arg(name, project.path()),
            &found);
        if (found != 0)
            complaints += at(page, block.line) + name + QStringLiteral(" is built nowhere");
    }
    return complaints;
}

QString dedented(const QString& text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString& line : lines)
        line = line.trimmed();
    return lines.join(QLatin1Char('\n')).trimmed();
}

QStringList checkCode(const Page& page, const Block& block)
{
    const QString path = block.attribute(QStringLiteral("path"));
    const QString all = contentOf(project.filePath(path));
    if (all.isEmpty())
        return {at(page, block.line) + QStringLiteral("code comes from a file (path=FILE)")};
    const QString code = QLatin1Char('\n') + dedented(block.content()) + QLatin1Char('\n');
    if (!(QLatin1Char('\n') + dedented(all) + QLatin1Char('\n')).contains(code))
        return {at(page, block.line) + QStringLiteral("is not to be found in ") + path};
    return {};
}

QStringList checkXml(const Page& page, const Block& block, const Clone& clone)
{
    const QString schema = block.attribute(QStringLiteral("schema"));
    clone.write(QStringLiteral("block.xml"), block.content());
    int status = 0;
    const QString said =
        clone.run(QStringLiteral("xmllint --noout --schema '%1' block.xml").arg(schema), &status);
    return status == 0 ? QStringList() : QStringList{at(page, block.line) + said};
}

QStringList checkShell(const Page& page, const Block& block, const Block* next, const Clone& clone)
{
    int status = 0;
    const QString output =
        clone.run(block.content(), &status, {QStringLiteral("-euo"), QStringLiteral("pipefail")});
    QStringList complaints;
    if (status != 0)
        complaints += at(page, block.line) + QStringLiteral("fails:\n") + output;
    if (next && next->kind() == QLatin1String("output") &&
        !pages::isAsShown(output, next->content()))
        complaints += difference(at(page, next->line), next->content(), output);
    return complaints;
}

/// Everything that is wrong with the blocks of a page.
QStringList checkBlocks(const Page& page, const Clone& clone)
{
    QStringList complaints = page.complaints;
    for (int i = 0; i < page.blocks.size(); ++i) {
        const Block& block = page.blocks.at(i);
        const Block* const next = i + 1 < page.blocks.size() ? &page.blocks.at(i + 1) : nullptr;
        const QString kind = block.kind();
        const QString reason = block.info.section(QLatin1Char(' '), 1).trimmed();
        if (!block.attribute(QStringLiteral("file")).isEmpty())
            clone.write(block.attribute(QStringLiteral("file")), block.content());
        else if (kind == QLatin1String("console"))
            complaints += checkSession(page, block, clone);
        else if (kind == QLatin1String("sh") && reason.startsWith(QLatin1String("not-run: ")))
            complaints += checkNotRun(page, block, clone);
        else if (kind == QLatin1String("sh") && reason.isEmpty())
            complaints += checkShell(page, block, next, clone);
        else if (kind == QLatin1String("output") && i > 0 &&
                 page.blocks.at(i - 1).kind() == QLatin1String("sh"))
            continue; // compared with what the commands before it printed
        else if (kind == QLatin1String("cpp") || !block.attribute(QStringLiteral("path")).isEmpty())
            complaints += checkCode(page, block);
        else if (kind == QLatin1String("xml") &&
                 !block.attribute(QStringLiteral("schema")).isEmpty())
            complaints += checkXml(page, block, clone);
        else if (kind != QLatin1String("text") || reason.isEmpty())
            complaints +=
                at(page, block.line) +
                QStringLiteral("a block of which nothing says what it is: '%1'").arg(block.info);
    }
    return complaints;
}

QStringList checkLinks(const Page& page, const QVector<Page>& all)
{
    QStringList complaints;
    for (const auto& [line, target] : pages::links(page)) {
        if (target.contains(QLatin1String("://")))
            continue;
        const QString file = target.section(QLatin1Char('#'), 0, 0);
        const QString anchor = target.section(QLatin1Char('#'), 1);
        const QString folder = QFileInfo(page.name).path();
        const QString name =
            file.isEmpty() ? page.name : QDir::cleanPath(folder + QLatin1Char('/') + file);
        if (!QFileInfo::exists(project.filePath(name)) && !file.isEmpty())
            complaints += at(page, line) + target + QStringLiteral(" does not exist");
        if (anchor.isEmpty())
            continue;
        const Page* to = name == page.name ? &page : nullptr;
        for (const Page& other : all)
            to = !to && other.name == name ? &other : to;
        if (!to || !pages::anchors(*to).contains(anchor))
            complaints += at(page, line) + target + QStringLiteral(": no such heading");
    }
    return complaints;
}

QStringList checkFileNames(const Page& page)
{
    static const QRegularExpression path(QStringLiteral("^[\\w.-]+(/[\\w.-]+)*/?$"));
    QStringList complaints;
    for (const auto& [line, text] : pages::codeSpans(page)) {
        const QString top = text.section(QLatin1Char('/'), 0, 0);
        if (!text.contains(QLatin1Char('/')) || !path.match(text).hasMatch() ||
            !project.exists(top) || top == QLatin1String("build"))
            continue;
        if (!project.exists(text))
            complaints += at(page, line) + text + QStringLiteral(" does not exist");
    }
    return complaints;
}

/// Every way of calling the program that a page shows, wherever it stands.
QVector<QPair<int, QString>> calls(const Page& page)
{
    static const QRegularExpression call(
        QStringLiteral("(?:^|[\\s/(])morsehost ((?:\\\\\\n|[^|;&<>\\n])+)"));
    QVector<QPair<int, QString>> texts = pages::codeSpans(page);
    for (const Block& block : page.blocks) {
        if (block.kind() == QLatin1String("sh"))
            texts += qMakePair(block.line, block.content());
        for (const pages::Command& command : pages::commands(block))
            texts += qMakePair(block.line, command.text);
    }
    QVector<QPair<int, QString>> found;
    for (const auto& [line, text] : qAsConst(texts)) {
        auto matches = call.globalMatch(text);
        while (matches.hasNext())
            found += qMakePair(line, matches.next().captured(1));
    }
    return found;
}

QStringList checkCalls(const Page& page, const Clone& clone)
{
    static const QRegularExpression option(QStringLiteral("(?:^|[\\s\\[])(--[a-z-]+)"));
    static QMap<QString, QString> helps;
    QStringList complaints;
    for (const auto& [line, text] : calls(page)) {
        const QString command = text.section(QRegularExpression(QStringLiteral("[\\s,.]")), 0, 0);
        if (command.isEmpty() || command == QLatin1String("COMMAND") ||
            command.startsWith(QLatin1Char('-')))
            continue;
        if (!helps.contains(command)) {
            int status = 0;
            const QString help =
                clone.run(QStringLiteral("morsehost %1 --help").arg(command), &status);
            helps[command] = status == 0 ? help : QString();
        }
        if (helps[command].isEmpty())
            complaints += at(page, line) + QStringLiteral("no command '%1'").arg(command);
        auto options = option.globalMatch(text);
        while (options.hasNext()) {
            const QString name = options.next().captured(1);
            if (!helps[command].contains(QRegularExpression(name + QStringLiteral("\\s"))))
                complaints +=
                    at(page, line) + QStringLiteral("'%1' has no option '%2'").arg(command, name);
        }
    }
    return complaints;
}

// Qt Test cuts long messages.
QByteArray asMessage(const QStringList& complaints)
{
    for (const QString& complaint : complaints)
        qWarning("%s", complaint.toUtf8().constData());
    return QByteArray::number(complaints.size()) + " complaints, shown above";
}

} // namespace

class tst_Documents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_pages.size() > 15);
        int blocks = 0;
        for (const Page& page : m_pages)
            blocks += page.blocks.size();
        QVERIFY(blocks > 30);
    }

    void whatAPageShowsIsTrue_data() { everyPage(); }
    void whatAPageShowsIsTrue()
    {
        QFETCH(int, index);
        const Clone clone;
        const QStringList complaints = checkBlocks(m_pages.at(index), clone);
        QVERIFY2(complaints.isEmpty(), asMessage(complaints).constData());
    }

    void whatAPageNamesExists_data() { everyPage(); }
    void whatAPageNamesExists()
    {
        QFETCH(int, index);
        const Clone clone;
        const Page& page = m_pages.at(index);
        const QStringList complaints =
            checkLinks(page, m_pages) + checkFileNames(page) + checkCalls(page, clone);
        QVERIFY2(complaints.isEmpty(), asMessage(complaints).constData());
    }

    void theListOfPagesHasThemAll()
    {
        QStringList listed;
        for (const Page& page : m_pages) {
            if (page.name != QLatin1String("docs/README.md"))
                continue;
            for (const auto& link : pages::links(page))
                listed += QDir::cleanPath(QStringLiteral("docs/") +
                                          link.second.section(QLatin1Char('#'), 0, 0));
        }
        for (const Page& page : m_pages) {
            if (page.name.startsWith(QLatin1String("docs/")) &&
                page.name != QLatin1String("docs/README.md"))
                QVERIFY2(listed.contains(page.name), qPrintable(page.name));
        }
    }

    void thePictureNamesFoldersThatExist()
    {
        const QString picture =
            contentOf(project.filePath(QStringLiteral("docs/architecture.svg")));
        static const QRegularExpression folder(QStringLiteral("\\b([a-z]+/)+(?=[<)])"));
        auto matches = folder.globalMatch(picture);
        int count = 0;
        for (; matches.hasNext(); ++count) {
            const QString name = matches.next().captured();
            QVERIFY2(project.exists(name), qPrintable(name));
        }
        QCOMPARE(count, 7);
    }

    void everyPublicHeaderHasItsApiPages()
    {
        const QString pages = contentOf(project.filePath(QStringLiteral("docs/Doxyfile")));
        const QStringList headers =
            contentOf(project.filePath(QStringLiteral("tests/install/headers.list")))
                .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QVERIFY(headers.contains(QStringLiteral("session/morsehandler.h")));
        for (const QString& header : headers) {
            const bool isOfFolder = header.startsWith(QLatin1String("host/")) &&
                                    header.count(QLatin1Char('/')) == 1; // named as a whole
            const bool isGenerated = header == QLatin1String("morsehandler_export.h");
            QVERIFY2(isOfFolder || isGenerated || pages.contains(header), qPrintable(header));
        }
    }

    // What would go unnoticed if the checks above were blind.
    void whatIsWrongIsFound_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("complaint");
        const auto row = [](const char* name, const char* text, const char* complaint) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(complaint);
        };
        row("a true session",
            "```console\n$ echo a\na\n$ cat <<'END'\nb\nEND\nb\n$ printf c\nc\n```", "");
        row("any text", "```console\n$ echo abc; echo d\na…c\n…\n```", "");
        row("another output", "```console\n$ echo a\nb\n```", "p.md:1: echo a");
        row("too little output", "```console\n$ echo a; echo b\na\n```", "p.md:1: echo a");
        row("too much output", "```console\n$ true\na\n```", "p.md:1: true");
        row("a failure in silence", "```console\n$ false\n```", "fails with 1");
        row("a failure that is shown", "```console\n$ false\n$ echo $?\n1\n```", "");
        row("a session that ends early", "```console\n$ exit 0\n$ echo a\na\n```", "broke off");
        row("no command", "```console\nmorsehost\n```", "begins with a command");
        row("commands", "```sh\necho a\n```\n\n```output\na\n```", "");
        row("commands that fail", "```sh\nfalse | true\n```", "p.md:1: fails");
        row("commands with another output", "```sh\necho a\n```\n\n```output\nb\n```", "p.md:5: ");
        row("output of nothing", "```output\na\n```", "nothing says what it is");
        row("not run, with a reason", "```sh not-run: takes long\nscripts/test.sh\n```", "");
        row("not run, without one", "```sh not-run\nscripts/test.sh\n```",
            "nothing says what it is");
        row("not run, and no such script", "```sh not-run: long\nscripts/nothing.sh\n```",
            "is no program");
        row("not run, and nobody builds it", "```sh not-run: long\nbuild/dev/bin/no_such\n```",
            "built nowhere");
        row("not run, and no shell", "```sh not-run: long\nif\n```", "p.md:1: ");
        row("code of a file", "```cpp path=tests/docs/pages.h\nstruct Block\n{\n```", "");
        row("code of no file", "```cpp\nstruct Block\n```", "code comes from a file");
        row("code that has changed", "```cpp path=tests/docs/pages.h\nstruct Bloc\n```",
            "not to be found");
        row("a file, and its use", "```text file=a.txt\nx\n```\n\n```console\n$ cat a.txt\nx\n```",
            "");
        row("xml that is not valid", "```xml schema=data/schema/tavikresultdata.xsd\n<a/>\n```",
            "block.xml");
        row("text with a reason", "```text picture\na\n```", "");
        row("text without one", "```text\na\n```", "nothing says what it is");
        row("no words at all", "```\na\n```", "nothing says what it is");
        row("no fence", "Text.\n\n    code\n", "p.md:3: a block without a fence");
        row("a gap", "Figures: @FIGURES@\n", "p.md:1: something is left to fill in");
        row("a paragraph in a list", "- Text.\n\n    more\n", "");
        row("a fence in a list", "- Text.\n\n  ```sh\n  a\n  ```\n",
            "p.md:3: a fence that is indented");
        row("no end", "```text picture\na", "does not end");
        row("a link", "[a](README.md) [b](docs/architecture.md#symbol-codes) [`c`](#d)\n\n## `D`\n",
            "");
        row("a link to no file", "[a](nothing.md)", "p.md:1: nothing.md does not exist");
        row("a link to no heading", "[a](docs/architecture.md#nothing)", "no such heading");
        row("a link to no heading here", "[a](#nothing)", "no such heading");
        row("a file", "`tests/docs/pages.h` `docs/` `and/or`", "");
        row("no file", "`tests/docs/nothing.h`", "p.md:1: tests/docs/nothing.h does not exist");
        row("a call", "`morsehost decode --tone 600 FILE`", "");
        row("no such command", "`morsehost encode`", "p.md:1: no command 'encode'");
        row("no such option",
            "```sh not-run: x\nbuild/dev/bin/morsehost decode \\\n  --ton 5 -\n```",
            "'decode' has no option '--ton'");
    }
    void whatIsWrongIsFound()
    {
        QFETCH(QString, text);
        QFETCH(QString, complaint);
        const Clone clone;
        const Page page = pages::parse(QStringLiteral("p.md"), text);
        const QStringList complaints = checkBlocks(page, clone) + checkLinks(page, m_pages) +
                                       checkFileNames(page) + checkCalls(page, clone);
        QCOMPARE(complaints.isEmpty(), complaint.isEmpty());
        QVERIFY2(complaint.isEmpty() || complaints.constFirst().contains(complaint),
                 complaints.join(QLatin1Char('\n')).toUtf8().constData());
    }

private:
    void everyPage() const
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < m_pages.size(); ++i)
            QTest::newRow(m_pages.at(i).name.toUtf8().constData()) << i;
    }

    const QVector<Page> m_pages = pages::readAll(QStringLiteral(PROJECT_DIR));
};

QTEST_GUILESS_MAIN(tst_Documents)
#include "tst_documents.moc"
