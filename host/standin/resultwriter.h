// SPDX-License-Identifier: MIT
// Result documents on their way to the disk. No API.
#pragma once

#include "host/standin/resultcontent.h"

#include <QString>

namespace TavikResultDataXml {

/// What to do where there is a result document of that name.
enum class IfTaken {
    Add,
    NextName,
};

/// Adds the transmissions to the document at `path`, creating it when there is none, or beside it
/// under the next free name where a document is not to be added to or the file is none. All or
/// nothing: false means
/// that the disk is as it was. Time and reading go with the size of the file once, memory does not.
bool addToFile(const QString& path, const Transmissions& transmissions, IfTaken ifTaken);

} // namespace TavikResultDataXml
