#pragma once

#include <cstdint>
#include <string_view>

#include "queries/code_argument.h"

namespace surv {

/// What a net position screen asks for.
struct NetPositionQuery {
    int queryKind = 0;              ///< 0 to 12; see the table in net_position.cpp
    std::string_view categoryCode;  ///< "ALL" for some kinds
    HolderCodes codes;              ///< trimmed, and the group written over, in the caller's buffers
    std::int32_t token = 0;         ///< -9: all securities
    std::int16_t periodicity = 0;   ///< a single-segment limit mask; others give no rows
    bool byToken = false;           ///< by who holds the token, instead of by the category's own lists
    std::int16_t product = 0;       ///< 2 delivery, 4 two-leg orders, 8 margin funding; else all others
};

}  // namespace surv
