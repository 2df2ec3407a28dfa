#pragma once

#include <cstdint>

#include "platform/hash_map.h"
#include "shared/order.h"
#include "surveillance/records.h"

namespace surv {

/// The preference records of one code: exchange mask (-1: the overall record) to record. Addresses are stable.
using PreferenceMap = HashMap<std::int32_t, tagClientRiskPreferenceInfoForSurv>;

/// Exchange of the overall preference record.
inline constexpr std::int32_t kOverallPreference = -1;
/// Code of the preferences of everybody without a record of their own, and account of own-account orders.
inline constexpr const char* kEverybodyCode = "*****";
/// Code of the root, the category of the whole house.
inline constexpr const char* kRootCode = "-";

/// What the host loads once a day or keeps for the life of the library, beside limits and positions.
struct ReferenceStores {
    HashMap<CodeText, PreferenceMap> clientPreferences{1013};
    HashMap<CodeText, CodeText> clientFamilyMap{1013};  ///< client code to family code
    HashMap<std::int32_t, FixedText<16>> isinByNseToken{1003};
    HashMap<std::int32_t, FixedText<16>> isinByBseToken{1003};

    /// The token's description in the store of its exchange mask; null for a mask without a store.
    [[nodiscard]] tagExposureScripSpecificInfo* FindScrip(std::int16_t exchangeMask, std::int32_t token) const;
    /// As FindScrip; a missing one is made and filled from the order.
    tagExposureScripSpecificInfo* FindOrMakeScrip(const tagOrderInfoForSurv& order);

    /// The same for a position row, whose head a new record keeps. `order` is filled from the row.
    tagExposureScripSpecificInfo* FindOrMakeScrip(const BKExposureTag& row, const tagOrderInfoForSurv& order);

    /// The ISIN of an equity; empty when none was loaded, and off the cash exchanges.
    [[nodiscard]] FixedText<16> FindIsin(std::int16_t exchangeMask, std::int32_t token) const;

    /// Keeps the record of an exchange and token, the first standing; a record of any other exchange is dropped.
    void AddAdditionalMargin(const tagAdditionalMarginInfo& record);
    /// Null for a token without a record and for an exchange that has none.
    [[nodiscard]] const tagAdditionalMarginInfo* FindAdditionalMargin(std::int16_t exchangeMask,
                                                                      std::int32_t token) const;
    /// Gives the order the exposure margin rates of its token; without a record the order keeps those it has.
    void TakeAdditionalMargin(tagOrderInfoForSurv& order) const;

    /// Empties what is filled once a day; preferences and families stay.
    void ClearDay();

 private:
    using ScripStore = HashMap<std::int32_t, tagExposureScripSpecificInfo>;
    [[nodiscard]] static int StoreOf(std::int16_t exchangeMask);

    ScripStore scrips_[6];

    using AdditionalMargins = HashMap<std::int32_t, tagAdditionalMarginInfo>;
    [[nodiscard]] const AdditionalMargins* AdditionalMarginsOf(std::int32_t exchangeMask) const;
    AdditionalMargins additionalMarginNse_;
    AdditionalMargins additionalMarginNcdex_;
    AdditionalMargins additionalMarginMcx_;
};

}  // namespace surv
