// SPDX-License-Identifier: MIT
// Alphabet handlers: text in, text out, without values.
// Usage: alphabets FOLDER_OF_ALPHABETS FOLDER_OF_MAPS DECODER_MODULES_FILE
#include "morsehandler/charmap/codechandler.h"
#include "morsehandler/host/standin/configuration.h"
#include "morsehandler/morse/simplemorsehandler.h"

#include <QString>
#include <QVector>

#include <cstdio>

namespace {

void show(const QString& text)
{
    std::printf("%s\n", text.toUtf8().constData());
}

/// Both kinds of handler are driven in the same way.
void translate(IAlphabetHandler& handler, const QString& folder, const QString& decoder,
               const QString& alphabet, const QString& input)
{
    handler.SetAlphabetsDir(folder);
    handler.SetDecoder(decoder);
    if (!handler.SetAlphabet(alphabet))
        show(QStringLiteral("not found: ") + alphabet);
    show(handler.Alphabet() + QStringLiteral(": ") + handler.Translate(input));
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 4)
        return 2;
    setConfigurationValue(QString(), QStringLiteral("DecoderModulesFile"),
                          QString::fromLocal8Bit(argv[3]));

    SimpleMorseHandler morse;
    const QString symbols =
        SimpleMorseHandler::ConvertSymbols({0, 0, 0, 3, 1, 1, 1, 3, 0, 0, 0, 3});
    translate(morse, QString::fromLocal8Bit(argv[1]), QString(), QStringLiteral("International"),
              symbols);

    CodecHandler codec;
    translate(codec, QString::fromLocal8Bit(argv[2]), QStringLiteral("ASCII RTTY"),
              QStringLiteral("Greek"), QStringLiteral("ABCD"));
    show(codec.Backtranslate(QStringLiteral("ΑΒΓΔ")));
    return 0;
}
