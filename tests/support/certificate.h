// SPDX-License-Identifier: MIT
// A certificate for this machine, as an operator makes one.
#pragma once

#include <QProcess>
#include <QString>

namespace testsupport {

/// Writes both as PEM files; false when that fails.
inline bool makeCertificate(const QString& certificate, const QString& key)
{
    return QProcess::execute("openssl", {"req", "-x509", "-newkey", "ec", "-pkeyopt",
                                         "ec_paramgen_curve:prime256v1", "-nodes", "-subj",
                                         "/CN=localhost", "-keyout", key, "-out", certificate}) ==
           0;
}

} // namespace testsupport
