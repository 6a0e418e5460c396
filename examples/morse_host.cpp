// SPDX-License-Identifier: MIT
// A host that wires a Morse handler to its values, receives a few words and has them saved.
// Usage: morse_host FOLDER_OF_ALPHABETS FOLDER_TO_SAVE_IN
#include "morsehandler/host/standin/hosttree.h"
#include "morsehandler/host/values.h"
#include "morsehandler/session/morsehandler.h"

#include <QString>

#include <cstdio>

namespace {

/// Shows each text that the handler writes into the text value.
class Screen : public IObserver
{
public:
    explicit Screen(TextValue* text)
        : m_text(text)
    {
        m_text->AddObserver(this);
    }

    ~Screen() override
    {
        if (m_text)
            m_text->DeleteObserver(this);
    }

    void Update(Observable* source, TChangeCode code) override
    {
        if (source != m_text)
            return;
        if (code == eCHANGE_CONTENT) {
            std::fputs(m_text->GetValue().toUtf8().constData(), stdout);
        } else if (code == eCHANGE_DELETED) {
            m_text->DeleteObserver(this);
            m_text = nullptr;
        }
    }

private:
    TextValue* m_text;
};

/// What a demodulator does with a code that it has decided on.
void report(IntegerValue* symbol, int code)
{
    if (symbol->GetValue() == code)
        symbol->HasChanged(eCHANGE_CONTENT, nullptr);
    else
        symbol->SetValue(code, nullptr);
}

/// "CQ DE": 0 and 1 are dots and dashes, 3 ends a character, 4 a word.
constexpr int CODES[] = {1, 0, 1, 0, 3, 1, 1, 0, 1, 3, 4, 1, 0, 0, 3, 0, 3};

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3)
        return 2;

    // The tree comes first and goes last.
    HostTree tree;
    auto* const symbol = tree.Add<IntegerValue>(QStringLiteral("Receiver/Symbol"));
    auto* const available = tree.Add<FlagValue>(QStringLiteral("Receiver/Available"));
    auto* const text = tree.Add<TextValue>(QStringLiteral("Receiver/Text"));
    auto* const alphabet = tree.Add<ValueSelection>(QStringLiteral("Receiver/Alphabet"));
    auto* const folder = tree.Add<TextValue>(QStringLiteral("Receiver/AlphabetFolder"));
    auto* const frequency = tree.Add<RealValue>(QStringLiteral("Receiver/Frequency"));
    auto* const saveFiles = tree.Add<FlagValue>(QStringLiteral("Receiver/SaveFiles"));
    auto* const saveDocument = tree.Add<FlagValue>(QStringLiteral("Receiver/SaveDocument"));
    auto* const textFile = tree.Add<TextValue>(QStringLiteral("Receiver/TextFile"));
    tree.Add<TextValue>(QStringLiteral("Receiver/CodeFile"));
    tree.Add<TextValue>(QStringLiteral("Receiver/Document"));

    available->SetValue(true, nullptr);
    folder->SetValue(QString::fromLocal8Bit(argv[1]), nullptr);
    alphabet->AddItem(QStringLiteral("International"), 0, 0, nullptr);
    alphabet->Select(QStringLiteral("International"), nullptr);
    frequency->SetValue(7025000, nullptr);

    MorseHandler handler;
    handler.SetSymbol_ValuePath(QStringLiteral("Receiver/Symbol"));
    handler.SetMorseAvailable_ValuePath(QStringLiteral("Receiver/Available"));
    handler.SetMorseText_ValuePath(QStringLiteral("Receiver/Text"));
    handler.SetMorseAlphabet_ValuePath(QStringLiteral("Receiver/Alphabet"));
    handler.SetMorseAlphabet_DirectoryPath(QStringLiteral("Receiver/AlphabetFolder"));
    handler.SetFrequency_ValuePath(QStringLiteral("Receiver/Frequency"));
    handler.SetSaveDirectoryPath(
        QString::fromLocal8Bit(argv[2]), QStringLiteral("Receiver/TextFile"),
        QStringLiteral("Receiver/CodeFile"), QStringLiteral("Receiver/Document"));
    handler.SetMorseSaveToFile_ValuePath(QStringLiteral("Receiver/SaveFiles"));
    handler.SetMorseXmlSaveToFile_ValuePath(QStringLiteral("Receiver/SaveDocument"));

    Screen screen(text);
    if (!handler.StartNewMorseSession())
        std::fputs("no such alphabet, the built-in one is used\n", stderr);
    saveFiles->SetValue(true, nullptr);

    // A transmission: the time of its signal before the codes that were heard then.
    unsigned long long time_us = 1494584100123456; // 2017-05-12 10:15:00.123456 UTC
    handler.SetTimestamp(time_us);
    for (const int code : CODES) {
        time_us += 100000;
        if (code >= 3)
            handler.SetTimestamp(time_us);
        report(symbol, code);
    }
    saveDocument->HasChanged(eCHANGE_FORCED, nullptr);

    std::printf("\n%s\n", qPrintable(textFile->GetValue()));
    handler.EndMorseSession();
    return 0;
}
