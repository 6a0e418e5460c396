// SPDX-License-Identifier: MIT
#include "charmap/ialphabethandler.h"

// One home for the virtual table.
IAlphabetHandler::~IAlphabetHandler() = default;
