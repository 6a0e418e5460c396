// SPDX-License-Identifier: MIT
// Where a picture is to go: -o of the commands that draw.
#pragma once

#include "app/options/arguments.h"

#include <QByteArray>
#include <QSaveFile>
#include <QString>

namespace morsehost {

OptionRow pictureOptionRow();

/// A file that is replaced as a whole, or left as it was; or standard output. The name says whether
/// it is a drawing (SVG) or an image (PNG).
class PictureFile
{
public:
    /// A name that cannot stand for a picture is an error of the arguments.
    explicit PictureFile(Arguments& arguments);

    /// Before the long work, so that a name that cannot be written is said at once. Complains.
    bool open(const QString& recording);
    /// Of a drawing. False when not all of it could be written. Complains.
    bool write(QByteArray picture);
    const QString& name() const { return m_name; }

private:
    QString m_name;
    bool m_isOutput;
    bool m_isImage;
    QSaveFile m_file;
};

} // namespace morsehost
