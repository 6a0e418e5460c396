// SPDX-License-Identifier: MIT
// Whether what was received to be saved has reached the disk.
#pragma once

#include <QFile>
#include <QString>

#include <memory>
#include <vector>

namespace morsehost {

/// Grows with what could not be saved, not with what was. Files that are moved away or deleted
/// after they were written were saved.
class SaveLedger
{
public:
    /// A dot or dash that a code file has to hold.
    void symbolReceived() { ++m_symbols; }
    /// The code file that is written from now on.
    void codeFileBegun(const QString& path);
    /// A document that the next save writes.
    void documentBegun(const QString& path);
    /// A save is done. It may have written earlier documents too.
    void documentsSaved();

    /// Dots and dashes that no code file holds; once they are closed.
    long long lostSymbols();
    /// Documents that no save has written.
    long long lostDocuments() const;

private:
    struct CodeFile
    {
        QString path;
        std::unique_ptr<QFile> file; // of the newest: it is found by this when it is renamed
        long long symbols = 0;
    };

    static void count(CodeFile& code);

    long long m_symbols = 0;
    std::vector<CodeFile> m_codeFiles; // one for each 256 kB
    std::vector<QString> m_documents;  // that are not on disk
    long long m_lostDocuments = 0;     // that are waited for no longer
};

} // namespace morsehost
