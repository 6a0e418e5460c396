// SPDX-License-Identifier: MIT
// morsehost map: a decoder's text, translated live through a mapping directory.
#include "app/commands/commands.h"

#include "app/console/complain.h"
#include "app/console/exitstatus.h"
#include "app/options/tableoptions.h"
#include "station/io/descriptor.h"
#include "station/io/input.h"
#include "station/io/interrupt.h"
#include "station/io/output.h"
#include "station/io/systemtext.h"
#include "station/mapstation.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <memory>
#include <unistd.h>

namespace morsehost {

namespace {

constexpr int PIECE_BYTES = 4096;

// What is longer is no command.
constexpr int MAX_COMMAND_BYTES = 1024;

// Shows the text and the answers to commands, as they are or as objects.
class Screen
{
public:
    explicit Screen(bool json)
        : m_json(json)
        , m_output(STDOUT_FILENO)
    {
    }

    void text(const QString& text) { show("text", text); }

    void history(const QString& text)
    {
        show("history", text);
        if (!m_json && !text.endsWith(QLatin1Char('\n')))
            m_output.write("\n");
    }

    void maps(const QStringList& names, const QString& current)
    {
        if (m_json) {
            object({{QStringLiteral("event"), QStringLiteral("maps")},
                    {QStringLiteral("names"), QJsonArray::fromStringList(names)},
                    {QStringLiteral("current"), current}});
            return;
        }
        for (const QString& name : names)
            m_output.write(((name == current ? QStringLiteral("* ") : QStringLiteral("  ")) + name +
                            QLatin1Char('\n'))
                               .toUtf8());
    }

    void map(const QString& name, bool rightToLeft)
    {
        if (m_json)
            object({{QStringLiteral("event"), QStringLiteral("map")},
                    {QStringLiteral("name"), name},
                    {QStringLiteral("rightToLeft"), rightToLeft}});
    }

    const Output& output() const { return m_output; }

private:
    void show(const char* event, const QString& text)
    {
        if (!m_json)
            m_output.write(text.toUtf8());
        else if (!text.isEmpty())
            object(
                {{QStringLiteral("event"), QLatin1String(event)}, {QStringLiteral("text"), text}});
    }

    void object(const QJsonObject& object)
    {
        m_output.write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
    }

    bool m_json;
    Output m_output;
};

QString whyNotSelected(MapStation& station, const QString& map)
{
    const QStringList meant = station.mapsMeant(map);
    if (meant.isEmpty())
        return QStringLiteral("no map '%1' is offered (see 'morsehost maps')").arg(map);
    return QStringLiteral("the map '%1' can be '%2'").arg(map, meant.join(QLatin1String("' or '")));
}

// An operator at the station: what is typed is the decoder's text, but for lines that begin with a
// colon.
class Operator
{
public:
    Operator(MapStation& station, Screen& screen)
        : m_station(station)
        , m_screen(screen)
    {
    }

    /// False when something was not understood; that is said, and the rest goes on.
    bool isContent() const { return m_isContent; }

    void read(const char* bytes, int size)
    {
        int textStart = 0;
        for (int i = 0; i < size; ++i) {
            const char c = bytes[i];
            if (m_atLineStart && c == ':') {
                receive(bytes + textStart, i - textStart);
                m_inCommand = true;
                m_command.clear();
                ++m_line;
            } else if (m_inCommand && c == '\n') {
                obey();
                m_inCommand = false;
                textStart = i + 1;
            } else if (m_inCommand) {
                if (m_command.size() <= MAX_COMMAND_BYTES)
                    m_command += c;
            } else if (m_atLineStart) {
                ++m_line;
            }
            m_atLineStart = c == '\n';
        }
        if (!m_inCommand)
            receive(bytes + textStart, size - textStart);
    }

    void end()
    {
        if (m_inCommand)
            obey();
    }

    void selectMap(const QString& name)
    {
        if (m_station.selectMap(name))
            m_screen.map(m_station.currentMap(), m_station.isTextRightToLeft());
        else
            refuse(whyNotSelected(m_station, name));
    }

private:
    void receive(const char* bytes, int size)
    {
        if (size > 0)
            m_station.receive(QString::fromLatin1(bytes, size));
    }

    void obey()
    {
        const QString command = QString::fromUtf8(m_command.trimmed());
        const QString verb = command.section(QLatin1Char(' '), 0, 0);
        const QString name = command.section(QLatin1Char(' '), 1).trimmed();
        const bool isMap = verb == QLatin1String("map");
        const bool isDecoder = verb == QLatin1String("decoder");
        if ((isMap || isDecoder) && name.isEmpty()) {
            refuse(QStringLiteral("':%1' needs a name").arg(verb));
        } else if (isMap) {
            selectMap(name);
        } else if (isDecoder) {
            m_station.selectDecoder(name);
            m_screen.map(m_station.currentMap(), m_station.isTextRightToLeft());
        } else if (command == QLatin1String("maps")) {
            m_screen.maps(m_station.maps(), m_station.currentMap());
        } else if (command == QLatin1String("history")) {
            m_screen.history(m_station.history());
        } else if (command == QLatin1String("clear")) {
            m_station.clearHistory();
        } else if (command == QLatin1String("enable")) {
            m_station.enable();
        } else if (command == QLatin1String("disable")) {
            m_station.disable();
        } else {
            refuse(QStringLiteral("no command ':%1'").arg(command.left(40)));
        }
    }

    void refuse(const QString& reason)
    {
        complain(QStringLiteral("line %1").arg(m_line), reason);
        m_isContent = false;
    }

    MapStation& m_station;
    Screen& m_screen;
    bool m_isContent = true;
    bool m_atLineStart = true;
    bool m_inCommand = false;
    QByteArray m_command;
    long long m_line = 0;
};

int run(Arguments& arguments)
{
    const QString decoder = arguments.text("decoder");
    if (decoder.isEmpty())
        arguments.fail(QStringLiteral("--decoder NAME is missing"));
    const QString mapsDirectory = directoryOption(arguments, "maps", "maps");
    if (!arguments.error().isEmpty())
        return EXIT_BAD_USAGE;
    if (const QString why = morsehost::whyNoFolder(mapsDirectory); !why.isEmpty()) {
        complain(mapsDirectory, why);
        return EXIT_BAD_INPUT;
    }
    const Descriptor descriptor(arguments.operands().value(0, QStringLiteral("-")));
    if (!descriptor.error().isEmpty()) {
        complain(descriptor.name(), descriptor.error());
        return EXIT_BAD_INPUT;
    }

    if (!configureDecoderModules(arguments))
        return EXIT_BAD_INPUT;
    Screen screen(arguments.isSet("json"));
    HostTree tree;
    MapStation station(tree, QStringLiteral("Receiver1"), mapsDirectory,
                       [&screen](const QString& text) { screen.text(text); });
    station.enable();
    station.selectDecoder(decoder);
    const bool isInteractive = arguments.isSet("interactive");
    if (station.maps().size() == 1 && !isInteractive) {
        complain(decoder, QStringLiteral("no map fits this decoder (see 'morsehost decoders')"));
        return EXIT_BAD_INPUT;
    }
    const QString map =
        arguments.isSet("map") ? arguments.text("map") : QString(QLatin1String(NO_MAP));
    if (!station.selectMap(map)) {
        complain(decoder, whyNotSelected(station, map));
        return EXIT_BAD_INPUT;
    }
    screen.map(station.currentMap(), station.isTextRightToLeft());

    Operator person(station, screen);
    Input input(descriptor.number());
    const auto piece = std::make_unique<char[]>(PIECE_BYTES);
    while (!screen.output().hasFailed()) {
        const int size = static_cast<int>(input.read(piece.get(), PIECE_BYTES));
        if (size == 0)
            break;
        if (isInteractive)
            person.read(piece.get(), size);
        else
            station.receive(QString::fromLatin1(piece.get(), size));
    }
    if (isInteractive && !isInterrupted())
        person.end();

    if (!input.error().isEmpty()) {
        complain(descriptor.name(), input.error());
        return EXIT_BAD_INPUT;
    }
    if (!screen.output().error().isEmpty()) {
        complain(QStringLiteral("standard output"), screen.output().error());
        return EXIT_BAD_INPUT;
    }
    return person.isContent() ? EXIT_DONE : EXIT_BAD_INPUT;
}

} // namespace

Command mapCommand()
{
    return {
        {"map",
         "[FILE|-]",
         0,
         1,
         "Translates a decoder's 8-bit characters live: through a map that can be changed\n"
         "meanwhile. With --interactive, lines that begin with ':' are commands: :map NAME,\n"
         ":decoder NAME, :maps, :history (all of it through the current map), :clear, :enable,\n"
         ":disable.",
         {mapsOption(),
          {"map", "NAME", "the map, as ':maps' lists it (default: \"Default\", none)"},
          {"decoder", "NAME", "the decoder that wrote them, as 'morsehost decoders' lists it"},
          decoderModulesOption(),
          {"interactive", nullptr, "execute lines that begin with ':'"},
          {"json", nullptr, "print one JSON object per line and event"}},
         "  morsehost map --decoder Baudot --map Russian received.txt\n"},
        run};
}

} // namespace morsehost
