#pragma once

#include "platform/hash_set.h"
#include "positions/accounts.h"

namespace surv {

/// Not what a refused trial has left.
[[nodiscard]] inline bool HoldsAnything(const CClientExposure& account) {
    for (const auto& underlying : account.underlyings) {
        for (const auto& expiry : underlying.value->expiries) {
            for (const auto& scrip : expiry.value->scrips) {
                if (!scrip.value->IsBlank()) return true;
            }
        }
    }
    return false;
}

/// Calls visit(key) for each key under which the positions by client of an account may stand, once. It goes by what the
/// account itself holds, so that the house doesn't matter.
template <class Visit>
void ForEachHeldKey(const CClientExposure& account, Visit visit) {
    HashSet<PositionKey> seen;  // one contract may stand under several underlyings
    for (const auto& underlying : account.underlyings) {
        for (const auto& expiry : underlying.value->expiries) {
            for (const auto& scrip : expiry.value->scrips) {
                if (!seen.Insert(scrip.key)) continue;
                visit(scrip.key);
                if (scrip.key.family != PositionFamily::kPlain) continue;
                // In the tree a two-leg order stands with the plain ones.
                visit(PositionKey{scrip.key.exchangeMask, PositionFamily::kMarginPlusSecond, scrip.key.token});
            }
        }
    }
}

}  // namespace surv
