// SPDX-License-Identifier: MIT
#include "station/page/password.h"

#include <QMessageAuthenticationCode>
#include <QRandomGenerator>

#include <crypt.h>
#include <memory>

namespace morsehost {

namespace {

QByteArray cryptOf(const QByteArray& password, const QByteArray& setting)
{
    if (password.size() > MAX_PASSWORD_BYTES || password.contains('\0'))
        return {};
    const auto data = std::make_unique<crypt_data>(); // 32 kB
    const char* const made = crypt_r(password.constData(), setting.constData(), data.get());
    // A failure is marked with an asterisk.
    return made && *made != '*' ? QByteArray(made) : QByteArray();
}

// Takes the same time wherever they differ.
bool isSame(const QByteArray& a, const QByteArray& b)
{
    if (a.size() != b.size())
        return false;
    unsigned different = 0;
    for (int i = 0; i < a.size(); ++i)
        different |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]);
    return different == 0;
}

QByteArray randomBytes()
{
    QByteArray bytes(32, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = static_cast<char>(QRandomGenerator::system()->generate());
    return bytes;
}

} // namespace

QByteArray hashOfPassword(const QByteArray& password)
{
    char setting[CRYPT_GENSALT_OUTPUT_SIZE];
    if (!crypt_gensalt_rn("$y$", 0, nullptr, 0, setting, sizeof setting))
        return {};
    return cryptOf(password, setting);
}

bool isPasswordHash(const QByteArray& hash)
{
    // A hash is a setting too.
    return hash.startsWith('$') && crypt_checksalt(hash.constData()) == CRYPT_SALT_OK;
}

PasswordGate::PasswordGate(const QByteArray& hash)
    : m_hash(hash)
    , m_secret(randomBytes())
{
}

QByteArray PasswordGate::fingerprint(const QByteArray& password) const
{
    return QMessageAuthenticationCode::hash(password, m_secret, QCryptographicHash::Sha256);
}

PasswordGate::Answer PasswordGate::check(const QByteArray& password)
{
    const QByteArray print = fingerprint(password);
    {
        const std::lock_guard<std::mutex> lock(m_knownMutex);
        if (!m_known.isEmpty() && isSame(print, m_known))
            return Answer::Right;
    }
    const std::unique_lock<std::mutex> checking(m_checking, std::try_to_lock);
    if (!checking.owns_lock())
        return Answer::Busy;
    const QByteArray made = cryptOf(password, m_hash);
    if (made.isEmpty() || !isSame(made, m_hash))
        return Answer::Wrong;
    const std::lock_guard<std::mutex> lock(m_knownMutex);
    m_known = print;
    return Answer::Right;
}

} // namespace morsehost
