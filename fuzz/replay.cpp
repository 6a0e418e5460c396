// SPDX-License-Identifier: MIT
// The main program of a fuzz target where there is no libFuzzer: each operand is an input, or a
// folder whose files are. Reading none at all is a failure.
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool replay(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: cannot be read\n", qPrintable(path));
        return false;
    }
    // Printed first, since a check that fails ends the process.
    std::fprintf(stderr, "%s\n", qPrintable(path));
    // A copy of its own size, so that the sanitizer sees a read beyond the end.
    const std::string input = file.readAll().toStdString();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    bool isAllRead = true;
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const QString operand = QFile::decodeName(argv[i]);
        QStringList paths{operand};
        if (QFileInfo(operand).isDir()) {
            paths.clear();
            const QDir folder(operand);
            const QStringList names = folder.entryList(QDir::Files, QDir::Name);
            for (const QString& name : names)
                paths += folder.filePath(name);
        }
        for (const QString& path : qAsConst(paths)) {
            isAllRead = replay(path) && isAllRead;
            ++count;
        }
    }
    std::fprintf(stderr, "%d inputs\n", count);
    return isAllRead && count > 0 ? 0 : 1;
}
