#pragma once

// Which positions a query of a product reads.

#include <array>
#include <cstdint>

#include "positions/accounts.h"

namespace surv {

/// A product of a query.
struct ProductForm {
    std::int16_t product;   ///< 0: every product that has no form of its own
    ProductGroup group;     ///< of totals and accounts
    PositionFamily family;  ///< of its positions by scrip
    /// What the netted positions of one scrip are looked up by; for deliveries they are the plain ones.
    PositionFamily nettedFamily;
    std::int16_t levelWalkShift;  ///< added to the exchange mask where a walk over families looks for a scrip
};
inline constexpr ProductForm kDefaultForm{0, ProductGroup::kNormal, PositionFamily::kPlain, PositionFamily::kPlain, 0};
inline constexpr std::array kProductForms{
    ProductForm{product::kDelivery, ProductGroup::kDelivery, PositionFamily::kDelivery, PositionFamily::kPlain, 5},
    ProductForm{product::kMarginPlus, ProductGroup::kMarginPlus, PositionFamily::kMarginPlusSecond,
                PositionFamily::kMarginPlusSecond, 0},
    ProductForm{product::kMtf, ProductGroup::kMtf, PositionFamily::kMtf, PositionFamily::kMtf, 0},
};

[[nodiscard]] constexpr const ProductForm& FormOf(std::int16_t productType) {
    for (const ProductForm& form : kProductForms) {
        if (form.product == productType) return form;
    }
    return kDefaultForm;
}

/// The family that a walk over all scrips files a position under: equity by its own, everything else, and a token of
/// seven digits, under the plain one.
[[nodiscard]] constexpr PositionFamily WalkFamily(const PositionKey& key) {
    constexpr std::int32_t kSevenDigits = 1'000'000;
    return key.token < kSevenDigits && IsCashExchange(key.exchangeMask) ? key.family : PositionFamily::kPlain;
}

}  // namespace surv
