// SPDX-License-Identifier: MIT
// morsehost-manual: writes the manual page or a completion of morsehost, at build time.
#include "app/commands/registry.h"
#include "app/console/exitstatus.h"
#include "app/manual/completion.h"
#include "app/manual/manualpage.h"

#include <cstdio>
#include <fstream>
#include <string>

int main(int argc, char* argv[])
{
    using namespace morsehost;
    const std::string kind = argc > 2 ? argv[1] : "";
    QString text;
    if (kind == "page" && argc == 4) {
        text = manualPage(commands(), programOptions(), QStringLiteral(MORSEHOST_VERSION),
                          QString::fromUtf8(argv[3]));
    } else if (kind == "bash" && argc == 3) {
        text = bashCompletion(commands(), programOptions());
    } else if (kind == "zsh" && argc == 3) {
        text = zshCompletion(commands(), programOptions());
    } else if (kind == "fish" && argc == 3) {
        text = fishCompletion(commands(), programOptions());
    } else {
        std::fputs("Usage: morsehost-manual page FILE DATE | bash|zsh|fish FILE\n", stderr);
        return EXIT_BAD_USAGE;
    }
    std::ofstream file(argv[2], std::ios::binary);
    file << text.toUtf8().constData();
    file.close();
    if (file)
        return EXIT_DONE;
    std::fprintf(stderr, "morsehost-manual: %s: cannot be written\n", argv[2]);
    return EXIT_BAD_INPUT;
}
