#include "orderpath/level_walk.h"

#include <algorithm>

#include "orderpath/level_commit.h"
#include "orderpath/level_preferences.h"
#include "platform/host_list.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr std::array kWalkOrder{Level::kSubClient, Level::kClient, Level::kFamily,
                                Level::kDealer,    Level::kGroup,  Level::kRoot};
constexpr std::array kCommitOrder{Level::kGroup,     Level::kDealer, Level::kClient,
                                  Level::kSubClient, Level::kFamily, Level::kRoot};
constexpr std::array kRollbackOrder{Level::kGroup,  Level::kDealer,    Level::kFamily,
                                    Level::kClient, Level::kSubClient, Level::kRoot};

/// Deliveries, conversions to them and margin funding are no matter of the group and the house.
bool SkipsHouse(const tagOrderInfoForSurv& order) { return order.IsDelivery() || order.productType == product::kMtf; }

}  // namespace

CLevelWalk::CLevelWalk(CSurveillanceManager& manager, tagSurveillanceInfo& request, OrderIntake& intake,
                       const CHierarchy& hierarchy, const CheckLists& lists, CheckMode mode)
    : manager_(manager),
      context_(manager.Context()),
      request_(request),
      intake_(intake),
      hierarchy_(hierarchy),
      lists_(lists),
      mode_(mode),
      scope_(context_.undo, manager.Buffers()) {}

bool CLevelWalk::IsChecked(Level level) const {
    if (level == Level::kRoot) return true;
    // Of the products that a group doesn't see, a dealer that isn't its own client only takes the order in.
    if (level == Level::kDealer && SkipsHouse(intake_.order) && !CountsDeliveries(level, request_)) return false;
    return HasCheckFlag(level, request_);
}

bool CLevelWalk::WalkComesTo(Level level) const {
    if (!hierarchy_.At(level) || !Continues()) return false;
    const bool house = level == Level::kGroup || level == Level::kRoot;
    if (house && SkipsHouse(intake_.order)) return false;
    return level != Level::kRoot || intake_.updateAllLevels;
}

/// The level's own order record, with the fields that are rewritten before each level.
LevelTrial& CLevelWalk::Open(Level level) {
    LevelTrial& trial = TrialOf(level);
    trial.category = hierarchy_.At(level);
    trial.order = intake_.order;
    tagOrderInfoForSurv& order = trial.order;
    order.levelCode = LevelCodeOf(level, request_);
    if (level == Level::kSubClient) order.parentCode = FieldText(request_.clientCode);
    const bool marginApplies = level == Level::kRoot ? order.contract.expiryDate != 0 : HasMarginFlag(level, request_);
    order.levelMarginFlag = marginApplies ? 1 : 0;
    order.riskPreference = DefaultPreferenceOf(order.ExchangeMask());
    return trial;
}

CLevelWalk::End CLevelWalk::Run() {
    if (!PriceConversion()) return End::kRefused;
    for (const Level level : kWalkOrder) {
        if (WalkComesTo(level) && !TryLevel(level)) return End::kRefusedAtOnce;
    }
    return passing_ && mode_ == CheckMode::kReal ? End::kPass : End::kRefused;
}

bool CLevelWalk::PriceConversion() {
    tagOrderInfoForSurv& order = intake_.order;
    if (!order.IsConversion()) return true;
    const auto* const counting = std::find_if(kWalkOrder.begin(), kWalkOrder.end(), [&](Level level) {
        return hierarchy_.At(level) && CountsDeliveries(level, request_);
    });
    if (counting != kWalkOrder.end()) order.price = ConversionPrice(*hierarchy_.At(*counting), order);
    priced_ = order.price != 0;
    if (!priced_ && counting == kWalkOrder.end()) RefuseConversion();
    return passing_;
}

void CLevelWalk::RefuseConversion() {
    refusal_ = MakeRefusal(refusal::kNoFreeQuantity);
    passing_ = false;
}

bool CLevelWalk::TryLevel(Level level) {
    // What isn't held is refused where it should be held; the levels below have nothing to try.
    if (!priced_ && !CountsDeliveries(level, request_)) return true;
    LevelTrial& trial = Open(level);
    WriteField(request_.failedLevelCode, trial.order.levelCode.View());
    request_.failedLevelType = LevelTypeOf(level, request_);

    if (level == Level::kClient || level == Level::kDealer) {
        if (auto refused = ApplyLevelPreferences(manager_, level, *trial.category, request_, trial.order)) {
            refusal_ = std::move(refused->refusal);
            passing_ = false;
            return !refused->endsCall;
        }
        // In a probe too the dealer is only asked when the level below has passed.
        if (level == Level::kDealer && !passing_) return true;
    } else {
        LoadEffectivePreference(manager_, *trial.category, trial.order);
    }
    if (!priced_) {
        RefuseConversion();
        return true;
    }
    lastPreference_ = trial.order.riskPreference;
    RunLevel(level, trial);
    return true;
}

void CLevelWalk::RunLevel(Level level, LevelTrial& trial) {
    TrialBuffers& buffers = manager_.Buffers();
    trial.undoFrom = context_.undo.Here();
    trial.touched.from = buffers.touched.size();
    trial.breaches.from = buffers.breaches.size();
    if (IsChecked(level)) {
        trial.road = LevelRoad::kChecked;
        CategoryAnswer answer = CheckCategory(trial, buffers, mode_, lists_.limitRows);
        if (answer.asked) passing_ = answer.passed;
        RuleAnswer& told = answer.refusal;
        if (!told.Passed()) refusal_ = {status::kRefused, told.code, CodeUse::kErrorAndHeadCode, std::move(told.text)};
    } else if (mode_ == CheckMode::kReal) {
        const bool takesIt = intake_.updateAllLevels || IsAlwaysUpdatedLevel(LevelTypeOf(level, request_));
        if (takesIt) {
            trial.road = LevelRoad::kUpdated;
            UpdateCategory(trial, buffers, intake_.updateAllLevels);
        }
    }
    trial.undoTo = context_.undo.Here();
    trial.touched.to = buffers.touched.size();
    trial.breaches.to = buffers.breaches.size();
}

void CLevelWalk::Commit() {
    std::array<LevelTrial*, kLevelCount> levels{};
    std::size_t count = 0;
    for (const Level level : kCommitOrder) {
        if (!hierarchy_.At(level)) continue;
        LevelTrial& trial = TrialOf(level);
        // A level that was reached but neither asked nor updated has its order already.
        if (!trial.category) LoadEffectivePreference(manager_, *hierarchy_.At(level), Open(level).order);
        levels[count++] = &trial;
    }
    CommitLevels({levels.data(), count}, manager_.Buffers(), intake_.updateAllLevels, lists_.limitRows);
    request_.failedLevelType = -1;
    WriteField(request_.failedLevelCode, {});
    if (intake_.order.IsConversion()) TakeOutSource();
    scope_.End();
}

/// What has been converted leaves its source, under the preference of the last level of the walk.
void CLevelWalk::TakeOutSource() {
    if (intake_.view.order) intake_.view.order->price = intake_.order.price;
    intake_.order.riskPreference = lastPreference_;
    manager_.ConversionUpdateSurveillance(request_, intake_.order, lists_.limitRows);
}

void CLevelWalk::Rollback() {
    for (auto level = kWalkOrder.rbegin(); level != kWalkOrder.rend(); ++level) {
        const LevelTrial& trial = TrialOf(*level);
        if (trial.road == LevelRoad::kChecked) context_.undo.Restore(trial.undoFrom, trial.undoTo);
    }
    if (lists_.rollbackRows) {
        for (const Level level : kRollbackOrder) {
            const BufferRange& range = TrialOf(level).breaches;
            for (std::size_t i = range.from; i < range.to; ++i) {
                HandOver(*lists_.rollbackRows, std::make_unique<tagBreachRow>(manager_.Buffers().breaches[i]));
            }
        }
    }
    scope_.End();
}

}  // namespace surv
