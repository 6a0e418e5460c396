// SPDX-License-Identifier: MIT
// Parameters by their names, for sweeps: a row a member, and one way to set it.
#pragma once

#include <string>
#include <variant>
#include <vector>

/// The row of a member of `parameters`; its name is that of the member.
#define PARAMETER_ROW(member)                                                                      \
    demodulator::ParameterRow                                                                      \
    {                                                                                              \
#member, &parameters.member                                                                \
    }

namespace demodulator {

struct ParameterRow
{
    const char* name;
    std::variant<double*, float*, int*, unsigned*> value;
};

/// False when no row has the name, or the value is not a number, or negative where the member
/// cannot be.
bool setByName(const std::vector<ParameterRow>& rows, const std::string& name, double value);

} // namespace demodulator
