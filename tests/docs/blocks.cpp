// SPDX-License-Identifier: MIT
#include "docs/blocks.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include <utility>

namespace pages {

namespace {

QString at(const Page& page, int line)
{
    return QStringLiteral("%1:%2: ").arg(page.name).arg(line);
}

QString difference(const QString& what, const QString& shown, const QString& printed)
{
    return QStringLiteral("%1\n--- shown:\n%2\n--- printed:\n%3").arg(what, shown, printed);
}

QStringList checkSession(const Page& page, const Block& block, const Shell& shell)
{
    // After each command its status, behind a sign that no output holds.
    const auto all = commands(block);
    QString script;
    for (const Command& command : all)
        script += command.text + QStringLiteral("\n{ s=$?; printf '\\001%d\\n' $s; (exit $s); }\n");
    int status = 0;
    const QStringList pieces = shell.run(script, &status).split(QChar(1));
    QStringList complaints;
    if (all.isEmpty() || !block.lines.first().startsWith(QLatin1String("$ ")))
        return {at(page, block.line) + QStringLiteral("a session begins with a command")};
    if (pieces.size() != all.size() + 1)
        return {at(page, block.line) + QStringLiteral("the session broke off:\n") +
                pieces.join(QLatin1Char('\n'))};
    for (int i = 0; i < all.size(); ++i) {
        QString output = pieces.at(i);
        if (i > 0)
            output = output.section(QLatin1Char('\n'), 1);
        const int ended = pieces.at(i + 1).section(QLatin1Char('\n'), 0, 0).toInt();
        if (!isAsShown(output, all.at(i).output))
            complaints +=
                difference(at(page, block.line) + all.at(i).text, all.at(i).output, output);
        const bool isAsked = i + 1 < all.size() && all.at(i + 1).text == QLatin1String("echo $?");
        if (ended != 0 && !isAsked)
            complaints += at(page, block.line) + QStringLiteral("fails with %1: ").arg(ended) +
                          all.at(i).text;
    }
    return complaints;
}

QStringList checkSyntax(const Page& page, const Block& block, const Shell& shell)
{
    int status = 0;
    const QString said = shell.run(block.content(), &status, {QStringLiteral("-n")});
    return status == 0 ? QStringList() : QStringList{at(page, block.line) + said};
}

/// The scripts and programs of a clone that commands name, which are not run.
QStringList checkPrograms(const Page& page, const Block& block, const Shell& shell)
{
    static const QRegularExpression program(
        QStringLiteral("(?:^|[\\s;|(])((?:scripts|\\.ci)/[\\w.-]+)"));
    static const QRegularExpression built(QStringLiteral("build/\\w+/bin/(\\w+)"));
    QStringList complaints;
    auto scripts = program.globalMatch(block.content());
    while (scripts.hasNext()) {
        const QString name = scripts.next().captured(1);
        int found = 0;
        shell.run(QStringLiteral("test -f '%1' -a -x '%1'").arg(name), &found);
        if (found != 0)
            complaints += at(page, block.line) + name + QStringLiteral(" is no program");
    }
    auto targets = built.globalMatch(block.content());
    while (targets.hasNext()) {
        const QString name = targets.next().captured(1);
        int found = 0;
        shell.run(
            QStringLiteral("grep -Rqw --exclude-dir=build --include=CMakeLists.txt -e '%1' ./*/ ||"
                           "compgen -G '*/%1.cpp' || compgen -G '*/*/%1.cpp'")
                .arg(name),
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

QStringList checkCode(const Page& page, const Block& block, const Shell& shell)
{
    const QString path = block.attribute(QStringLiteral("path"));
    const QString all = path.isEmpty() ? QString() : shell.contentOf(path);
    if (all.isEmpty())
        return {at(page, block.line) + QStringLiteral("code comes from a file (path=FILE)")};
    const QString code = QLatin1Char('\n') + dedented(block.content()) + QLatin1Char('\n');
    if (!(QLatin1Char('\n') + dedented(all) + QLatin1Char('\n')).contains(code))
        return {at(page, block.line) + QStringLiteral("is not to be found in ") + path};
    return {};
}

QStringList checkXml(const Page& page, const Block& block, const Shell& shell)
{
    const QString schema = block.attribute(QStringLiteral("schema"));
    int status = 0;
    const QString said = shell.run(QStringLiteral("xmllint --noout --schema '%1' -").arg(schema),
                                   &status, {}, block.content());
    return status == 0 ? QStringList() : QStringList{at(page, block.line) + said};
}

QStringList checkCommands(const Page& page, const Block& block, const Block* next,
                          const Shell& shell)
{
    int status = 0;
    const QString output =
        shell.run(block.content(), &status, {QStringLiteral("-euo"), QStringLiteral("pipefail")});
    QStringList complaints;
    if (status != 0)
        complaints += at(page, block.line) + QStringLiteral("fails:\n") + output;
    if (next && next->kind() == QLatin1String("output") && !isAsShown(output, next->content()))
        complaints += difference(at(page, next->line), next->content(), output);
    return complaints;
}

QString wordsBehindKind(const Block& block)
{
    return block.info.section(QLatin1Char(' '), 1).trimmed();
}

/// Whether it holds commands that such a reader runs.
bool isRun(const Block& block, Reader reader)
{
    if (!block.attribute(QStringLiteral("file")).isEmpty())
        return false;
    const QString words = wordsBehindKind(block);
    return block.kind() == QLatin1String("console") ||
           (block.kind() == QLatin1String("sh") &&
            (words.isEmpty() ||
             (words == QLatin1String("bare-machine") && reader == Reader::OnABareMachine)));
}

} // namespace

Shell::Shell(QString folder, QProcessEnvironment environment, QStringList wrapper)
    : m_folder(std::move(folder))
    , m_environment(std::move(environment))
    , m_wrapper(std::move(wrapper))
{
}

QString Shell::run(const QString& script, int* status, const QStringList& options,
                   const QString& input) const
{
    QStringList command = m_wrapper;
    command << QStringLiteral("bash") << options << QStringLiteral("-c") << script;
    QProcess shell;
    shell.setWorkingDirectory(m_folder);
    shell.setProcessEnvironment(m_environment);
    shell.setProcessChannelMode(QProcess::MergedChannels);
    if (input.isEmpty())
        shell.setStandardInputFile(QProcess::nullDevice());
    shell.start(command.takeFirst(), command);
    if (!input.isEmpty()) {
        shell.write(input.toUtf8());
        shell.closeWriteChannel();
    }
    // Elsewhere a block may be the installation of a compiler.
    if (!shell.waitForFinished(1800000))
        shell.kill();
    *status = shell.exitStatus() == QProcess::NormalExit && shell.error() == QProcess::UnknownError
                  ? shell.exitCode()
                  : -1;
    return QString::fromUtf8(shell.readAllStandardOutput());
}

bool Shell::write(const QString& name, const QString& content) const
{
    int status = 0;
    run(QStringLiteral("cat >'%1'").arg(name), &status, {}, content);
    return status == 0;
}

QString Shell::contentOf(const QString& name) const
{
    int status = 0;
    const QString content = run(QStringLiteral("cat '%1'").arg(name), &status);
    return status == 0 ? content : QString();
}

QStringList checkBlocks(const Page& page, const Shell& shell, Reader reader)
{
    QStringList complaints = page.complaints;
    for (int i = 0; i < page.blocks.size(); ++i) {
        const Block& block = page.blocks.at(i);
        const Block* const next = i + 1 < page.blocks.size() ? &page.blocks.at(i + 1) : nullptr;
        const QString kind = block.kind();
        const QString words = wordsBehindKind(block);
        const QString file = block.attribute(QStringLiteral("file"));
        if (!file.isEmpty()) {
            if (!shell.write(file, block.content()))
                complaints += at(page, block.line) + file + QStringLiteral(" cannot be written");
        } else if (kind == QLatin1String("console")) {
            complaints += checkSession(page, block, shell);
        } else if (isRun(block, reader)) {
            complaints += checkCommands(page, block, next, shell);
        } else if (kind == QLatin1String("sh") && (words.startsWith(QLatin1String("not-run: ")) ||
                                                   words == QLatin1String("bare-machine"))) {
            complaints += checkSyntax(page, block, shell);
            if (reader == Reader::InAClone)
                complaints += checkPrograms(page, block, shell);
        } else if (kind == QLatin1String("output") && i > 0 &&
                   page.blocks.at(i - 1).kind() == QLatin1String("sh")) {
            continue; // compared with what the commands before it printed
        } else if (kind == QLatin1String("cpp") ||
                   !block.attribute(QStringLiteral("path")).isEmpty()) {
            complaints += checkCode(page, block, shell);
        } else if (kind == QLatin1String("xml") &&
                   !block.attribute(QStringLiteral("schema")).isEmpty()) {
            complaints += checkXml(page, block, shell);
        } else if (kind != QLatin1String("text") || words.isEmpty()) {
            complaints +=
                at(page, block.line) +
                QStringLiteral("a block of which nothing says what it is: '%1'").arg(block.info);
        }
    }
    return complaints;
}

int runBlocks(const Page& page, Reader reader)
{
    int count = 0;
    for (const Block& block : page.blocks)
        count += isRun(block, reader) ? 1 : 0;
    return count;
}

QStringList checkLinks(const Page& page, const QVector<Page>& all, const QString& folder)
{
    QStringList complaints;
    for (const auto& [line, target] : links(page)) {
        if (target.contains(QLatin1String("://")))
            continue;
        const QString file = target.section(QLatin1Char('#'), 0, 0);
        const QString anchor = target.section(QLatin1Char('#'), 1);
        const QString name =
            file.isEmpty() ? page.name
                           : QDir::cleanPath(QFileInfo(page.name).path() + QLatin1Char('/') + file);
        if (!file.isEmpty() && !QFileInfo::exists(QDir(folder).filePath(name)))
            complaints += at(page, line) + target + QStringLiteral(" does not exist");
        if (anchor.isEmpty())
            continue;
        const Page* to = name == page.name ? &page : nullptr;
        for (const Page& other : all)
            to = !to && other.name == name ? &other : to;
        if (!to || !anchors(*to).contains(anchor))
            complaints += at(page, line) + target + QStringLiteral(": no such heading");
    }
    return complaints;
}

} // namespace pages
