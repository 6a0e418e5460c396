// SPDX-License-Identifier: MIT
// A host that loads the library at run time: it brings the contract, the library brings the rest.
#include "charmap/ialphabethandler.h"
#include "host/standin/hosttree.h"
#include "host/standin/tracelog.h"
#include "host/values.h"
#include "session/morsehandler.h"

#include <QDir>
#include <QtTest>

#include <dlfcn.h>
#include <new>

namespace {

// Member functions are called as what they are in the Itanium ABI: functions whose first argument
// is the object.
class Plugin
{
public:
    Plugin()
        : m_handle(dlopen(path().toUtf8().constData(), RTLD_NOW | RTLD_LOCAL))
    {
    }
    ~Plugin()
    {
        if (m_handle)
            dlclose(m_handle);
    }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    static QString path()
    {
        return qEnvironmentVariable("STAGE") + QLatin1Char('/') + qEnvironmentVariable("LIBDIR") +
               QStringLiteral("/libmorsehandler.so.0");
    }

    bool isLoaded() const { return m_handle != nullptr; }

    template <typename... Arguments>
    void call(const char* name, Arguments... arguments) const
    {
        using Function = void (*)(Arguments...);
        const auto function = reinterpret_cast<Function>(dlsym(m_handle, name));
        QVERIFY2(function, name);
        function(arguments...);
    }

    // An object of the library, as `new` would make it: deleted through its table.
    template <typename Class>
    Class* make(const char* constructor) const
    {
        void* const place = ::operator new(sizeof(Class));
        call(constructor, place);
        return static_cast<Class*>(place);
    }

private:
    void* m_handle;
};

class Display : public IObserver
{
public:
    explicit Display(TextValue* text)
        : m_text(text)
    {
        m_text->AddObserver(this);
    }
    ~Display() override { m_text->DeleteObserver(this); }

    void Update(Observable*, TChangeCode code) override
    {
        if (code == eCHANGE_CONTENT)
            shown += m_text->GetValue();
    }

    QString shown;

private:
    TextValue* m_text;
};

} // namespace

class tst_Dlopen : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theProgramItselfDoesNotBringTheLibrary()
    {
        QVERIFY(!dlsym(RTLD_DEFAULT, "_ZN12MorseHandlerC1Ev"));
        QVERIFY(dlsym(RTLD_DEFAULT, "_ZN4Tree8InstanceEv"));
    }

    void loadingAsksTheHostForNothing()
    {
        TraceRecorder traces;
        const Plugin plugin;
        QVERIFY2(plugin.isLoaded(), dlerror());
        QCOMPARE(traces.Messages(), QStringList());
    }

    void aHostGetsTextOutOfAHandler()
    {
        const Plugin plugin;
        QVERIFY2(plugin.isLoaded(), dlerror());
        HostTree tree;
        const QString symbolPath = QStringLiteral("Symbol");
        const QString availablePath = QStringLiteral("Available");
        const QString textPath = QStringLiteral("Text");
        auto* const symbol = tree.Add<IntegerValue>(symbolPath);
        tree.Add<FlagValue>(availablePath)->SetValue(true, nullptr);
        Display display(tree.Add<TextValue>(textPath));

        auto* const handler = plugin.make<MorseHandler>("_ZN12MorseHandlerC1Ev");
        void* const object = handler;
        plugin.call("_ZN12MorseHandler19SetSymbol_ValuePathERK7QString", object, &symbolPath);
        plugin.call("_ZN12MorseHandler27SetMorseAvailable_ValuePathERK7QString", object,
                    &availablePath);
        plugin.call("_ZN12MorseHandler22SetMorseText_ValuePathERK7QString", object, &textPath);
        plugin.call("_ZN12MorseHandler20StartNewMorseSessionEv", object);

        // From here on only values change, as a demodulator changes them.
        for (const int code : {0, 1, 3, 1, 0, 0, 0, 3, 4}) {
            if (symbol->GetValue() == code)
                symbol->HasChanged(eCHANGE_CONTENT, nullptr);
            else
                symbol->SetValue(code, nullptr);
        }
        QCOMPARE(display.shown, QStringLiteral("AB "));
        delete handler;
    }

    void anAlphabetIsUsedThroughItsTableAlone()
    {
        constexpr std::size_t SIZE_BYTES = 256; // more than it takes; the host need not know
        const Plugin plugin;
        QVERIFY2(plugin.isLoaded(), dlerror());
        void* const place = ::operator new(SIZE_BYTES);
        plugin.call("_ZN18SimpleMorseHandlerC1Ev", place);
        auto* const handler = static_cast<IAlphabetHandler*>(place);
        handler->SetAlphabetsDir(qEnvironmentVariable("STAGE") +
                                 QStringLiteral("/share/morsehandler/alphabets"));
        QVERIFY(handler->AvailableAlphabets().contains(QStringLiteral("Greek")));
        QVERIFY(handler->SetAlphabet(QStringLiteral("Greek")));
        QCOMPARE(handler->Alphabet(), QStringLiteral("Greek"));
        QVERIFY(!handler->TextDirectionRTL());
        delete handler;
    }

    void itCanBeUnloadedAndLoadedAgain()
    {
        for (int i = 0; i < 3; ++i) {
            const Plugin plugin;
            QVERIFY2(plugin.isLoaded(), dlerror());
            delete plugin.make<MorseHandler>("_ZN12MorseHandlerC1Ev");
        }
    }
};

QTEST_GUILESS_MAIN(tst_Dlopen)
#include "tst_dlopen.moc"
