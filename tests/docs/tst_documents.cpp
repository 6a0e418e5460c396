// SPDX-License-Identifier: MIT
// What the pages show is what happens: their sessions are run, their code is that of the examples,
// their links lead somewhere. tests/docs/pages.h describes how a block says what it is.
#include "docs/blocks.h"
#include "support/files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using pages::Block;
using pages::Page;

namespace {

const QDir project(QStringLiteral(PROJECT_DIR));

QString at(const Page& page, int line)
{
    return QStringLiteral("%1:%2: ").arg(page.name).arg(line);
}

/// Where the library is installed for the pages that compile against it.
QString installed()
{
    static const QTemporaryDir folder;
    static const bool isThere = [] {
        QProcess cmake;
        cmake.start(QStringLiteral("cmake"),
                    {QStringLiteral("--install"), QStringLiteral(BUILD_DIR),
                     QStringLiteral("--prefix"), folder.path()});
        return cmake.waitForFinished(1800000) && cmake.exitCode() == 0;
    }();
    return isThere ? folder.path() : QString();
}

/// A folder that looks like a clone with its builds.
class Clone : public pages::Shell
{
public:
    Clone()
        : Clone(std::make_unique<QTemporaryDir>())
    {
    }

    QString pathOf(const QString& name) const { return m_folder->filePath(name); }

private:
    explicit Clone(std::unique_ptr<QTemporaryDir> folder)
        : Shell(folder->path(), environment(folder->path()))
        , m_folder(std::move(folder))
    {
        for (const QString& name :
             project.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
            if (name != QLatin1String("build") && name != QLatin1String(".git"))
                QFile::link(project.filePath(name), pathOf(name));
        }
        for (const char* preset : {"build/dev", "build/release"}) {
            const QDir build(pathOf(QLatin1String(preset)));
            build.mkpath(QStringLiteral("."));
            QFile::link(QStringLiteral(PROGRAMS_DIR), build.filePath(QStringLiteral("bin")));
            QFile::link(QStringLiteral(LIBRARIES_DIR), build.filePath(QStringLiteral("lib")));
        }
        const QDir programs(pathOf(QStringLiteral(".programs")));
        programs.mkpath(QStringLiteral("."));
        QFile::link(QStringLiteral(PROGRAMS_DIR "/morsehost"),
                    programs.filePath(QStringLiteral("morsehost")));
        for (const char* receiver : {"arecord", "rtl_fm", "nc"})
            QFile::link(project.filePath(QStringLiteral("tests/docs/receiver.sh")),
                        programs.filePath(QLatin1String(receiver)));
        // What is linked with a library under sanitizers has to be as well.
        QFile compiler(programs.filePath(QStringLiteral("c++")));
        if (compiler.open(QIODevice::WriteOnly)) {
            compiler.write("#!/bin/sh\nexec " COMPILER " \"$@\"\n");
            compiler.setPermissions(compiler.permissions() | QFile::ExeOwner);
        }
    }

    static QProcessEnvironment environment(const QString& folder)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PATH"), folder + QStringLiteral("/.programs:") +
                                                       environment.value(QStringLiteral("PATH")));
        environment.insert(QStringLiteral("HOME"), folder);
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
        // As the host developer's guide has it done in a clone.
        const QString libraries = installed() + QStringLiteral("/" INSTALLED_LIBRARIES);
        environment.insert(QStringLiteral("CMAKE_PREFIX_PATH"), installed());
        environment.insert(QStringLiteral("PKG_CONFIG_PATH"),
                           libraries + QStringLiteral("/pkgconfig"));
        environment.insert(QStringLiteral("LD_LIBRARY_PATH"), libraries);
        return environment;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

/// What the operator's guide calls its chapters, itself among them.
QStringList chaptersOf(const QVector<Page>& all)
{
    QStringList chapters;
    for (const Page& page : all) {
        if (page.name != QLatin1String("docs/operator-guide.md"))
            continue;
        chapters += page.name;
        for (const auto& [line, target] : pages::links(page)) {
            if (page.prose.at(line - 1).startsWith(QLatin1String("| [")))
                chapters += QStringLiteral("docs/") + target.section(QLatin1Char('#'), 0, 0);
        }
    }
    return chapters;
}

/// Those who have the packages have a link `data`, and no other folder of a clone.
QStringList checkPackagedFiles(const Page& page)
{
    static const QRegularExpression path(QStringLiteral("(?:^|\\s)([\\w.-]+)/[\\w./*-]+"));
    QStringList complaints;
    for (const Block& block : page.blocks) {
        QStringList texts;
        if (block.info == QLatin1String("sh"))
            texts += block.content();
        for (const pages::Command& command : pages::commands(block))
            texts += command.text;
        auto paths = path.globalMatch(texts.join(QLatin1Char('\n')));
        while (paths.hasNext()) {
            const QRegularExpressionMatch one = paths.next();
            if (one.captured(1) != QLatin1String("data") && project.exists(one.captured(1)))
                complaints += at(page, block.line) + one.captured().trimmed() +
                              QStringLiteral(" is in no package");
        }
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

/// Every way of calling the program that a page shows.
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
        QVERIFY(!installed().isEmpty());
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
        const QStringList complaints =
            pages::checkBlocks(m_pages.at(index), clone, pages::Reader::InAClone);
        QVERIFY2(complaints.isEmpty(), asMessage(complaints).constData());
    }

    void whatAPageNamesExists_data() { everyPage(); }
    void whatAPageNamesExists()
    {
        QFETCH(int, index);
        const Clone clone;
        const Page& page = m_pages.at(index);
        const QStringList complaints = pages::checkLinks(page, m_pages, project.path()) +
                                       checkFileNames(page) + checkCalls(page, clone);
        QVERIFY2(complaints.isEmpty(), asMessage(complaints).constData());
    }

    void whatAnInstalledPageLinksToIsInstalled()
    {
        const QString folder = installed() + QStringLiteral("/share/doc/morsehandler");
        const QVector<Page> all = pages::readAll(folder);
        QCOMPARE(all.size(), QDir(project.filePath(QStringLiteral("docs")))
                                     .entryList({QStringLiteral("*.md")})
                                     .size() +
                                 QDir(project.filePath(QStringLiteral("docs/formats")))
                                     .entryList({QStringLiteral("*.md")})
                                     .size());
        QStringList complaints;
        for (const Page& page : all)
            complaints += pages::checkLinks(page, all, folder);
        QVERIFY2(complaints.isEmpty(), asMessage(complaints).constData());
    }

    void whoHasABareMachineFollowsAPageThere_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("said");
        const auto row = [](const char* name, const char* text, int status, const char* said) {
            QTest::newRow(name) << QString::fromUtf8(text) << status << QString::fromUtf8(said);
        };
        row("preparations and sessions",
            "```sh bare-machine\necho a >file\n```\n\n```console\n$ cat file\na\n```", 0,
            "page.md: 2 run, all as shown\n");
        row("files", "```text file=a\nb\n```\n\n```console\n$ cat a\nb\n```", 0,
            "page.md: 1 run, all as shown\n");
        row("nothing of what is for a clone",
            "```sh not-run: builds\nscripts/none.sh\n```\n\n```console\n$ echo a\na\n```", 0,
            "page.md: 1 run, all as shown\n");
        row("another output", "```console\n$ echo a\nb\n```", 1, "page.md:1: echo a\n");
        row("preparations that fail", "```sh bare-machine\nfalse\n```", 1, "page.md:1: fails");
        row("a page without sessions", "Text.\n", 1, "page.md: 0 run, 0 complaints\n");
    }
    void whoHasABareMachineFollowsAPageThere()
    {
        QFETCH(QString, text);
        const QTemporaryDir machine;
        const QTemporaryDir folder;
        const QString page = writeFile(folder.filePath(QStringLiteral("page.md")), text.toUtf8());
        QProcess follow;
        follow.start(QStringLiteral(PROGRAMS_DIR "/followpage"),
                     {page, QStringLiteral("env"), QStringLiteral("-C"), machine.path()});
        QVERIFY(follow.waitForFinished(1800000));
        const QString printed = QString::fromUtf8(follow.readAllStandardOutput());
        QTEST(follow.exitCode(), "status");
        QFETCH(QString, said);
        QVERIFY2(printed.startsWith(said), qPrintable(printed));
    }

    void everyChapterOfTheGuideIsRun()
    {
        QMap<QString, int> sessions;
        const QStringList chapters = chaptersOf(m_pages);
        for (const Page& page : m_pages) {
            for (const Block& block : page.blocks)
                sessions[page.name] += block.kind() == QLatin1String("console") ? 1 : 0;
        }
        for (const char* const chapter : {"station", "page", "mqtt", "cluster"}) {
            const QString name = QStringLiteral("docs/%1.md").arg(QLatin1String(chapter));
            QVERIFY2(chapters.contains(name), chapter);
            QVERIFY2(sessions[name] > 0, chapter);
        }
    }

    void theGuideUsesWhatThePackagesHold()
    {
        const QStringList chapters = chaptersOf(m_pages);
        QStringList complaints;
        for (const Page& page : m_pages) {
            if (chapters.contains(page.name))
                complaints += checkPackagedFiles(page);
        }
        QVERIFY2(complaints.isEmpty(), asMessage(complaints).constData());

        const Page clone =
            pages::parse(QStringLiteral("page.md"),
                         QStringLiteral("```console\n$ cat data/a tests/data/b\n```\n"));
        QCOMPARE(checkPackagedFiles(clone),
                 QStringList(QStringLiteral("page.md:1: tests/data/b is in no package")));
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
            QString::fromUtf8(contentOf(project.filePath(QStringLiteral("docs/architecture.svg"))));
        static const QRegularExpression folder(QStringLiteral("\\b([a-z]+/)+(?=[<)])"));
        auto matches = folder.globalMatch(picture);
        int count = 0;
        for (; matches.hasNext(); ++count) {
            const QString name = matches.next().captured();
            QVERIFY2(project.exists(name), qPrintable(name));
        }
        QCOMPARE(count, 9);
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
        row("for a bare machine", "```sh bare-machine\nsudo no-such-program\n```", "");
        row("for a bare machine, and no shell", "```sh bare-machine\nif\n```", "p.md:1: ");
        row("code of a file", "```cpp path=tests/docs/pages.h\nstruct Block\n{\n```", "");
        row("code of no file", "```cpp\nstruct Block\n```", "code comes from a file");
        row("code that has changed", "```cpp path=tests/docs/pages.h\nstruct Bloc\n```",
            "not to be found");
        row("a file, and its use", "```text file=a.txt\nx\n```\n\n```console\n$ cat a.txt\nx\n```",
            "");
        row("xml that is not valid", "```xml schema=data/schema/tavikresultdata.xsd\n<a/>\n```",
            "element a");
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
        const QStringList complaints = pages::checkBlocks(page, clone, pages::Reader::InAClone) +
                                       pages::checkLinks(page, m_pages, project.path()) +
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
