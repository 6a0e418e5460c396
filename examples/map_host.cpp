// SPDX-License-Identifier: MIT
// A host that has the text of its decoders translated through maps that the operator chooses.
// Usage: map_host FOLDER_OF_MAPS DECODER_MODULES_FILE
#include "morsehandler/charmap/mappingdirectory.h"
#include "morsehandler/host/standin/configuration.h"
#include "morsehandler/host/standin/hosttree.h"
#include "morsehandler/host/values.h"

#include <QString>

#include <cstdio>

namespace {

/// What a decoder does with a piece of text.
void deliver(TextValue* input, const QString& text)
{
    if (input->GetValue() == text)
        input->HasChanged(eCHANGE_CONTENT, nullptr);
    else
        input->SetValue(text, nullptr);
}

void show(const QString& text)
{
    std::printf("%s\n", text.toUtf8().constData());
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3)
        return 2;

    // Read once a process, when the first mapping directory or codec handler is made.
    setConfigurationValue(QString(), QStringLiteral("DecoderModulesFile"),
                          QString::fromLocal8Bit(argv[2]));

    HostTree tree;
    auto* const decoder = tree.Add<ValueSelection>(QStringLiteral("Receiver/Decoder"));
    decoder->AddItem(QStringLiteral("Baudot"), 0, 0, nullptr);
    decoder->AddItem(QStringLiteral("ASCII RTTY"), 1, 1, nullptr);
    decoder->Select(QStringLiteral("Baudot"), nullptr);

    // What is not in the tree yet is created by the setters.
    MappingDirectory directory(QString::fromLocal8Bit(argv[1]));
    directory.SetAvailableMaps_ValuePath(QStringLiteral("Receiver/Maps"));
    directory.SetTextDirectionRTL_ValuePath(QStringLiteral("Receiver/RightToLeft"));
    directory.SetDataInput_ValuePath(QStringLiteral("Receiver/Input"), nullptr);
    directory.SetDataOutput_ValuePath(QStringLiteral("Receiver/Output"));
    directory.SetMaxNumberOfChars_ValuePath(QStringLiteral("Receiver/HistoryLength"));
    directory.SetDecoder_ValuePath(QStringLiteral("Receiver/Decoder"));

    auto* const maps = dynamic_cast<ValueSelection*>(tree.Find(QStringLiteral("Receiver/Maps")));
    auto* const input = dynamic_cast<TextValue*>(tree.Find(QStringLiteral("Receiver/Input")));
    auto* const output = dynamic_cast<TextValue*>(tree.Find(QStringLiteral("Receiver/Output")));
    if (!maps || !input || !output)
        return 1;

    // What Init selects is in force once it is announced to an enabled directory.
    directory.Init(QStringLiteral("Russian - ITA2"));
    directory.Enabled(true);
    maps->HasChanged(eCHANGE_CONTENT, nullptr);

    deliver(input, QStringLiteral("PRIWET"));
    show(output->GetValue());

    // Another decoder: the maps on offer follow it.
    decoder->Select(QStringLiteral("ASCII RTTY"), nullptr);
    maps->Select(QStringLiteral("Greek - ASCII"), nullptr);
    deliver(input, QStringLiteral("KALGMERA"));
    show(output->GetValue());

    // All that came in, through the map in force now.
    show(directory.TranslateHistory());
    return 0;
}
