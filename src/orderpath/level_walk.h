#pragma once

#include <array>

#include "limits/category_check.h"
#include "limits/level_trial.h"
#include "orderpath/hierarchy.h"
#include "orderpath/intake.h"
#include "orderpath/refusal.h"
#include "orderpath/trial_scope.h"

namespace surv {

class CSurveillanceManager;

/// Tries an order at each level from the lowest to the root, and is the only owner of that trial: it ends in a commit
/// of all levels or in a rollback of all, on any way out.
///
/// 1. A level whose check flag is set is checked; the root always is. Others only take the order in.
/// 2. The first refusal ends the walk; in a probe every level is tried.
/// 3. After a refusal every checked level is as it was. A level that was only updated keeps the order in its rows
///    and accounts.
class CLevelWalk {
 public:
    CLevelWalk(CSurveillanceManager& manager, tagSurveillanceInfo& request, OrderIntake& intake,
               const CHierarchy& hierarchy, const CheckLists& lists, CheckMode mode);
    CLevelWalk(const CLevelWalk&) = delete;
    CLevelWalk& operator=(const CLevelWalk&) = delete;

    /// How a walk ends: the order may stand, it is refused at the end, or a level ended the call at once.
    enum class End : std::uint8_t { kPass, kRefused, kRefusedAtOnce };
    [[nodiscard]] End Run();
    /// Makes the order real at all levels. REQUIRES: Run gave kPass.
    void Commit();
    /// Undoes all levels; breach rows go to the host's list. REQUIRES: Run gave another end.
    void Rollback();

    [[nodiscard]] const Refusal& GetRefusal() const { return refusal_; }

 private:
    [[nodiscard]] bool Continues() const { return passing_ || mode_ == CheckMode::kProbe; }
    LevelTrial& Open(Level level);
    /// Gives a conversion its price, of the level where deliveries count. False: it is refused before any level.
    [[nodiscard]] bool PriceConversion();
    void RefuseConversion();
    /// False when the level's preferences end the call.
    [[nodiscard]] bool TryLevel(Level level);
    void RunLevel(Level level, LevelTrial& trial);
    [[nodiscard]] bool WalkComesTo(Level level) const;
    [[nodiscard]] bool IsChecked(Level level) const;
    void TakeOutSource();
    LevelTrial& TrialOf(Level level) { return levels_[static_cast<std::size_t>(level)]; }

    CSurveillanceManager& manager_;
    SurvContext& context_;
    tagSurveillanceInfo& request_;
    OrderIntake& intake_;
    const CHierarchy& hierarchy_;
    CheckLists lists_;
    CheckMode mode_;
    CTrialScope scope_;
    std::array<LevelTrial, kLevelCount> levels_;  ///< in the order of the walk, which is that of Level
    bool passing_ = true;                         ///< the last level asked has passed
    RiskPreference lastPreference_;               ///< of the last level tried
    bool priced_ = true;                          ///< false: a conversion of what isn't held
    Refusal refusal_;
};

}  // namespace surv
