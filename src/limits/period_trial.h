#pragma once

#include <memory>

#include "categories/category.h"
#include "limits/level_trial.h"
#include "limits/scrip_trial.h"

namespace surv {

/// An order tried in one period of one category: on a copy of the flat position, and in place in the account's tree.
struct PeriodTrial {
    ScripTrial scrip;
    std::unique_ptr<CClientExposure> newAccount;  ///< the order's account, when the category hasn't got it yet
    CClientExposure* account = nullptr;           ///< the order's account, new or not
    ScripPath path;                               ///< the order's contract in it
};

enum class FlatPosition : std::uint8_t { kMoves, kStays };

/// Runs the level's order. Sets its periodicity and leaves it at the period's mask.
/// REQUIRES: order.ownerInfo is the category's; accountKey is the order's; the trial has its rule set.
void TryPeriod(LevelTrial& level, Period period, const AccountKey& accountKey, FlatPosition flat, GrossMode mode,
               PeriodTrial& trial);

/// The account is in the tree from now on, and its contract among the holders.
void KeepAccount(LevelTrial& level, const AccountKey& accountKey, Period period, PeriodTrial& trial);

}  // namespace surv
