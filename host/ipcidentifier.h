// SPDX-License-Identifier: MIT
// The name of a host's channel between processes. No API: used inside the library only.
#pragma once

#include <QString>

/// "__SG" + the first character of `id` + "_IPC" + its last two, of which a leading zero is
/// dropped: "A05" gives "__SGA_IPC5". Shorter texts give what they have.
QString ipcIdentifier(const QString& id);
