// SPDX-License-Identifier: MIT
// A mapping directory in a host that does what it likes. The input is a script of one character an
// operation (see Scene::step); what an observer does in between is taken from the same script.
#include "charmap/mappingdirectory.h"
#include "fuzz/fuzzing.h"
#include "host/standin/configuration.h"
#include "host/standin/hosttree.h"
#include "tables/charactertable.h"

#include <QScopeGuard>

#include <algorithm>
#include <array>
#include <memory>

using fuzzing::require;

namespace {

constexpr int MAX_HISTORY = 10000;
constexpr int MOST_STEPS = 500;

/// The maps and the decoders of every scene.
const fuzzing::Folder& scenery()
{
    static const fuzzing::Folder folder;
    static const bool isReady = [] {
        folder.write("Plain.ita2.map", "A\t0x410\nB\t0x411\n0xe9\tE\n\n");
        folder.write("Plain.ascii.map", "A\t0x391\n0x42\t0x0\n\n");
        folder.write("Rtl.ascii.map", "@ TextDirection RL\nA\t0x5d0\n\n");
        folder.write("ITA2.codec", "ITA2\nRL\nA;0x42\n");
        folder.write("Two - parts.ascii.map", "A\tx\n\n");
        QByteArray modules;
        for (const char* row : {"I Teletype", "A Packet", "B Plain", "N Voice"})
            modules += "1 1 R " + QByteArray("0 ").repeated(26) + row + "\n";
        setConfigurationValue(QString(), "DecoderModulesFile",
                              folder.write("modules.txt", modules));
        return true;
    }();
    Q_UNUSED(isReady)
    return folder;
}

constexpr std::array<const char*, 4> DECODERS = {"Teletype", "Packet", "Plain", "unknown"};
constexpr std::array<const char*, 8> SELECTIONS = {
    "Default",     "Plain - ITA2",        "Plain - ASCII", "Rtl - ASCII",
    "ITA2 - ITA2", "Two - parts - ASCII", "missing",       ""};

struct Role
{
    const char* name;
    ValueBase* (*make)();
    bool (*attach)(MappingDirectory& mapping, const QString& path);
};

template <typename Kind>
ValueBase* make()
{
    return new Kind;
}

#define ROLE(Kind, Name)                                                                           \
    Role                                                                                           \
    {                                                                                              \
#Name, make < Kind>,                                                                       \
            [](MappingDirectory & mapping,                                                         \
               const QString& path) { return mapping.Set##Name##_ValuePath(path); }                \
    }

const std::array<Role, 12> ROLES = {
    Role{"DataInput", make<TextValue>,
         [](MappingDirectory& mapping, const QString& path) {
             return mapping.SetDataInput_ValuePath(path, nullptr);
         }},
    ROLE(TextValue, DataOutput),
    ROLE(ValueSelection, AvailableMaps),
    ROLE(ValueSelection, Decoder),
    ROLE(IntegerValue, MaxNumberOfChars),
    ROLE(FlagValue, TextDirectionRTL),
    ROLE(FlagValue, SaveToFile),
    ROLE(FlagValue, TranslateAll),
    ROLE(TextValue, TranslatedFile),
    ROLE(RealValue, Frequency),
    ROLE(ValueSelection, Modtype),
    ROLE(IntegerValue, ChannelIndex),
};

class Scene : private IObserver
{
public:
    Scene(const std::uint8_t* data, std::size_t size)
        : m_bytes(data, size)
        , m_mapping(std::make_unique<MappingDirectory>(scenery().path()))
    {
        for (std::size_t i = 0; i < ROLES.size(); ++i)
            create(i, false);
        for (const Role& role : ROLES)
            require(role.attach(*m_mapping, pathOf(role.name, false)), "a value can be attached");
    }

    void run()
    {
        for (int i = 0; i < MOST_STEPS && !m_bytes.isEmpty(); ++i) {
            m_wasDisturbed = false;
            step();
            if (!m_bytes.isEmpty() && i % 8 != 0)
                continue;
            require(m_mapping->availableMaps(eCHARSET_BOTH) ==
                        m_mapping->availableMaps(eCHARSET_ITA2) +
                            m_mapping->availableMaps(eCHARSET_ASCII),
                    "the maps for both sets are those for each");
            // Values that were never attached here bound nothing.
            if (m_isBounded)
                require(m_mapping->TranslateHistory().size() <= MAX_HISTORY,
                        "the history is bounded");
        }
    }

private:
    static QString pathOf(const char* name, bool isSecond)
    {
        return QString("t/") + name + (isSecond ? "2" : "");
    }

    template <typename Kind>
    Kind* find(const char* name)
    {
        return dynamic_cast<Kind*>(m_tree.Find(pathOf(name, false)));
    }

    const Role& anyRole() { return ROLES[m_bytes.byte() % ROLES.size()]; }

    ValueBase* anyValue()
    {
        const bool isSecond = m_bytes.byte() % 4 == 3;
        return m_tree.Find(pathOf(anyRole().name, isSecond));
    }

    void create(std::size_t role, bool isWatched)
    {
        std::unique_ptr<ValueBase> value(ROLES[role].make());
        value->SetName(ROLES[role].name, nullptr);
        if (!m_tree.Insert("t/", value.get()))
            return;
        if (auto* const selection = dynamic_cast<ValueSelection*>(value.get())) {
            for (const char* name : DECODERS)
                selection->AddItems({name}, nullptr);
        }
        if (isWatched)
            value->AddObserver(this);
        (void)value.release(); // the tree has it
    }

    /// Observers may do something else when they are notified.
    void Update(Observable*, TChangeCode code) override
    {
        m_wasDisturbed = true;
        if (code == eCHANGE_DELETED || m_disturbances <= 0)
            return;
        --m_disturbances;
        step();
    }

    void step()
    {
        ++m_depth;
        const auto done = qScopeGuard([this] { --m_depth; });
        switch (m_bytes.byte()) {
        case 'I': { // input text
            const QByteArray bytes = m_bytes.take(m_bytes.byte() % 64U);
            setInput(QString::fromUtf8(bytes));
            break;
        }
        case 't':
            translate();
            break;
        case 'D':
            if (auto* const decoder = find<ValueSelection>("Decoder"))
                decoder->Select(QString(DECODERS[m_bytes.byte() % DECODERS.size()]), nullptr);
            break;
        case 'M':
            if (auto* const maps = find<ValueSelection>("AvailableMaps"))
                maps->Select(QString(SELECTIONS[m_bytes.byte() % SELECTIONS.size()]), nullptr);
            break;
        case 'i':
            init(SELECTIONS[m_bytes.byte() % SELECTIONS.size()]);
            break;
        case 'e':
            m_mapping->Enabled(m_bytes.byte() % 4 != 3);
            break;
        case 'a':
            attach();
            break;
        case 'd':
            if (ValueBase* const value = anyValue()) {
                if (value->GetState() != eSTATE_DELETED)
                    delete value;
            }
            break;
        case 'c': {
            const std::uint8_t number = m_bytes.byte();
            create(number % ROLES.size(), number >= 128);
            break;
        }
        case 'N': // any notification
            if (ValueBase* const value = anyValue())
                value->HasChanged(static_cast<TChangeCode>(m_bytes.byte()), nullptr);
            break;
        case 'm':
            if (auto* const max = find<IntegerValue>("MaxNumberOfChars")) {
                const int least = (m_bytes.byte() + 128) % 256 - 128;
                max->SetMinMax(least, least + m_bytes.byte(), 1, nullptr);
            }
            break;
        case 'h':
            m_mapping->ClearHistory();
            break;
        case 's': // observers may act from now on
            m_disturbances = m_bytes.byte() % 16;
            break;
        case 'x': // another directory; none is deleted while it notifies observers
            if (m_depth > 1)
                break;
            m_mapping = std::make_unique<MappingDirectory>(scenery().path());
            m_isBounded = false;
            break;
        case 'p':
            m_mapping->SetIpcIdentifier(m_bytes.take(m_bytes.byte() % 8U));
            m_mapping->SetTranslatedFileDirectory(scenery().path());
            break;
        default:
            break;
        }
    }

    void attach()
    {
        // A second value of the same kind may be at another path; a missing one is created.
        const bool isSecond = m_bytes.byte() % 4 == 3;
        const Role& role = anyRole();
        role.attach(*m_mapping, pathOf(role.name, isSecond));
        if (QLatin1String(role.name) == QLatin1String("MaxNumberOfChars"))
            m_isBounded = m_tree.Find(pathOf(role.name, false)) && !isSecond;
    }

    static bool isTranslation(const QString& text, const QString& translated)
    {
        const QByteArray bytes = text.toLatin1();
        const QString latin1 = QString::fromLatin1(bytes.constData(), bytes.size());
        if (translated == text || translated == latin1)
            return true;
        static const std::array<CharacterMapping, 5> TABLES = {{
            {{'A', QChar(0x410)}, {'B', QChar(0x411)}, {char(0xe9), QChar('E')}},
            {{'A', QChar(0x391)}, {'B', QChar(0)}},
            {{'A', QChar(0x5d0)}},
            {{'A', QChar('B')}},
            {{'A', QChar('x')}},
        }};
        return std::any_of(TABLES.begin(), TABLES.end(), [&](const CharacterMapping& table) {
            return translateForward(table, latin1) == translated;
        });
    }

    void setInput(const QString& text)
    {
        auto* const input = find<TextValue>("DataInput");
        if (!input)
            return;
        input->SetValue(text, nullptr);
        if (find<TextValue>("DataInput") != input || m_wasDisturbed)
            return;
        input->HasChanged(eCHANGE_FORCED, nullptr);
        if (find<TextValue>("DataInput") != input || m_wasDisturbed)
            return;
        // Where both values are attached just now, the output is a translation of the input.
        m_mapping->SetDataInput_ValuePath(pathOf("DataInput", false), nullptr);
        m_mapping->SetDataOutput_ValuePath(pathOf("DataOutput", false));
        input->HasChanged(eCHANGE_FORCED, nullptr);
        auto* const output = find<TextValue>("DataOutput");
        if (output && !m_wasDisturbed)
            require(isTranslation(text, output->GetValue()),
                    "the output is the translation of the input");
    }

    void translate()
    {
        const QByteArray bytes = m_bytes.take(m_bytes.byte() % 64U);
        const QString text = QString::fromUtf8(bytes);
        const QString translated = m_mapping->translate(text);
        require(translated.size() == text.size(), "one character for each");
        require(isTranslation(text, translated), "a translation is that of a map");
    }

    void init(const char* selection)
    {
        m_mapping->Init(selection);
        auto* const maps = find<ValueSelection>("AvailableMaps");
        if (!maps || m_wasDisturbed)
            return;
        m_mapping->SetAvailableMaps_ValuePath(pathOf("AvailableMaps", false));
        m_mapping->Init(selection);
        if (m_wasDisturbed)
            return;
        require(maps->GetItemCount() >= 1 &&
                    maps->GetItem(long(0))->GetName() == QLatin1String("Default"),
                "the default is offered first");
        require(maps->GetCurrentItem() != nullptr, "one map is chosen");
    }

    fuzzing::Bytes m_bytes;
    HostTree m_tree;
    std::unique_ptr<MappingDirectory> m_mapping;
    int m_disturbances = 0;
    int m_depth = 0; ///< steps within steps
    bool m_wasDisturbed = false;
    bool m_isBounded = true;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Scene(data, size).run();
    return 0;
}
