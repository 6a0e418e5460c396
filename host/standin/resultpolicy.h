// SPDX-License-Identifier: MIT
// Whether the stand-in's result documents record anything.
#pragma once

#include "host/hostapi.h"

namespace TavikResultDataXml {

/// True until told otherwise. While false, frames are not taken in and saves write nothing and
/// succeed: for a host whose operator saves nothing, so that its memory does not grow with the
/// length of a reception. One thread.
HOST_API void keepResultDocuments(bool keep);

} // namespace TavikResultDataXml
