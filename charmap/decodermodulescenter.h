// SPDX-License-Identifier: MIT
// The host's decoder modules, as the decoder modules file lists them.
// Used inside the library only, the header is not installed; yet the order of its fields is binary
// interface, since hosts share the class.
#pragma once

#include "tables/decodermodulesfile.h"

#include <QString>

#include <vector>

namespace Quillon {

/// The decoder modules of the process, sorted by name whatever its letter case.
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

    // The same by the name of a mode alone. Only PSK31 is known by its name; every other one finds
    // nothing.
    void GetNames(const QString& mode, QString& names, bool reread);
    void GetModules(const QString& mode, std::vector<DecoderModule>& modules, bool reread);
    void GetNumbers(const QString& mode, std::vector<double>& numbers, bool reread);

    /// The family of a mode: "ASCII", "PSK31_BPSK" or "NONE".
    void GetFamily(const QString& mode, QString& family, bool reread);

    // A switch without effect.
    void SetFlag0(bool flag);
    bool GetFlag0() const;

private:
    /// Calls `visit` under the lock for every module that has the flag of one of the columns.
    template <typename Visit>
    void Query(const std::vector<int>& columns, bool reread, Visit visit);

    // The order of the fields is binary interface.
    QString m_fileName;
    std::vector<DecoderModule> m_modules;
    bool m_flag0 = false;
};

} // namespace Quillon
