// SPDX-License-Identifier: MIT
// Follows a page to its end as a reader who has a bare machine and the packages.
// Usage: followpage PAGE COMMAND...
// The commands of the page are run by COMMAND, which takes them to that machine, such as chroot.
#include "docs/blocks.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QStringList words = QCoreApplication::arguments().mid(1);
    if (words.size() < 2) {
        std::fputs("usage: followpage PAGE COMMAND...\n", stderr);
        return 2;
    }
    QFile file(words.takeFirst());
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "followpage: %s: %s\n", file.fileName().toUtf8().constData(),
                     file.errorString().toUtf8().constData());
        return 1;
    }
    const QString name = QFileInfo(file).fileName();
    const pages::Page page = pages::parse(name, QString::fromUtf8(file.readAll()));
    const pages::Shell shell({}, QProcessEnvironment::systemEnvironment(), words);
    const QStringList complaints = pages::checkBlocks(page, shell, pages::Reader::OnABareMachine);
    for (const QString& complaint : complaints)
        std::printf("%s\n", complaint.toUtf8().constData());
    const int count = pages::runBlocks(page, pages::Reader::OnABareMachine);
    const bool isFollowed = complaints.isEmpty() && count > 0;
    const QString verdict = isFollowed ? QStringLiteral("all as shown")
                                       : QStringLiteral("%1 complaints").arg(complaints.size());
    std::printf("%s: %d run, %s\n", name.toUtf8().constData(), count, verdict.toUtf8().constData());
    return isFollowed ? 0 : 1;
}
