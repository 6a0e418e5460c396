// SPDX-License-Identifier: MIT
#include "app/commands/picturefile.h"

#include "app/console/complain.h"
#include "station/io/output.h"
#include "station/picture/rendering.h"

#include <QFileInfo>

#include <unistd.h>

namespace morsehost {

namespace {

// A picture replaces what is there, so only a plain file may be, and not the recording.
QString whyNotReplaced(const QString& name, const QString& recording)
{
    const QFileInfo there(name);
    if (!there.exists() && !there.isSymLink())
        return QString();
    if (!there.isFile())
        return QStringLiteral("exists and is not a regular file");
    if (there.canonicalFilePath() == QFileInfo(recording).canonicalFilePath())
        return QStringLiteral("is the recording itself");
    return QString();
}

} // namespace

OptionRow pictureOptionRow()
{
    return {"o", "PICTURE",
            "the picture: a name that ends in .svg or .png, an existing file is replaced; or '-', "
            "SVG on standard output"};
}

PictureFile::PictureFile(Arguments& arguments)
    : m_name(arguments.text("o"))
    , m_isOutput(m_name == QLatin1String("-"))
    , m_isImage(m_name.endsWith(QLatin1String(".png"), Qt::CaseInsensitive))
    , m_file(m_name)
{
    if (m_name.isEmpty())
        arguments.fail(QStringLiteral("-o PICTURE is missing"));
    else if (!m_isOutput && !m_isImage &&
             !m_name.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive))
        arguments.fail(QStringLiteral("-o takes '-' or a name that ends in .svg or .png, not '%1'")
                           .arg(m_name));
}

bool PictureFile::open(const QString& recording)
{
    if (m_isOutput)
        return true;
    if (const QString reason = whyNotReplaced(m_name, recording); !reason.isEmpty()) {
        complain(m_name, reason);
        return false;
    }
    if (m_file.open(QIODevice::WriteOnly))
        return true;
    complain(m_name, m_file.errorString());
    return false;
}

bool PictureFile::write(QByteArray picture)
{
    if (m_isImage)
        picture = inspect::rendered(picture);
    if (picture.isEmpty()) {
        complain(m_name, QStringLiteral("too large for an image"));
        return false;
    }
    if (m_isOutput) {
        Output output(STDOUT_FILENO);
        output.write(picture);
        output.finish();
        if (!output.error().isEmpty())
            complain(QStringLiteral("standard output"), output.error());
        return !output.hasFailed();
    }
    m_file.write(picture);
    if (m_file.commit())
        return true;
    complain(m_name, m_file.errorString());
    return false;
}

} // namespace morsehost
