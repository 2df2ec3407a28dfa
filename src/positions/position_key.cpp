#include "positions/position_key.h"

#include "platform/hash_map.h"

namespace surv {

std::uint64_t PositionKey::Hash() const {
    const auto high = static_cast<std::uint32_t>((exchangeMask << 8) + static_cast<std::int16_t>(family));
    const std::uint64_t word = (std::uint64_t{high} << 32) | static_cast<std::uint32_t>(token);
    return KeyHash<std::uint64_t>{}(word);
}

PositionFamily FlatFamily(std::int16_t productType, int leg) {
    switch (productType) {
        case product::kDelivery:
        case product::kConvertToDelivery: return PositionFamily::kDelivery;
        case product::kMarginPlus:
            return leg == 2 ? PositionFamily::kMarginPlusSecond : PositionFamily::kMarginPlusFirst;
        case product::kMtf: return PositionFamily::kMtf;
        default: return PositionFamily::kPlain;
    }
}

PositionFamily TreeFamily(std::int16_t productType) {
    return productType == product::kMarginPlus ? PositionFamily::kPlain : FlatFamily(productType);
}

PositionFamily ClientFamily(std::int16_t productType, Period period) {
    const bool twoLegs = productType == product::kMarginPlus && period == Period::kExpiry;
    return twoLegs ? PositionFamily::kMarginPlusSecond : TreeFamily(productType);
}

PositionFamily RowFamily(const BKExposureTag& row) {
    constexpr std::int16_t kMtfRow = 8;
    if (row.limitMask != 3 && row.limitMask != 0x11) return PositionFamily::kPlain;
    if (row.messageKind == kMtfRow) return PositionFamily::kMtf;
    const std::string_view label = FieldText(row.contract.optionType);
    if (label == "DD") return PositionFamily::kDelivery;
    if (label == "MP") return PositionFamily::kMarginPlusFirst;
    if (label == "MD") return PositionFamily::kMarginPlusSecond;
    return PositionFamily::kPlain;
}

}  // namespace surv
