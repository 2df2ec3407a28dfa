#include "limits/category_check.h"

#include <array>

#include "limits/conversion_trial.h"
#include "limits/early_stop.h"
#include "limits/holding_trial.h"
#include "limits/period_trial.h"
#include "limits/row_masks.h"
#include "limits/row_tokens.h"
#include "platform/host_list.h"
#include "shared/refusal_table.h"

namespace surv {
namespace {

bool AnswersForAllSecurities(const tagOrderInfoForSurv& order) { return !order.IsDelivery() && !order.IsConversion(); }

/// What a check of one category carries from row to row.
struct CheckRun {
    LevelTrial& level;
    TrialBuffers& buffers;
    CheckMode mode;
    CPtrList* limitRows;
    Judgement::Context context;
};

/// The three rows of one store in turn: all securities, the scrip's group, the scrip. A Net Quantity refusal of a
/// wider row is put off until the scrip's row has been asked, and a scrip row that passes lifts it.
class CStoreCheck {
 public:
    CStoreCheck(CheckRun& run, CSurvLimitStore& store, const ScripTrial& trial)
        : run_(run), store_(store), trial_(trial), order_(run.level.order) {}

    /// True when the store lets the order pass; else Refusal tells why.
    bool Run() {
        AskAllSecurities();
        if (code_ == 0) AskGroup();
        if (code_ == 0 || run_.mode == CheckMode::kProbe) AskScrip();
        return code_ == 0;
    }

    [[nodiscard]] RuleAnswer Refusal() const {
        std::string text = text_;
        if (!passedGroup_) {
            text.append(" for the Group ").append(order_.scripGroup.View());
        } else if (!allPassed_) {
            if (AnswersForAllSecurities(order_)) text.append(" across all securities");
        } else {
            text.append(" for ").append(FieldText(order_.contract.symbol));
            text.append(" ").append(FieldText(order_.contract.series));
        }
        return {code_, std::move(text)};
    }

 private:
    /// Asks the row of a token: 0 for a pass, -313 when there is none, else the code of a refusal, whose text is kept.
    std::int16_t Ask(std::int32_t token) {
        CSurvLimitEntry* entry = store_.Find(token);
        if (!entry) return code::kNoRow;
        RuleAnswer answer = run_.mode == CheckMode::kReal ? Judge(*entry) : Report(*entry);
        if (!answer.Passed()) text_ = std::move(answer.text);
        return answer.code;
    }

    RuleAnswer Judge(CSurvLimitEntry& entry) {
        RuleAnswer answer = entry.CheckOrder({order_, trial_, run_.context});
        if (answer.Passed()) run_.buffers.touched.push_back(&entry);
        return answer;
    }

    RuleAnswer Report(CSurvLimitEntry& entry) {
        tagBreachRow breach{};
        RuleAnswer answer = entry.CheckOrder({order_, trial_, run_.context, &breach});
        if (!answer.Passed()) run_.buffers.breaches.push_back(breach);
        return answer;
    }

    void AskAllSecurities() {
        const std::int16_t answer = Ask(kAllSecurities);
        code_ = answer == code::kNoRow ? std::int16_t{0} : answer;
        allPassed_ = code_ == 0;
        if (code_ == code::kNetQuantity) PutOff();
    }

    void AskGroup() {
        if (!HasGroupRow(order_)) return;
        const std::int16_t answer = Ask(order_.scripGroupNumber);
        code_ = answer == code::kNoRow ? std::int16_t{0} : answer;
        if (code_ == code::kNetQuantity) {
            passedGroup_ = deferred_;
            PutOff();
        } else {
            passedGroup_ = code_ == 0;
        }
    }

    void AskScrip() {
        const std::int16_t answer = HasScripRow(order_) ? Ask(order_.token) : code::kNoRow;
        if (answer == code::kNoRow) {
            code_ = deferred_ ? code::kNetQuantity : std::int16_t{0};
            if (deferred_) text_ = heldText_;
        } else {
            code_ = answer;
        }
    }

    void PutOff() {
        heldText_ = text_;
        code_ = 0;
        deferred_ = true;
    }

    CheckRun& run_;
    CSurvLimitStore& store_;
    const ScripTrial& trial_;
    const tagOrderInfoForSurv& order_;
    std::int16_t code_ = 0;
    std::string text_;
    std::string heldText_;
    bool allPassed_ = false;
    bool passedGroup_ = true;
    bool deferred_ = false;
};

/// Hands the breach rows from `from` on to the host's list.
void ReportBreaches(const TrialBuffers& buffers, std::size_t from, CPtrList* list) {
    if (!list) return;
    for (std::size_t i = from; i < buffers.breaches.size(); ++i) {
        HandOver(*list, std::make_unique<tagBreachRow>(buffers.breaches[i]));
    }
}

/// Asks the store of one mask. False: the check ends here.
bool AskMask(CheckRun& run, std::int16_t mask, CSurveillanceInfo& info, const ScripTrial& trial,
             CategoryAnswer& answer) {
    run.level.order.periodicity = mask;
    const std::size_t breachesBefore = run.buffers.breaches.size();
    CStoreCheck store(run, info.store, trial);
    answer.asked = true;
    answer.passed = store.Run();
    if (!answer.passed) answer.refusal = store.Refusal();
    if (run.mode == CheckMode::kProbe) {
        ReportBreaches(run.buffers, breachesBefore, run.limitRows);
        return true;
    }
    if (!answer.passed) answer.refusal.text.append(LimitMaskLabel(mask));
    return answer.passed;
}

/// A delivery reaches the settlement and expiry rows of every other scope, too.
void CheckOutsideScope(CheckRun& run, const ScripTrial& trial, CategoryAnswer& answer) {
    tagOrderInfoForSurv& order = run.level.order;
    order.secondPass = true;
    for (const std::int16_t mask : MasksOutsideScope(order.marketSegment).expiry) {
        CSurveillanceInfo* const info = run.level.category->limitStores.Find(mask);
        if (info && !AskMask(run, mask, *info, trial, answer)) break;
    }
    order.secondPass = false;
}

/// Asks the stores of one period in the order of the masks. The first refusal ends it; in a probe all are asked, and
/// the last answer decides.
void CheckPeriodicities(CheckRun& run, Period period, const ScripTrial& trial, CategoryAnswer& answer) {
    const tagOrderInfoForSurv& order = run.level.order;
    CEarlyStop stop(*run.level.category, period);
    for (const std::int16_t mask : MasksOfScope(order.marketSegment).Of(period)) {
        if (CSurveillanceInfo* info = run.level.category->limitStores.Find(mask)) {
            stop.Matched();
            if (!AskMask(run, mask, *info, trial, answer)) return;
        }
        if (stop.AllMet()) break;
    }
    if (order.IsDelivery()) CheckOutsideScope(run, trial, answer);
}

CategoryAnswer RefuseCategory(const RefusalRow& row) {
    CategoryAnswer answer;
    answer.passed = false;
    answer.asked = true;
    answer.refusal = {row.code, row.text};
    return answer;
}

/// Margin funding sells what it holds, and no more. Null: nothing against the order.
const RefusalRow* MtfSellRefusal(const LevelTrial& level, const ScripTrial& expiry) {
    if (level.order.productType != product::kMtf || level.order.buySell != kSell) return nullptr;
    if (!level.flatPositions[PeriodIndex(Period::kExpiry)]) return &refusal::kMtfFreshSell;
    const tagSurvPositionData& after = expiry.after.data;
    return after.orderSellQty > after.tradedBuyQty ? &refusal::kMtfOversold : nullptr;
}

}  // namespace

CategoryAnswer CheckCategory(LevelTrial& level, TrialBuffers& buffers, CheckMode mode, CPtrList* limitRows) {
    CSurveillanceCategory& category = *level.category;
    tagOrderInfoForSurv& order = level.order;
    CUndoLog& undo = category.Context().undo;
    const std::size_t touchedBefore = buffers.touched.size();
    CheckRun run{level, buffers, mode, limitRows, {category.Context().settings, undo}};
    // An enquiry nets buys and sells whoever the client is.
    const bool apart = order.NoNetting() && mode == CheckMode::kReal;
    const GrossMode grossMode = apart ? GrossMode::kBuyPlusSell : GrossMode::kNetted;

    category.NoteOrderMarket(order, OrderRoad::kCheck);
    ConversionTrial conversion;
    const bool converts = order.IsConversion() && order.deliveryLevel;
    if (converts && !TryConversion(category, order, conversion)) return RefuseCategory(refusal::kNoFreeQuantity);
    order.ownerInfo = category.OwnerOf(order);
    const AccountKey accountKey = MakeAccountKey(order);
    std::array<PeriodTrial, kPeriods.size()> trials;
    CUndoGuard guard(undo);  // runs out before the trials' new accounts do: the log never points at a dead one
    for (const Period period : PeriodsOf(order)) {
        PeriodTrial& trial = trials[PeriodIndex(period)];
        trial.scrip.set = RuleSetOf(order, mode);
        if (converts) trial.scrip.conversionMargin = ConversionMargin(order, conversion);
        TryPeriod(level, period, accountKey, FlatPosition::kMoves, grossMode, trial);
    }
    const ScripTrial& expiry = trials[PeriodIndex(Period::kExpiry)].scrip;
    TryHolding(category, order, expiry.before, expiry.after);
    if (const RefusalRow* row = MtfSellRefusal(level, expiry)) return RefuseCategory(*row);

    CategoryAnswer answer;
    for (const Period period : PeriodsOf(order)) {
        CheckPeriodicities(run, period, trials[PeriodIndex(period)].scrip, answer);
        if (!answer.passed) break;
    }
    if (!answer.passed) {
        buffers.touched.resize(touchedBefore);
        return answer;
    }
    for (const Period period : PeriodsOf(order)) KeepAccount(level, accountKey, period, trials[PeriodIndex(period)]);
    guard.Keep();
    return answer;
}

}  // namespace surv
