// SPDX-License-Identifier: MIT
// Result documents on their way to the disk. No API.
#pragma once

#include "host/standin/resultcontent.h"

#include <QString>

namespace TavikResultDataXml {

/// Adds the transmissions to the document at `path`, creating it when there is none, or beside it
/// under the next free name when the file there is no result document. All or nothing: false means
/// that the disk is as it was. Time and reading go with the size of the file once, memory does not.
bool addToFile(const QString& path, const Transmissions& transmissions);

} // namespace TavikResultDataXml
