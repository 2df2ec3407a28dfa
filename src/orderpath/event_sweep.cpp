#include "orderpath/event_sweep.h"

#include "limits/category_check.h"
#include "orderpath/intake.h"
#include "orderpath/level_commit.h"
#include "orderpath/level_preferences.h"
#include "service/manager.h"

namespace surv {
namespace {

class CSweep {
 public:
    CSweep(CSurveillanceManager& manager, const EventSweep& sweep, const tagOrderInfoForSurv& order)
        : manager_(manager), sweep_(sweep), order_(order), preference_(order.riskPreference) {}

    RiskPreference Run(CPtrList* limitRows) {
        for (const Level level : kEntryOrder) {
            if (CSurveillanceCategory* category = sweep_.hierarchy.At(level)) UpdateLevel(level, *category);
        }
        if (sweep_.ownAccount) UpdateOwnAccount(*sweep_.ownAccount);
        CommitLevels({opened_.data(), count_}, manager_.Buffers(), sweep_.updateAllLevels, limitRows);
        return preference_;
    }

 private:
    LevelTrial& Open(CSurveillanceCategory& category) {
        LevelTrial& trial = levels_[count_];
        opened_[count_++] = &trial;
        trial.category = &category;
        trial.road = LevelRoad::kUpdated;
        trial.order = order_;
        const bool kept = sweep_.road == PreferenceRoad::kConversion;
        trial.order.riskPreference = kept ? preference_ : DefaultPreferenceOf(order_.ExchangeMask());
        return trial;
    }

    void UpdateLevel(Level level, CSurveillanceCategory& category) {
        LevelTrial& trial = Open(category);
        tagOrderInfoForSurv& order = trial.order;
        order.levelCode = LevelCodeOf(level, sweep_.request);
        TakeHolder(level, order);
        const bool asked =
            level == Level::kRoot ? order.contract.expiryDate != 0 : HasMarginFlag(level, sweep_.request);
        TakeMarginFlag(order, asked);
        if (level == Level::kDealer || level == Level::kClient) {
            ApplyEventPreferences(manager_, level, category, sweep_.request, sweep_.road, order);
        } else {
            TakeOwnPreference(manager_, category, sweep_.road, order);
        }
        order.deliveryLevel = CountsDeliveries(level, sweep_.request) && HasDeliveryLevel(order);
        Update(trial);
    }

    /// The house's own account is margined like a client.
    void UpdateOwnAccount(CSurveillanceCategory& category) {
        LevelTrial& trial = Open(category);
        tagOrderInfoForSurv& order = trial.order;
        order.levelCode = order.accountCode.View();
        order.parentCode = {};
        TakeMarginFlag(order, HasMarginFlag(Level::kClient, sweep_.request));
        TakeOwnPreference(manager_, category, sweep_.road, order);
        Update(trial);
    }

    void Update(LevelTrial& trial) {
        TrialBuffers& buffers = manager_.Buffers();
        trial.touched.from = buffers.touched.size();
        UpdateCategory(trial, buffers, sweep_.updateAllLevels);
        trial.touched.to = buffers.touched.size();
        preference_ = trial.order.riskPreference;
    }

    void TakeMarginFlag(tagOrderInfoForSurv& order, bool asked) const {
        const bool inMode = manager_.Context().settings.positionMode == 1 || sweep_.rpfAvailable;
        order.levelMarginFlag = asked && inMode ? 1 : 0;
    }

    [[nodiscard]] bool HasDeliveryLevel(const tagOrderInfoForSurv& order) const {
        const bool funded = sweep_.road == PreferenceRoad::kEvent && order.productType == product::kMtf;
        return order.IsDelivery() || order.productType == product::kConvertToMargin || funded;
    }

    /// Whose account the order is in at a level. The sub client of a client without a group stands, like its client and
    /// family, under the client.
    void TakeHolder(Level level, tagOrderInfoForSurv& order) const {
        constexpr std::int16_t kGroupless = 6;
        order.parentCode = ParentCodeOf(order, sweep_.request);
        const bool below = level == Level::kFamily || level == Level::kClient || level == Level::kSubClient;
        const std::int16_t subClient = order.subClientLevelType;
        if (below && order.clientLevelType == kGroupless && subClient != -1 && subClient != level::kNone) {
            order.parentCode = FieldText(sweep_.request.clientCode);
            order.clientLevelType = subClient;
            order.groupLevelType = sweep_.request.clientType;
            order.subClientLevelType = -1;
        }
        if (level == Level::kSubClient) order.parentCode = FieldText(sweep_.request.clientCode);
    }

    static constexpr std::size_t kSweptLevels = kEntryOrder.size() + 1;

    CSurveillanceManager& manager_;
    const EventSweep& sweep_;
    const tagOrderInfoForSurv& order_;
    RiskPreference preference_;  ///< of the level before
    std::array<LevelTrial, kSweptLevels> levels_;
    std::array<LevelTrial*, kSweptLevels> opened_{};
    std::size_t count_ = 0;
};

}  // namespace

RiskPreference SweepLevels(CSurveillanceManager& manager, const EventSweep& sweep, const tagOrderInfoForSurv& order,
                           CPtrList* limitRows) {
    return CSweep(manager, sweep, order).Run(limitRows);
}

}  // namespace surv
