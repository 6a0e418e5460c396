// SPDX-License-Identifier: MIT
// The grammar of a station's file: a row for each key that a section may hold, the lines where they
// stand, and the values of a section by these rows. What the values mean is stationfile's business.
#pragma once

#include "station/service/stationfile.h"

#include <QByteArray>
#include <QMap>
#include <QSettings>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace morsehost {
namespace stationfile {

inline constexpr const char* STATION = "station";
inline constexpr const char* RECEIVER = "receiver";
inline constexpr const char* PAGE = "page";
inline constexpr const char* MQTT = "mqtt";

enum class Kind { Text, Number, WholeNumber, Switch, Path };

/// Which decoders, or which sources of samples, a key is for.
enum Use : unsigned {
    MORSE = 1,
    BAND = 2,
    TELEPRINTER = 4,
    EVERY_DECODER = MORSE | BAND | TELEPRINTER,
    SAMPLES_ALONE = 8, ///< not for a recording
    RECORDING_ALONE = 16,
};

struct KeyRow
{
    ConfigurationKey key;
    double least;
    double most;
    const char* option; ///< of the decoder's command line, null where the station uses it itself
    Kind kind;
    unsigned use = EVERY_DECODER; ///< of a receiver's key
};

/// In the order of the manual.
const std::vector<KeyRow>& keyRows();

/// The lines of sections and keys, which QSettings does not report.
class Lines
{
public:
    explicit Lines(const QByteArray& content);

    /// 0 where there is none.
    int of(const QString& section, const QString& key = {}) const
    {
        return m_lines.value(section + QLatin1Char('\n') + key);
    }
    const QStringList& sections() const { return m_sections; }
    const std::vector<ConfigurationFault>& faults() const { return m_faults; }

private:
    void note(const QString& section, const QString& key, int number);

    QMap<QString, int> m_lines;
    QStringList m_sections;
    std::vector<ConfigurationFault> m_faults;
};

/// Values of one section by the rows of its kind. What it is constructed from must outlive it.
class SectionReader
{
public:
    SectionReader(QSettings& settings, const Lines& lines, const QString& section, const char* kind,
                  std::vector<ConfigurationFault>& faults);

    void fail(const QString& text, const char* key = "") { m_faults.push_back({line(key), text}); }

    bool has(const char* key) const { return m_settings.contains(pathOf(key)); }
    bool isOf(const KeyRow& row) const { return qstrcmp(row.key.section, m_kind) == 0; }
    int line(const char* key = "") const { return m_lines.of(m_section, QLatin1String(key)); }
    /// Values that are none give nothing, or `otherwise`: check() has the faults.
    QString text(const char* key) const;
    double number(const char* key, double otherwise) const;
    bool isOn(const char* key, bool otherwise) const;

    /// Every key: whether there is one of that name, and what it holds.
    void check();

private:
    QString pathOf(const char* key) const;
    void checkValue(const KeyRow& row, const QString& key);
    const KeyRow* findRow(const char* key) const;
    const KeyRow& rowOf(const char* key) const;

    QSettings& m_settings;
    const Lines& m_lines;
    QString m_section;
    const char* m_kind;
    std::vector<ConfigurationFault>& m_faults;
};

} // namespace stationfile
} // namespace morsehost
