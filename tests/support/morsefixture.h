// SPDX-License-Identifier: MIT
// A Morse handler wired to a tree of its own, as a host does it.
#pragma once

#include "host/standin/hosttree.h"
#include "host/values.h"
#include "morse/symbolcodes.h"
#include "session/morsehandler.h"

#include <QString>
#include <QStringList>

#include <functional>

/// Every value that a handler may be wired to, at paths below "Morse/".
struct MorseValues
{
    static QString path(const char* name) { return QStringLiteral("Morse/") + QLatin1String(name); }

    HostTree tree;
    IntegerValue* symbol = tree.Add<IntegerValue>(path("Symbol"));
    FlagValue* available = tree.Add<FlagValue>(path("Available"));
    TextValue* text = tree.Add<TextValue>(path("Text"));
    ValueSelection* alphabet = tree.Add<ValueSelection>(path("Alphabet"));
    TextValue* alphabetDirectory = tree.Add<TextValue>(path("AlphabetDirectory"));
    FlagValue* rightToLeft = tree.Add<FlagValue>(path("RightToLeft"));
    FlagValue* saveToFile = tree.Add<FlagValue>(path("SaveToFile"));
    FlagValue* saveDocument = tree.Add<FlagValue>(path("SaveDocument"));
    RealValue* frequency = tree.Add<RealValue>(path("Frequency"));
    ValueSelection* modulation = tree.Add<ValueSelection>(path("Modulation"));
    ValueSelection* decoderResult = tree.Add<ValueSelection>(path("DecoderResult"));
    FlagValue* settingsRequest = tree.Add<FlagValue>(path("SettingsRequest"));
    TextValue* settings = tree.Add<TextValue>(path("Settings"));
    TextValue* textFileName = tree.Add<TextValue>(path("TextFileName"));
    TextValue* codeFileName = tree.Add<TextValue>(path("CodeFileName"));
    TextValue* xmlFileName = tree.Add<TextValue>(path("XmlFileName"));
};

/// Notes every content change of a text value.
class TextLog : public IObserver
{
public:
    explicit TextLog(TextValue* value)
        : m_value(value)
    {
        m_value->AddObserver(this);
    }
    ~TextLog() override
    {
        if (m_value)
            m_value->DeleteObserver(this);
    }
    TextLog(const TextLog&) = delete;
    TextLog& operator=(const TextLog&) = delete;

    void Update(Observable* /*source*/, TChangeCode code) override
    {
        if (code == eCHANGE_DELETED) {
            m_value->DeleteObserver(this);
            m_value = nullptr;
        } else if (code == eCHANGE_CONTENT) {
            texts += m_value->GetValue();
            if (onText)
                onText(texts.constLast());
        }
    }

    QString joined() const { return texts.join(QString()); }

    QStringList texts;
    std::function<void(const QString& text)> onText;

private:
    TextValue* m_value;
};

/// The usual case: symbol, text and availability attached, availability true.
struct MorseFixture : MorseValues
{
    MorseFixture()
    {
        available->SetValue(true, nullptr);
        handler.SetSymbol_ValuePath(path("Symbol"));
        handler.SetMorseAvailable_ValuePath(path("Available"));
        handler.SetMorseText_ValuePath(path("Text"));
    }

    /// Writes a code as a demodulator does: one that repeats is announced.
    void send(int code)
    {
        if (symbol->GetValue() == code)
            symbol->HasChanged(eCHANGE_CONTENT, nullptr);
        else
            symbol->SetValue(code, nullptr);
    }

    /// ".", "-", "c", "w", "n" (line end), and "d", "l", "p" for the three timing errors.
    void send(const char* symbols)
    {
        for (const char* s = symbols; *s != '\0'; ++s)
            send(codeOf(*s));
    }

    static int codeOf(char symbol)
    {
        switch (symbol) {
        case '.':
            return eSYMBOL_DOT;
        case '-':
            return eSYMBOL_DASH;
        case 'c':
            return eSYMBOL_NEW_CHAR;
        case 'w':
            return eSYMBOL_NEW_WORD;
        case 'n':
            return eSYMBOL_NEW_LINE;
        case 'd':
            return eSYMBOL_DOT_TOO_SHORT;
        case 'l':
            return eSYMBOL_DASH_TOO_LONG;
        case 'p':
            return eSYMBOL_PAUSE_TOO_SHORT;
        default:
            return 2;
        }
    }

    /// Attaches everything that has to do with files.
    void wireFiles(const QString& directory)
    {
        handler.SetSaveDirectoryPath(directory, path("TextFileName"), path("CodeFileName"),
                                     path("XmlFileName"));
        handler.SetMorseSaveToFile_ValuePath(path("SaveToFile"));
        handler.SetMorseXmlSaveToFile_ValuePath(path("SaveDocument"));
        handler.SetGenXmlTunerDemodulatorSettingsPath(path("SettingsRequest"));
        handler.SetXmlTunerDemodulatorSettings(path("Settings"));
    }

    MorseHandler handler;
};
