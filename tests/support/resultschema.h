// SPDX-License-Identifier: MIT
// Checks result documents against their schema, with a validator that is not ours.
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// Empty when every one of the files is valid, else what the validator says.
inline QString schemaErrors(const QStringList& paths)
{
    QProcess validator;
    validator.setProcessChannelMode(QProcess::MergedChannels);
    validator.start(QStringLiteral("xmllint"),
                    QStringList{QStringLiteral("--noout"), QStringLiteral("--huge"),
                                QStringLiteral("--stream"), QStringLiteral("--schema"),
                                QStringLiteral(PROJECT_DATA_DIR "/schema/tavikresultdata.xsd")} +
                        paths);
    if (!validator.waitForFinished(600000))
        return QStringLiteral("xmllint: ") + validator.errorString();
    return validator.exitCode() == 0 ? QString() : QString::fromLocal8Bit(validator.readAll());
}
