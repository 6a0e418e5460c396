// SPDX-License-Identifier: MIT
#include "station/saveledger.h"

#include <algorithm>
#include <sys/stat.h>

namespace morsehost {

namespace {

// A disk may stay full for long.
constexpr std::size_t MAX_AWAITED_DOCUMENTS = 10000;

bool isDeleted(const QFile& file)
{
    struct stat status = {};
    return fstat(file.handle(), &status) != 0 || status.st_nlink == 0;
}

} // namespace

void SaveLedger::codeFileBegun(const QString& path)
{
    if (!m_codeFiles.empty()) {
        count(m_codeFiles.back());
        m_codeFiles.back().file.reset();
    }
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly))
        file.reset();
    m_codeFiles.push_back({path, std::move(file), 0});
}

void SaveLedger::documentBegun(const QString& path)
{
    m_documents.push_back(path);
    if (m_documents.size() > MAX_AWAITED_DOCUMENTS) {
        m_documents.erase(m_documents.begin());
        ++m_lostDocuments;
    }
}

void SaveLedger::documentsSaved()
{
    m_documents.erase(std::remove_if(m_documents.begin(), m_documents.end(),
                                     [](const QString& path) { return QFile::exists(path); }),
                      m_documents.end());
}

long long SaveLedger::lostSymbols()
{
    long long saved = 0;
    for (CodeFile& code : m_codeFiles) {
        count(code); // what a full disk kept back may have come
        saved += code.symbols;
    }
    return m_symbols - saved;
}

long long SaveLedger::lostDocuments() const
{
    return m_lostDocuments + static_cast<long long>(m_documents.size());
}

void SaveLedger::count(CodeFile& code)
{
    QFile named(code.path);
    QFile* const file = code.file ? code.file.get() : &named;
    if (!file->isOpen() && !file->open(QIODevice::ReadOnly))
        return;
    if (isDeleted(*file) || !file->seek(0))
        return;
    const QByteArray symbols = file->readAll();
    const auto found = std::count(symbols.begin(), symbols.end(), '.') +
                       std::count(symbols.begin(), symbols.end(), '-');
    code.symbols = std::max<long long>(code.symbols, found);
}

} // namespace morsehost
