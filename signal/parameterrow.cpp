// SPDX-License-Identifier: MIT
#include "signal/parameterrow.h"

#include <cmath>
#include <type_traits>

namespace demodulator {

bool setByName(const std::vector<ParameterRow>& rows, const std::string& name, double value)
{
    if (!std::isfinite(value))
        return false;
    for (const ParameterRow& row : rows) {
        if (name != row.name)
            continue;
        return std::visit(
            [value](auto* member) {
                using Member = std::decay_t<decltype(*member)>;
                if (std::is_unsigned_v<Member> && value < 0.0)
                    return false;
                *member = static_cast<Member>(value);
                return true;
            },
            row.value);
    }
    return false;
}

} // namespace demodulator
