// SPDX-License-Identifier: MIT
// The host's decoder modules, as the decoder modules file lists them.
// No API: used inside the library only.
#pragma once

#include <QString>

#include <array>
#include <vector>

namespace Quillon {

/// One line of the file.
struct DecoderModule
{
    qint32 id = 0;
    double number = 0;
    char type = 0;
    /// In an order of their own; ask for them by column.
    std::array<bool, 26> flags{};
    /// Base character set: "I" ITA2, "A" ASCII, "B" both, anything else none.
    char charset = 'N';
    QString name;

    /// The flag of a column of the file, 4 to 29.
    bool ColumnFlag(int column) const;
    void SetColumnFlag(int column, bool flag);
};

/// The decoder modules of the process, sorted by name whatever its letter case.
///
/// The file is Latin-1, one module a line, its columns separated by white space: an id, a number
/// and a letter, 26 flags, the letter of the base character set, and the name up to the end of the
/// line. Lines that hold no such sequence anywhere are skipped.
///
/// All operations may be called from any thread, but for the flag 0.
class DecoderModulesCenter
{
public:
    /// The single object, created by the first call with its file name. An empty name stands for
    /// the one that the configuration holds under "DecoderModulesFile".
    static DecoderModulesCenter& Instance(QString fileName);

    explicit DecoderModulesCenter(const QString& fileName);
    virtual ~DecoderModulesCenter();

    DecoderModulesCenter(const DecoderModulesCenter&) = delete;
    DecoderModulesCenter& operator=(const DecoderModulesCenter&) = delete;

    /// Replaces all modules by those of the file. False, with a trace and the modules kept, when it
    /// cannot be opened.
    bool ReadModulesFile();
    /// Writes a file that reads back to the same modules. False when it cannot be written.
    bool WriteModulesFile(const QString& path);

    /// Replaces `modules` by all modules. With `reread` the single object reads its file again
    /// first.
    void GetModules(std::vector<DecoderModule>& modules, bool reread);

    // Queries by modulation family and mode add the modules that have the mode to the result. The
    // pairs are FSK with FSK2, FSK4 and MSK; PSK with PSK2, PSK4 and PSK8; McPSK with McPSK2 and
    // McPSK4; and PSK31 with any mode. With `reread` the file is read again first.

    /// Names, separated by ";".
    void GetNames(const QString& family, const QString& mode, QString& names, bool reread);
    void GetModules(const QString& family, const QString& mode, std::vector<DecoderModule>& modules,
                    bool reread);
    void GetNumbers(const QString& family, const QString& mode, std::vector<double>& numbers,
                    bool reread);

    // The same by the name of a mode alone. Of those only PSK31 has a column that is known here;
    // every other name finds nothing.
    void GetNames(const QString& mode, QString& names, bool reread);
    void GetModules(const QString& mode, std::vector<DecoderModule>& modules, bool reread);
    void GetNumbers(const QString& mode, std::vector<double>& numbers, bool reread);

    /// The family of a mode: "ASCII", "PSK31_BPSK" or "NONE".
    void GetFamily(const QString& mode, QString& family, bool reread);

    // A switch that means nothing here.
    void SetFlag0(bool flag);
    bool GetFlag0() const;

private:
    /// Calls `visit` under the lock for every module that has the flag of one of the columns.
    template <typename Visit>
    void Query(const std::vector<int>& columns, bool reread, Visit visit);

    QString m_fileName;
    std::vector<DecoderModule> m_modules;
    bool m_flag0 = false;
};

/// Whether a line of the file holds a module somewhere, as QRegExp finds
/// "\d+\s+\d+\s+\w(\s+\d){26}\s+\w\s+\w+", but in a single pass whatever the line holds.
bool holdsDecoderModule(const QString& line);

} // namespace Quillon
