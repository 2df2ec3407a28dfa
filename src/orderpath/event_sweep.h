#pragma once

#include "orderpath/hierarchy.h"
#include "surveillance/containers.h"

namespace surv {

class CSurveillanceManager;

/// How the levels of an event come by their preference: each from the default on, or each from that of the level
/// before.
enum class PreferenceRoad : std::uint8_t { kEvent, kConversion };

/// An event on its way through the levels.
struct EventSweep {
    const tagSurveillanceInfo& request;
    const CHierarchy& hierarchy;
    CSurveillanceCategory* ownAccount = nullptr;  ///< of "*****", for own-account orders that have it
    bool updateAllLevels = true;
    bool rpfAvailable = true;  ///< false: no level applies the margin rule
    PreferenceRoad road = PreferenceRoad::kEvent;
};

/// Takes the event in at every level of the hierarchy, then makes it real at every level. Gives the preference of the
/// last level. The caller holds the trial scope. REQUIRES: the order is complete but for what each level gives it.
RiskPreference SweepLevels(CSurveillanceManager& manager, const EventSweep& sweep, const tagOrderInfoForSurv& order,
                           CPtrList* limitRows);

}  // namespace surv
