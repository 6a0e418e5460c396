// SPDX-License-Identifier: MIT
// Passwords as hashes that are slow to guess, in the form that crypt(5) describes.
#pragma once

#include <QByteArray>

#include <mutex>

namespace morsehost {

/// The longest that crypt takes.
constexpr int MAX_PASSWORD_BYTES = 511;

/// A new hash, with salt of its own (yescrypt). Empty when the system has no random bytes.
QByteArray hashOfPassword(const QByteArray& password);
/// Whether it looks like a hash that this system can check.
bool isPasswordHash(const QByteArray& hash);

/// Checks passwords against one hash, one at a time, from any thread.
class PasswordGate
{
public:
    enum class Answer { Right, Wrong, Busy };

    explicit PasswordGate(const QByteArray& hash);

    /// One that was right before is known at once. Another takes as long as the hash is made to
    /// take; while one is checked, others are answered with Busy, so that nobody who guesses keeps
    /// all threads to himself.
    Answer check(const QByteArray& password);

private:
    QByteArray fingerprint(const QByteArray& password) const;

    const QByteArray m_hash;
    const QByteArray m_secret; ///< of this process
    std::mutex m_knownMutex;
    QByteArray m_known; ///< fingerprint of the right one
    std::mutex m_checking;
};

} // namespace morsehost
