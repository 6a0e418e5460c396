// SPDX-License-Identifier: MIT
// The base character sets, beside the classes that use them.
#pragma once

#include "tables/basecharset.h"
