// SPDX-License-Identifier: MIT
// The passes over each kind of file; they fill `report` in any order.
#pragma once

#include "app/lint/lines.h"

namespace lint {

void lintAlphabet(const QByteArray& bytes, Report& report);
void lintCodec(const QByteArray& bytes, Report& report);
void lintMap(const QByteArray& bytes, Report& report);

} // namespace lint
