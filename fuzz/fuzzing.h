// SPDX-License-Identifier: MIT
// What every fuzz target uses: claims, the bytes of an input in turn, a folder of its own.
#pragma once

#include "support/files.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace fuzzing {

/// Ends the process, so that the input is kept, when the claim does not hold.
inline void require(bool holds, const char* claim)
{
    if (holds)
        return;
    std::fprintf(stderr, "Does not hold: %s\n", claim);
    std::abort();
}

// How many inputs there are to one whose every property is checked, where checks take much longer
// than what they look at. Replayed inputs are all checked.
#ifndef FUZZING_SHARE
#define FUZZING_SHARE 1
#endif

/// Whether an input belongs to the share: one and the same input always does or never.
inline bool isChecked(const std::uint8_t* data, std::size_t size)
{
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < size; ++i)
        sum = sum * 31 + data[i];
    return (sum ^ sum >> 16) % FUZZING_SHARE == 0;
}

inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), static_cast<int>(size)};
}

/// An input taken piece by piece. At its end every number is 0.
class Bytes
{
public:
    Bytes(const std::uint8_t* data, std::size_t size)
        : m_data(data)
        , m_size(size)
    {
    }

    bool isEmpty() const { return m_size == 0; }

    std::uint8_t byte()
    {
        if (isEmpty())
            return 0;
        --m_size;
        return *m_data++;
    }

    /// Little-endian, of so many bytes.
    std::uint64_t number(int bytes)
    {
        std::uint64_t result = 0;
        for (int i = 0; i < bytes; ++i)
            result |= static_cast<std::uint64_t>(byte()) << (8 * i);
        return result;
    }

    /// The next bytes, or as many as there are.
    QByteArray take(std::size_t count)
    {
        const std::size_t taken = count < m_size ? count : m_size;
        QByteArray result = bytesOf(m_data, taken);
        m_data += taken;
        m_size -= taken;
        return result;
    }

    QByteArray rest() { return take(m_size); }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
};

/// A temporary folder that lasts as long as the process and is emptied between inputs.
class Folder
{
public:
    QString path() const { return m_folder.path(); }
    QString filePath(const QString& name) const { return m_folder.filePath(name); }

    QString write(const QString& name, const QByteArray& content) const
    {
        return writeFile(filePath(name), content);
    }

    QByteArray read(const QString& name) const
    {
        const QString file = QDir(path()).absoluteFilePath(name);
        require(QFileInfo(file).isReadable(), "a file that is there can be read");
        return contentOf(file);
    }

    QStringList names() const
    {
        return QDir(path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    void empty() const
    {
        QDir folder(path());
        const QStringList files = names();
        for (const QString& name : files)
            folder.remove(name);
    }

private:
    QTemporaryDir m_folder;
};

} // namespace fuzzing
