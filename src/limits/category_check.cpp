#include "limits/category_check.h"

#include <array>

#include "limits/early_stop.h"
#include "limits/period_trial.h"
#include "limits/row_masks.h"

namespace surv {
namespace {

/// What a check of one category carries from row to row.
struct CheckRun {
    LevelTrial& level;
    TrialBuffers& buffers;
    CheckMode mode;
    CPtrList* limitRows;
    RuleContext context;
};

bool AnswersForAllSecurities(const tagOrderInfoForSurv& order) {
    return order.productType != product::kDelivery && order.productType != product::kConvertToDelivery &&
           order.productType != product::kConvertToMargin;
}

/// Asks one row. Code -313 when the token has none.
RuleAnswer CheckOrder(CheckRun& run, CSurvLimitStore& store, std::int32_t token, const ScripTrial& trial) {
    CSurvLimitEntry* entry = store.Find(token);
    if (!entry) return {code::kNoRow, std::string{CSurvLimitStore::kNotThere}};
    if (run.mode == CheckMode::kReal) {
        RuleAnswer answer = entry->CheckGeneralOrder(run.level.order, trial, run.context);
        if (answer.Passed()) run.buffers.touched.push_back(entry);
        return answer;
    }
    tagBreachRow breach;
    RuleAnswer answer = entry->CheckReportOrder(run.level.order, trial, run.context, breach);
    if (!answer.Passed()) run.buffers.breaches.push_back(breach);
    return answer;
}

/// The three rows of one store in turn: all securities, the scrip's group, the scrip. A Net Quantity refusal of a
/// wider row is put off until the scrip's row has been asked, and a scrip row that passes lifts it.
class CStoreCheck {
 public:
    CStoreCheck(CheckRun& run, CSurvLimitStore& store, const ScripTrial& trial)
        : run_(run), store_(store), trial_(trial), order_(run.level.order) {}

    RuleAnswer Run() {
        AskAllSecurities();
        if (answer_.Passed()) AskGroup();
        if (answer_.Passed() || run_.mode == CheckMode::kProbe) AskScrip();
        if (!answer_.Passed()) AddSuffix();
        return std::move(answer_);
    }

 private:
    void AskAllSecurities() {
        answer_ = CheckOrder(run_, store_, kAllSecurities, trial_);
        if (answer_.code == code::kNoRow) answer_ = {};
        allPassed_ = answer_.Passed();
        if (answer_.code == code::kNetQuantity) PutOff();
    }

    void AskGroup() {
        const std::int32_t group = order_.scripGroupNumber;
        if (group == 0 || group == kAllSecurities) return;
        answer_ = CheckOrder(run_, store_, group, trial_);
        if (answer_.code == code::kNoRow) answer_ = {};
        if (answer_.code == code::kNetQuantity) {
            passedGroup_ = deferred_;
            PutOff();
        } else {
            passedGroup_ = answer_.Passed();
        }
    }

    void AskScrip() {
        const bool askedBefore = order_.token == kAllSecurities ||
                                 (order_.token == order_.scripGroupNumber && order_.scripGroupNumber != 0);
        RuleAnswer answer{code::kNoRow, {}};
        if (!askedBefore) answer = CheckOrder(run_, store_, order_.token, trial_);
        if (answer.code == code::kNoRow) {
            answer_ = deferred_ ? RuleAnswer{code::kNetQuantity, std::move(heldText_)} : RuleAnswer{};
            return;
        }
        if (answer.Passed()) deferred_ = false;
        answer_ = std::move(answer);
    }

    void PutOff() {
        heldText_ = std::move(answer_.text);
        answer_ = {};
        deferred_ = true;
    }

    void AddSuffix() {
        std::string& text = answer_.text;
        if (!passedGroup_) {
            text.append(" for the Group ").append(order_.scripGroup.View());
        } else if (!allPassed_) {
            if (AnswersForAllSecurities(order_)) text.append(" across all securities");
        } else {
            text.append(" for ").append(FieldText(order_.contract.symbol));
            text.append(" ").append(FieldText(order_.contract.series));
        }
    }

    CheckRun& run_;
    CSurvLimitStore& store_;
    const ScripTrial& trial_;
    const tagOrderInfoForSurv& order_;
    RuleAnswer answer_;
    std::string heldText_;
    bool allPassed_ = false;
    bool passedGroup_ = true;
    bool deferred_ = false;
};

/// Hands the breach rows from `from` on to the host's list.
void ReportBreaches(const TrialBuffers& buffers, std::size_t from, CPtrList* list) {
    if (!list) return;
    for (std::size_t i = from; i < buffers.breaches.size(); ++i) {
        list->AddTail(new tagBreachRow(buffers.breaches[i]));
    }
}

/// Asks the stores of one period in the order of the masks. The first refusal ends it; in a probe the last answer
/// stands.
RuleAnswer CheckPeriodicities(CheckRun& run, Period period, const ScripTrial& trial) {
    tagOrderInfoForSurv& order = run.level.order;
    CEarlyStop stop(*run.level.category, period);
    RuleAnswer answer;
    for (const std::int16_t mask : MasksOfScope(order.marketSegment).Of(period)) {
        order.periodicity = mask;
        if (CSurveillanceInfo* info = run.level.category->limitStores.Find(mask)) {
            stop.Matched();
            const std::size_t breachesBefore = run.buffers.breaches.size();
            answer = CStoreCheck(run, info->store, trial).Run();
            if (run.mode == CheckMode::kProbe) {
                ReportBreaches(run.buffers, breachesBefore, run.limitRows);
            } else if (!answer.Passed()) {
                answer.text.append(LimitMaskLabel(mask));
                return answer;
            }
        }
        if (stop.AllMet()) break;
    }
    return answer;
}

}  // namespace

RuleAnswer CheckCategory(LevelTrial& level, TrialBuffers& buffers, CheckMode mode, CPtrList* limitRows) {
    CSurveillanceCategory& category = *level.category;
    tagOrderInfoForSurv& order = level.order;
    CUndoLog& undo = category.Context().undo;
    const std::size_t touchedBefore = buffers.touched.size();
    CheckRun run{level, buffers, mode, limitRows, {category.Context().settings, undo}};
    // An enquiry nets buys and sells whoever the client is.
    const bool apart = order.NoNetting() && mode == CheckMode::kReal;
    const GrossMode grossMode = apart ? GrossMode::kBuyPlusSell : GrossMode::kNetted;

    order.ownerInfo = category.OwnerOf(order);
    std::array<PeriodTrial, kPeriods.size()> trials;
    CUndoGuard guard(undo);  // runs out before the trials' new accounts do: the log never points at a dead one
    for (std::size_t i = 0; i < kPeriods.size(); ++i) {
        TryPeriod(category, order, kPeriods[i], FlatPosition::kMoves, grossMode, undo, trials[i]);
    }
    RuleAnswer answer;
    for (std::size_t i = 0; i < kPeriods.size() && answer.Passed(); ++i) {
        answer = CheckPeriodicities(run, kPeriods[i], trials[i].scrip);
    }
    if (!answer.Passed()) {
        buffers.touched.resize(touchedBefore);
        return answer;
    }
    for (std::size_t i = 0; i < kPeriods.size(); ++i) KeepAccount(category, order, kPeriods[i], trials[i]);
    guard.Keep();
    return answer;
}

}  // namespace surv
