// SPDX-License-Identifier: MIT
#include "docs/pages.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace pages {

namespace {

const QString FENCE = QStringLiteral("```");

bool isListItem(const QString& line)
{
    static const QRegularExpression item(QStringLiteral("^\\s*([-*+]|\\d+\\.)\\s"));
    return item.match(line).hasMatch();
}

// Code without a fence says nothing about itself: a line with four blanks in front, behind an empty
// line, outside of a list.
void findIndentedBlocks(Page& page)
{
    bool inList = false;
    for (int i = 0; i < page.prose.size(); ++i) {
        const QString& line = page.prose.at(i);
        if (isListItem(line))
            inList = true;
        else if (!line.isEmpty() && !line.startsWith(QLatin1Char(' ')))
            inList = false;
        const bool isFirst = i == 0 || page.prose.at(i - 1).trimmed().isEmpty();
        if (line.startsWith(QLatin1String("    ")) && isFirst && !inList &&
            !line.trimmed().isEmpty())
            page.complaints +=
                QStringLiteral("%1:%2: a block without a fence").arg(page.name).arg(i + 1);
    }
}

QString withoutCodeSpans(QString line)
{
    static const QRegularExpression span(QStringLiteral("`[^`]*`"));
    return line.remove(span);
}

} // namespace

QString Block::kind() const
{
    return info.section(QLatin1Char(' '), 0, 0);
}

QString Block::attribute(const QString& name) const
{
    for (const QString& word : info.split(QLatin1Char(' '))) {
        if (word.startsWith(name + QLatin1Char('=')))
            return word.mid(name.size() + 1);
    }
    return {};
}

QString Block::content() const
{
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

Page parse(const QString& name, const QString& text)
{
    Page page;
    page.name = name;
    const QStringList lines = text.split(QLatin1Char('\n'));
    bool inside = false;
    for (int i = 0; i < lines.size(); ++i) {
        const QString& line = lines.at(i);
        const bool isFence = line.startsWith(FENCE);
        if (isFence && !inside)
            page.blocks += Block{i + 1, line.mid(FENCE.size()).trimmed(), {}};
        else if (inside && !isFence)
            page.blocks.last().lines += line;
        else if (line.trimmed().startsWith(FENCE) && !isFence)
            page.complaints +=
                QStringLiteral("%1:%2: a fence that is indented").arg(name).arg(i + 1);
        page.prose += inside || isFence ? QString() : line;
        if (isFence)
            inside = !inside;
    }
    if (inside)
        page.complaints += QStringLiteral("%1: a block that does not end").arg(name);
    findIndentedBlocks(page);
    static const QRegularExpression gap(QStringLiteral("@[A-Z]+@"));
    for (int i = 0; i < page.prose.size(); ++i) {
        if (gap.match(page.prose.at(i)).hasMatch())
            page.complaints +=
                QStringLiteral("%1:%2: something is left to fill in").arg(name).arg(i + 1);
    }
    return page;
}

QVector<Page> readAll(const QString& projectFolder)
{
    const QDir project(projectFolder);
    QStringList names;
    QStringList folders = {QString()};
    while (!folders.isEmpty()) {
        const QString folder = folders.takeFirst();
        const QDir dir(project.filePath(folder));
        for (const QFileInfo& entry :
             dir.entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
            const QString name =
                folder.isEmpty() ? entry.fileName() : folder + QLatin1Char('/') + entry.fileName();
            if (entry.isDir() && name != QLatin1String("build"))
                folders += name;
            else if (entry.isFile() && name.endsWith(QLatin1String(".md")))
                names += name;
        }
    }
    std::sort(names.begin(), names.end());
    QVector<Page> pages;
    for (const QString& name : qAsConst(names)) {
        QFile file(project.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            pages += parse(name, QString::fromUtf8(file.readAll()));
    }
    return pages;
}

QStringList anchors(const Page& page)
{
    static const QRegularExpression heading(QStringLiteral("^#+\\s+(.*)$"));
    static const QRegularExpression dropped(QStringLiteral("[^\\w\\- ]"),
                                            QRegularExpression::UseUnicodePropertiesOption);
    QStringList anchors;
    for (const QString& line : page.prose) {
        const auto match = heading.match(line);
        if (!match.hasMatch())
            continue;
        QString anchor = match.captured(1).trimmed().toLower();
        anchor.remove(dropped).replace(QLatin1Char(' '), QLatin1Char('-'));
        QString unique = anchor;
        for (int n = 1; anchors.contains(unique); ++n)
            unique = QStringLiteral("%1-%2").arg(anchor).arg(n);
        anchors += unique;
    }
    return anchors;
}

QVector<QPair<int, QString>> links(const Page& page)
{
    static const QRegularExpression link(QStringLiteral("\\[[^\\]]*\\]\\(([^)\\s]+)\\)"));
    QVector<QPair<int, QString>> found;
    for (int i = 0; i < page.prose.size(); ++i) {
        auto matches = link.globalMatch(withoutCodeSpans(page.prose.at(i)));
        while (matches.hasNext())
            found += qMakePair(i + 1, matches.next().captured(1));
    }
    return found;
}

QVector<QPair<int, QString>> codeSpans(const Page& page)
{
    static const QRegularExpression span(QStringLiteral("`([^`]+)`"));
    QVector<QPair<int, QString>> found;
    for (int i = 0; i < page.prose.size(); ++i) {
        auto matches = span.globalMatch(page.prose.at(i));
        while (matches.hasNext())
            found += qMakePair(i + 1, matches.next().captured(1));
    }
    return found;
}

QVector<Command> commands(const Block& session)
{
    static const QRegularExpression hereDocument(QStringLiteral("<<'?(\\w+)'?"));
    QVector<Command> commands;
    QString until;
    bool goesOn = false;
    for (const QString& line : session.lines) {
        if (goesOn || !until.isEmpty()) {
            commands.last().text += QLatin1Char('\n') + line;
            goesOn = until.isEmpty() && line.endsWith(QLatin1Char('\\'));
            if (line == until)
                until.clear();
        } else if (line.startsWith(QLatin1String("$ "))) {
            commands += Command{line.mid(2), {}};
            goesOn = line.endsWith(QLatin1Char('\\'));
            until = hereDocument.match(line).captured(1);
        } else if (!commands.isEmpty()) {
            commands.last().output += line + QLatin1Char('\n');
        }
    }
    return commands;
}

bool isAsShown(const QString& text, const QString& expected)
{
    // A page cannot show blanks at the ends of lines, nor whether the last line ends.
    const auto trimmed = [](QString s) {
        static const QRegularExpression blanks(QStringLiteral(" +(?=\n|$)|\n+$"));
        return s.remove(blanks);
    };
    QStringList parts = trimmed(expected).split(QStringLiteral("…"));
    for (QString& part : parts)
        part = QRegularExpression::escape(part);
    const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(parts.join(QStringLiteral(".*"))),
        QRegularExpression::DotMatchesEverythingOption);
    return pattern.match(trimmed(text)).hasMatch();
}

} // namespace pages
