// SPDX-License-Identifier: MIT
// A folder for one process at a time.
#pragma once

#include <QString>

namespace morsehost {

/// Holds `folder`, which exists, until it is destroyed or the process ends, however that ends.
/// Programs that the process starts do not hold it.
class FolderLock
{
public:
    explicit FolderLock(const QString& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    /// Why it is not held; empty when it is.
    const QString& error() const { return m_error; }

private:
    int m_file;
    QString m_error;
};

} // namespace morsehost
