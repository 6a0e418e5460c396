// SPDX-License-Identifier: MIT
// The passes over each kind of file; they fill the tables of `report`, and tell `notes` in any
// order.
#pragma once

#include "tables/lint/lines.h"

namespace lint {

void lintAlphabet(const QByteArray& bytes, Report& report, Notes& notes);
void lintCodec(const QByteArray& bytes, Report& report, Notes& notes);
void lintMap(const QByteArray& bytes, Report& report, Notes& notes);

} // namespace lint
