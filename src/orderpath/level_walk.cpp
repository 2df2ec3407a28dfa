#include "orderpath/level_walk.h"

#include <algorithm>

#include "orderpath/level_commit.h"
#include "orderpath/level_preferences.h"

namespace surv {
namespace {

/// Where the request keeps the flags of a level. The two bytes differ by one place.
struct LevelFlags {
    Level level;
    int checkBit;
    int marginBit;
};
constexpr std::array kLevelFlags{
    LevelFlags{Level::kSubClient, 5, 4}, LevelFlags{Level::kClient, 4, 3}, LevelFlags{Level::kFamily, 3, 2},
    LevelFlags{Level::kDealer, 2, 1},    LevelFlags{Level::kGroup, 1, 0},
};

constexpr std::array kWalkOrder{Level::kSubClient, Level::kClient, Level::kFamily,
                                Level::kDealer,    Level::kGroup,  Level::kRoot};
constexpr std::array kCommitOrder{Level::kGroup,     Level::kDealer, Level::kClient,
                                  Level::kSubClient, Level::kFamily, Level::kRoot};
constexpr std::array kRollbackOrder{Level::kGroup,  Level::kDealer,    Level::kFamily,
                                    Level::kClient, Level::kSubClient, Level::kRoot};

bool Flag(std::uint8_t flags, int bit) { return (flags >> bit & 1) != 0; }

}  // namespace

CLevelWalk::CLevelWalk(CSurveillanceManager& manager, tagSurveillanceInfo& request, OrderIntake& intake,
                       const CHierarchy& hierarchy, const CheckLists& lists, CheckMode mode)
    : manager_(manager),
      context_(manager.Context()),
      request_(request),
      intake_(intake),
      hierarchy_(hierarchy),
      lists_(lists),
      mode_(mode) {}

CLevelWalk::~CLevelWalk() {
    if (ended_) return;
    // An exception cut the call short: nothing it changed may stand.
    context_.undo.Restore(CUndoLog::Mark{}, context_.undo.Here());
    EndTrial();
}

void CLevelWalk::EndTrial() {
    context_.undo.Clear();
    manager_.Buffers().Clear();
    ended_ = true;
}

bool CLevelWalk::IsChecked(Level level) const {
    if (level == Level::kRoot) return true;
    return Flag(request_.levelCheckFlags, kLevelFlags[static_cast<std::size_t>(level)].checkBit);
}

bool CLevelWalk::WalkComesTo(Level level) const {
    if (!hierarchy_.At(level) || !Continues()) return false;
    return level != Level::kRoot || intake_.updateAllLevels;
}

/// The level's own order record, with the fields that are rewritten before each level.
LevelTrial& CLevelWalk::Open(Level level) {
    LevelTrial& trial = TrialOf(level);
    trial.category = hierarchy_.At(level);
    trial.order = intake_.order;
    tagOrderInfoForSurv& order = trial.order;
    order.levelCode = LevelCodeOf(level, request_);
    order.parentCode = level == Level::kSubClient ? CodeText{FieldText(request_.clientCode)}
                                                  : ParentCodeOf(intake_.order, request_);
    const bool marginApplies =
        level == Level::kRoot
            ? order.contract.expiryDate != 0
            : Flag(request_.levelMarginFlags, kLevelFlags[static_cast<std::size_t>(level)].marginBit);
    order.levelMarginFlag = marginApplies ? 1 : 0;
    order.riskPreference = DefaultPreferenceOf(order.ExchangeMask());
    return trial;
}

CLevelWalk::End CLevelWalk::Run() {
    for (const Level level : kWalkOrder) {
        if (WalkComesTo(level) && !TryLevel(level)) return End::kRefusedAtOnce;
    }
    return passing_ && mode_ == CheckMode::kReal ? End::kPass : End::kRefused;
}

bool CLevelWalk::TryLevel(Level level) {
    LevelTrial& trial = Open(level);
    WriteField(request_.failedLevelCode, trial.order.levelCode.View());
    request_.failedLevelType = LevelTypeOf(level, request_);

    if (level == Level::kClient || level == Level::kDealer) {
        Refusal refusal;
        if (!ApplyLevelPreferences(manager_, level, *trial.category, request_, trial.order, refusal)) {
            refusal_ = std::move(refusal);
            passing_ = false;
            return level == Level::kDealer;
        }
        // In a probe too the dealer is only asked when the level below has passed.
        if (level == Level::kDealer && !passing_) return true;
    } else {
        LoadEffectivePreference(manager_, *trial.category, trial.order);
    }
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
        RuleAnswer answer = CheckCategory(trial, buffers, mode_, lists_.limitRows);
        passing_ = answer.Passed();
        if (!passing_) {
            refusal_ = {status::kRefused, answer.code, CodeUse::kErrorAndHeadCode, std::move(answer.text)};
        }
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
    DropRowsOfEarlierLevels(trial);
}

/// Where one category stands at two levels a row goes to the host once.
void CLevelWalk::DropRowsOfEarlierLevels(LevelTrial& trial) {
    const bool shared = std::any_of(levels_.begin(), levels_.end(), [&trial](const LevelTrial& other) {
        return &other != &trial && other.category == trial.category && other.road != LevelRoad::kPassedOver;
    });
    if (!shared) return;
    auto& rows = manager_.Buffers().touched;
    const auto first = rows.begin() + static_cast<std::ptrdiff_t>(trial.touched.from);
    rows.erase(std::remove_if(first, rows.end(),
                              [&](const CSurvLimitEntry* row) { return std::find(rows.begin(), first, row) != first; }),
               rows.end());
    trial.touched.to = rows.size();
}

void CLevelWalk::CommitLevel(Level level) {
    LevelTrial& trial = TrialOf(level);
    if (trial.road == LevelRoad::kPassedOver) Open(level);
    const auto& rows = manager_.Buffers().touched;
    const std::span<CSurvLimitEntry* const> touched{rows.data() + trial.touched.from,
                                                    trial.touched.to - trial.touched.from};
    CommitOrder(trial, touched, intake_.updateAllLevels, lists_.limitRows);
}

void CLevelWalk::Commit() {
    request_.failedLevelType = -1;
    WriteField(request_.failedLevelCode, {});
    for (const Level level : kCommitOrder) {
        if (hierarchy_.At(level)) CommitLevel(level);
    }
    EndTrial();
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
                lists_.rollbackRows->AddTail(new tagBreachRow(manager_.Buffers().breaches[i]));
            }
        }
    }
    EndTrial();
}

}  // namespace surv
