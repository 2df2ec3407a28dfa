#include "categories/limit_store.h"

#include <cstddef>
#include <cstring>
#include <string>

#include "platform/host_list.h"

namespace surv {
namespace {

RuleAnswer StoreFailure(std::string_view text) { return {code::kStore, std::string{text}}; }

void TakeBits(std::uint8_t& options, std::uint8_t from, std::uint8_t bits) {
    options = static_cast<std::uint8_t>((options & ~bits) | (from & bits));
}

/// The limits from grossExposureLimit to baseFund stand side by side.
constexpr std::size_t kLimitsBegin = offsetof(BKSurveillanceLimitDefTag, grossExposureLimit);
constexpr std::size_t kLimitsEnd = offsetof(BKSurveillanceLimitDefTag, netQuantityLimit);
static_assert(kLimitsBegin == 46 && kLimitsEnd == 130);
/// So do the eight multipliers.
constexpr std::size_t kMultipliersBegin = offsetof(BKSurveillanceLimitDefTag, grossExposureMultiplier);
constexpr std::size_t kMultipliersEnd = offsetof(BKSurveillanceLimitDefTag, rowOption);
static_assert(kMultipliersEnd - kMultipliersBegin == 8 * sizeof(std::int32_t));

void CopyRange(BKSurveillanceLimitDefTag& to, const BKSurveillanceLimitDefTag& from, std::size_t begin,
               std::size_t end) {
    std::memcpy(reinterpret_cast<char*>(&to) + begin, reinterpret_cast<const char*>(&from) + begin, end - begin);
}

/// What a change always takes over.
void TakeLimits(BKSurveillanceLimitDefTag& row, const BKSurveillanceLimitDefTag& given) {
    row.rowStamp = given.rowStamp;
    CopyRange(row, given, kLimitsBegin, kLimitsEnd);
    row.definedFund = given.definedFund;
    row.netQuantityLimit = given.netQuantityLimit;
    std::uint8_t options = row.limitOptions;
    TakeBits(options, given.limitOptions, kRetainMultiplier | kGrossBasis);
    row.limitOptions = options;
}

/// What a change takes over unless it is one of the limit values alone.
void TakeDefinition(BKSurveillanceLimitDefTag& row, const BKSurveillanceLimitDefTag& given) {
    CopyRange(row, given, kMultipliersBegin, kMultipliersEnd);
    row.rowOption = given.rowOption;
    row.minSingleOrderQty = given.minSingleOrderQty;
    row.minSingleOrderValue = given.minSingleOrderValue;
    std::uint8_t options = row.limitOptions;
    TakeBits(options, given.limitOptions, kCarriedOption | kPremiumInMargin | kExposureMarginInLimit);
    row.limitOptions = options;
}

}  // namespace

RuleAnswer CSurvLimitStore::AddRow(std::unique_ptr<CSurvLimitEntry> entry) {
    const std::int32_t token = entry->Row().token;
    if (Find(token)) return StoreFailure(kAlreadyThere);
    entries.Insert(token, std::move(entry));
    return {};
}

RuleAnswer CSurvLimitStore::UpdateRow(const BKSurveillanceLimitDefTag& row) {
    constexpr std::int16_t kLimitValuesAlone = 13;
    CSurvLimitEntry* entry = Find(row.token);
    if (!entry) return StoreFailure(kNotThereToUpdate);
    TakeLimits(entry->Row(), row);
    if (row.messageKind != kLimitValuesAlone) TakeDefinition(entry->Row(), row);
    return {};
}

RuleAnswer CSurvLimitStore::RemoveRow(std::int32_t token) {
    return entries.Take(token) ? RuleAnswer{} : StoreFailure(kNotThereToUpdate);
}

void CSurvLimitStore::AppendRows(CPtrList& list, bool live) const {
    for (const auto& entry : entries) AppendRow(list, *entry.value, live);
}

BKSurveillanceLimitDefTag& AppendRow(CPtrList& list, CSurvLimitEntry& entry, bool live) {
    if (live) {
        list.AddTail(&entry.Row());
        return entry.Row();
    }
    auto copy = std::make_unique<BKSurveillanceLimitDefTag>(entry.Row());
    BKSurveillanceLimitDefTag& row = *copy;
    HandOver(list, std::move(copy));
    return row;
}

}  // namespace surv
