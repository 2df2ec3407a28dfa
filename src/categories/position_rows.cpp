// A position row of the start-up load enters a category.

#include <algorithm>

#include "categories/aggregate.h"
#include "categories/category.h"
#include "positions/exposure_row.h"

namespace surv {
namespace {

constexpr std::int16_t kEquityBits = 0x12;
constexpr std::int16_t kMcxBit = 0x80;
constexpr std::int16_t kMcxExpiry = 0x81;
constexpr std::int16_t kBseDerivativeBits = 0x60;
constexpr std::int16_t kNcdexBit = 0x100;

/// Bits of a limit mask and the exchange that a row under them counts for; the first match decides.
struct MaskMarket {
    std::int16_t bits;
    std::int16_t exchangeMask;
};
constexpr std::array kMaskMarkets{
    MaskMarket{kEquityBits, kMaskNseCash},
    MaskMarket{kMcxBit, kMaskMcx},
    MaskMarket{kBseDerivativeBits, kMaskBseDerivatives},
    MaskMarket{kNcdexBit, kMaskNcdex},
};

std::int16_t MarketOfMask(std::int16_t mask) {
    const auto* found = std::find_if(kMaskMarkets.begin(), kMaskMarkets.end(),
                                     [mask](const MaskMarket& market) { return (mask & market.bits) != 0; });
    return found == kMaskMarkets.end() ? kMaskNseDerivatives : found->exchangeMask;
}

bool IsOptionSegment(std::int16_t marketSegment) { return marketSegment == 3 || marketSegment == 6; }

bool HasOneSegment(std::int16_t mask) { return (mask & kSegmentBits) != 0 && IsSingleSegment(mask); }

void TrimAccount(BKExposureTag& row) {
    constexpr std::size_t kAccountWidth = 15;
    char text[kAccountWidth];
    const std::string_view trimmed = Trimmed(FieldText(row.accountCode)).substr(0, kAccountWidth);
    std::copy_n(trimmed.data(), trimmed.size(), text);
    WriteField(row.accountCode, {text, trimmed.size()});
}

/// One row on its way through the sets of a category.
class CRowEntry {
 public:
    CRowEntry(CSurveillanceCategory& category, const BKExposureTag& row, tagOrderInfoForSurv& order, ProductGroup group)
        : category_(category),
          row_(row),
          order_(order),
          group_(group),
          period_(CSurveillanceCategory::PeriodOfMask(row.limitMask)),
          exchangeMask_(MarketOfMask(row.limitMask)),
          place_{EffectiveLevel(category.lastLevel, exchangeMask_), category.secondLevel},
          book_(category.Book(period_)),
          settings_(category.Context().settings),
          tree_{settings_, &category.Context().undo},
          data_(PositionDataOf(row, order)) {}

    void Run() {
        if (EntersFlatSet()) book_.exposures.AddRow(row_, data_, *tree_.undo);
        CClientExposure& account = EnterAccount(book_.accounts.accounts.FindOrMake(MakeAccountKey(order_)), order_);
        if (group_ != ProductGroup::kMtf) category_.NoteMarket(exchangeMask_, row_.underlyingToken, row_.token);
        if (EntersClientLevelSet()) book_.clientLevelExposures.AddRow(row_, data_, *tree_.undo);
        RecordHolder(account);
        if (settings_.HoldsClientPositions() && HasOneSegment(row_.limitMask)) {
            category_.ClientBook().totals.AddRow(group_, row_.limitMask, data_, tree_);
        }
    }

 private:
    [[nodiscard]] bool IsClientLevel() const { return row_.clientLevelType == 3 || row_.clientLevelType == 5; }

    /// Client types 3 and 5 are the business of levels 3, 5 and 8, but on MCX of every level.
    [[nodiscard]] bool EntersFlatSet() const {
        constexpr std::array<std::int16_t, 5> kTypes{-1, 1, 2, 4, 6};
        const std::int16_t type = row_.clientLevelType;
        return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end() || (row_.limitMask & kMcxBit) != 0 ||
               IsAlwaysUpdatedLevel(category_.lastLevel);
    }

    [[nodiscard]] bool EntersClientLevelSet() const {
        if (!IsClientLevel() || (row_.limitMask & kMcxBit) == 0) return false;
        if (place_.level == 0 && place_.secondLevel == 7) return true;
        if (settings_.positionMode == 3 && place_.level == 7) return true;
        const bool root = order_.levelCode == std::string_view{kRootCode};
        return root && (settings_.positionMode == 2 || settings_.orderBasedPosition == 1);
    }

    CClientExposure& EnterAccount(CClientExposure& account, const tagOrderInfoForSurv& order) {
        const ScripPath path = account.AddRow(data_, order, tree_);
        if (period_ == Period::kDaily || account.aggregate) return account;
        book_.accounts.EnterHolder(order, account, path);
        if (row_.limitMask == kMcxExpiry) LoadMargin(order, *path.scrip);
        if (group_ != ProductGroup::kMtf && IsOptionSegment(order.marketSegment)) TakeDayPart(order, *path.scrip);
        return account;
    }

    /// Only a percentage, and none above a bound, is taken at its word.
    void LoadMargin(const tagOrderInfoForSurv& order, CScripExposure& scrip) {
        constexpr std::int16_t kOfValue = 1;
        constexpr double kHighestPercent = 15.0;
        const tagMcxMarginRecord* record = category_.Context().stores.FindMcxMargin(order.token);
        if (!record || record->marginBasis != kOfValue || !(record->marginRate <= kHighestPercent)) return;
        scrip.LoadMargin(record->marginRate, tree_);
    }

    /// Option values are today's: an option's contract takes today's part from the daily row, which comes first.
    void TakeDayPart(const tagOrderInfoForSurv& order, CScripExposure& scrip) {
        const CClientExposure* daily = category_.Book(Period::kDaily).accounts.FindAccount(order);
        const CScripExposure* today = daily ? daily->FindScrip(order, settings_) : nullptr;
        if (today && !today->IsBlank()) scrip.SetDayData(today->position.data, tree_);
    }

    /// The row among the positions by client: under its aggregate account where the level sums, else under its own.
    void RecordHolder(CClientExposure& account) {
        if (!settings_.RowsFillClientPositions()) return;
        const AggregateForm form = AggregateFormOf(order_, place_, settings_);
        if (form != AggregateForm::kNone) {
            tagOrderInfoForSurv order = order_;
            TakeAggregateCodes(order, form);
            Record(order, EnterAccount(category_.AggregateAccount(order, period_), order));
        } else if (RecordsOwnAccount(order_, place_, settings_)) {
            Record(order_, account);
        }
    }

    void Record(const tagOrderInfoForSurv& order, CClientExposure& account) {
        CClientBook::Side& side = category_.ClientBook().Of(period_);
        side.positions.RecordRow(data_, order, account, tree_);
        side.lists.Join(group_, account, tree_);
    }

    CSurveillanceCategory& category_;
    const BKExposureTag& row_;
    const tagOrderInfoForSurv& order_;
    ProductGroup group_;  ///< kMtf or kNormal
    Period period_;
    std::int16_t exchangeMask_;
    LevelPlace place_;
    PeriodBook& book_;
    const Settings& settings_;
    TreeContext tree_;
    tagSurvPositionData data_;
};

}  // namespace

std::int16_t CSurveillanceCategory::EnterRow(BKExposureTag& row, tagOrderInfoForSurv& order, ProductGroup group) {
    if (row.limitMask == 0) return kNotDone;
    TrimAccount(row);
    FillOrderFromRow(order, row);
    order.ownerInfo = OwnerOf(order);
    CUndoGuard guard(context_.undo);  // a row enters whole or not at all
    CRowEntry(*this, row, order, group).Run();
    guard.Keep();
    context_.undo.Clear();
    return kDone;
}

std::int16_t CSurveillanceCategory::AddPositionRow(BKExposureTag& row, tagOrderInfoForSurv& order) {
    return EnterRow(row, order, ProductGroup::kNormal);
}

std::int16_t CSurveillanceCategory::AddMtfPositionRow(BKExposureTag& row, tagOrderInfoForSurv& order) {
    return EnterRow(row, order, ProductGroup::kMtf);
}

}  // namespace surv
