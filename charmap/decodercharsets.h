// SPDX-License-Identifier: MIT
// The base character set of each decoder.
// No API: used inside the library only.
#pragma once

#include "charmap/basecharset.h"

#include <QMap>
#include <QString>

/// By the name of the decoder, as the decoder modules file says now. Of several modules of one name
/// the last one decides.
QMap<QString, eBASE_CHARSET> readDecoderCharsets();
