// SPDX-License-Identifier: MIT
// The kinds of value that the host's tree holds, under short names.
#pragma once

#include "host/value.h"
#include "host/valuenumeric.h"
#include "host/valueselection.h"

using TextValue =
    Value<QString, FormatString<QString>, StreamFormat<QString, FormatString<QString>>>;
using FlagValue = Value<bool, FormatBool<bool>, StreamFormat<bool, FormatBool<bool>>>;
using IntegerValue = ValueNumeric<int, FormatInt<int>, StreamFormat<int, FormatInt<int>>>;
using RealValue =
    ValueNumeric<double, FormatFloat<double>, StreamFormat<double, FormatFloat<double>>>;

// The host's library instantiates each kind, so that one type information serves both sides of
// the library boundary.
extern template class HOST_API
    Value<QString, FormatString<QString>, StreamFormat<QString, FormatString<QString>>>;
extern template class HOST_API Value<bool, FormatBool<bool>, StreamFormat<bool, FormatBool<bool>>>;
extern template class HOST_API Value<int, FormatInt<int>, StreamFormat<int, FormatInt<int>>>;
extern template class HOST_API
    Value<double, FormatFloat<double>, StreamFormat<double, FormatFloat<double>>>;
extern template class HOST_API ValueNumeric<int, FormatInt<int>, StreamFormat<int, FormatInt<int>>>;
extern template class HOST_API
    ValueNumeric<double, FormatFloat<double>, StreamFormat<double, FormatFloat<double>>>;
