#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "categories/limit_entry.h"
#include "platform/hash_map.h"
#include "surveillance/containers.h"

namespace surv {

/// The rows of one limit mask of one category, by token.
class CSurvLimitStore {
 public:
    HashMap<std::int32_t, CSurvLimitEntry> entries{53};

    static constexpr std::string_view kAlreadyThere = "Surveillance details already exist";
    static constexpr std::string_view kNotThereToUpdate = "Surveillance details present for updation";
    static constexpr std::string_view kNotThere = "Surveillance details not available";

    /// Code -100 when the token is already there.
    RuleAnswer AddRow(std::unique_ptr<CSurvLimitEntry> entry);
    /// Takes the limits of the given row over; no used figure changes. Code -100 when the token isn't there.
    RuleAnswer UpdateRow(const BKSurveillanceLimitDefTag& row);
    /// Code -100 when the token isn't there.
    RuleAnswer RemoveRow(std::int32_t token);
    [[nodiscard]] CSurvLimitEntry* Find(std::int32_t token) const { return entries.Find(token); }

    /// The row across all securities carries the fund (limits/funds.cpp).
    std::int16_t AllocateFund(tagRMSFundAllocationRequest& request, BKSurveillanceLimitDefTag* limit);

    /// Appends every row: the live one, or a new copy that the list's owner frees.
    void AppendRows(CPtrList& list, bool live) const;
};

/// One limit mask of a category.
class CSurveillanceInfo {
 public:
    CSurvLimitStore store;

    std::int16_t RMSFundAllocation(tagRMSFundAllocationRequest& request, BKSurveillanceLimitDefTag* limit);
};

/// Puts a row into a list of the host: the live one, or a new copy that the list's owner frees. Gives the one in the
/// list.
BKSurveillanceLimitDefTag& AppendRow(CPtrList& list, CSurvLimitEntry& entry, bool live);

}  // namespace surv
