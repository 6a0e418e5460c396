// SPDX-License-Identifier: MIT
// A host that keys "SOS" into the value that a demodulator would write, and prints the text.
#include "morsehandler/host/standin/hosttree.h"
#include "morsehandler/host/values.h"
#include "morsehandler/session/morsehandler.h"

#include <cstdio>

class Display : public IObserver
{
public:
    explicit Display(TextValue& text)
        : m_text(text)
    {
        m_text.AddObserver(this);
    }
    ~Display() override { m_text.DeleteObserver(this); }

    void Update(Observable*, TChangeCode code) override
    {
        if (code == eCHANGE_CONTENT)
            std::fputs(m_text.GetValue().toUtf8().constData(), stdout);
    }

private:
    TextValue& m_text;
};

int main()
{
    HostTree tree;
    auto* const symbol = tree.Add<IntegerValue>(QStringLiteral("Receiver/Symbol"));
    auto* const available = tree.Add<FlagValue>(QStringLiteral("Receiver/Available"));
    Display display(*tree.Add<TextValue>(QStringLiteral("Receiver/Text")));

    MorseHandler handler;
    available->SetValue(true, nullptr);
    handler.SetSymbol_ValuePath(QStringLiteral("Receiver/Symbol"));
    handler.SetMorseAvailable_ValuePath(QStringLiteral("Receiver/Available"));
    handler.SetMorseText_ValuePath(QStringLiteral("Receiver/Text"));
    handler.StartNewMorseSession();

    for (const int code : {0, 0, 0, 3, 1, 1, 1, 3, 0, 0, 0, 3}) {
        if (symbol->GetValue() == code)
            symbol->HasChanged(eCHANGE_CONTENT, nullptr); // an equal value notifies nobody
        else
            symbol->SetValue(code, nullptr);
    }
    std::fputs("\n", stdout);
    return 0;
}
