#pragma once

#include <cstdint>
#include <string>

#include "platform/fixed_text.h"
#include "surveillance/records.h"

namespace surv {

/// The description of one scrip, shared by every position in it. The first request or row that names a scrip
/// describes it for the whole day.
struct tagExposureScripSpecificInfo {
    char rowHead[24]{};  ///< head of the position rows made from it
    std::int32_t rowStamp = 0;
    std::int16_t marketSegment = 0;
    std::int32_t token = 0;  ///< -9 in an artificial all-securities position
    std::int32_t underlyingToken = 0;
    std::int32_t priceMultiplier = 0;  ///< factor of the money figures of segment 1, applied as it stands
    tagContractDescriptor contract{};
    tagMarginRateBlock marginRates{};
    tagScripRateBlock scripRates{};
};

/// The codes of a holder, taken from its first order or row. One per category, and one per account of its trees.
struct tagPositionOwnerInfo {
    FixedText<8> levelCode;
    FixedText<8> groupCode;
    FixedText<32> accountCode;
    FixedText<16> userId;
    std::int16_t clientLevelType = 0;
    std::int16_t subClientLevelType = 0;
    std::int16_t groupLevelType = 0;
};

}  // namespace surv
