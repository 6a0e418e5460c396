// SPDX-License-Identifier: MIT
// A file of bytes, or standard input, by the name on the command line.
#pragma once

#include <QString>

namespace morsehost {

class Descriptor
{
public:
    /// "-" is standard input.
    explicit Descriptor(const QString& name);
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return m_number; }
    /// Why it cannot be read; empty when it can.
    const QString& error() const { return m_error; }
    /// For messages.
    const QString& name() const { return m_name; }

private:
    QString m_name;
    int m_number = -1;
    QString m_error;
};

} // namespace morsehost
