// What happened to an order? The road of an event, from the request through every level. Nothing is judged here.

#include "orderpath/event_sweep.h"
#include "orderpath/hierarchy.h"
#include "orderpath/intake.h"
#include "orderpath/market_price.h"
#include "orderpath/policy.h"
#include "orderpath/refusal.h"
#include "orderpath/risk_lookup.h"
#include "orderpath/trial_scope.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr std::int16_t kTradeCode = 2222;
constexpr std::int16_t kStoredOrderCode = 31000;

/// Codes that the host may send and that change nothing.
bool HasEffect(const MessageCodeRow& message) {
    return message.primary != PrimaryRecord::kNone || message.code == kStoredOrderCode;
}

/// A stored order at market went in at the price that its check took.
void PriceAtMarket(tagOrderInfoForSurv& order, const StoredPrices& stored) {
    if (stored.leaves && order.prevQuantity > 0 && order.prevPrice == 0) order.prevPrice = MarketPrice(order);
    if (stored.enters && order.quantity > 0 && order.price == 0) order.price = MarketPrice(order);
}

/// Without a record of the house's after-market orders they aren't taken in.
bool IsTakenAfterMarket(const tagSurveillanceInfo& request, const tagOrderInfoForSurv& order,
                        const CHierarchy& hierarchy) {
    if (order.productType != product::kAmoMargin && order.productType != product::kAmoDelivery) return true;
    const PreferenceMap* preferences = AfterMarketPreferences(request, order, hierarchy);
    return !preferences || preferences->Find(kOverallPreference);
}

void WriteError(tagAdminErrMessage* error, std::string_view text) {
    if (error) WriteField(error->errorText, text);
}

}  // namespace

std::int16_t CSurveillanceManager::UpdateSurveillance(tagSurveillanceInfo& request, tagAdminErrMessage* error,
                                                      CPtrList* limitRows, bool dealerOnly) {
    request.failedLevelType = -1;
    WriteField(request.failedLevelCode, {});
    const auto fail = [&](std::string_view text) {
        if (error) error->timeStamp = context_.clock.Stamp();
        WriteError(error, text);
        return kNotDone;
    };
    OrderIntake intake;
    intake.view = ViewRequest(request);
    if (!intake.view.message || !intake.view.message->inUpdate) return fail("Invalid Message Code");
    if (!HasEffect(*intake.view.message)) return kDone;
    if (!ReadRequest(request, context_, OrderRoad::kUpdate, intake)) return kNotDone;
    tagOrderInfoForSurv& order = intake.order;
    if (order.marketSegment == 0) return kNotDone;

    const StoredPrices stored = FillUpdateEvent(intake, context_.settings);
    ScaleNcdexPrices(order);  // before the market's prices come in, which are scaled already
    TakeMarketPrices(*this, order);
    PriceAtMarket(order, stored);
    order.scripInfo = context_.stores.FindOrMakeScrip(order);

    const bool rpfAvailable = !NeedsRiskParameters(order) || FindRiskParameters(context_, order);
    if (!rpfAvailable && context_.settings.positionMode == 1) {
        WriteError(error, refusal::kNoRiskParameters.text);
        if (error) error->errorCode = code::kNoRiskParameters;
        return kDone;
    }
    CHierarchy hierarchy;
    const HierarchyRefusal failed = FindEventHierarchy(*this, request, order, dealerOnly, hierarchy);
    if (failed.message) {
        return fail(std::string{failed.message}.append(" : ").append(failed.code.View()).append(" "));
    }
    CSurveillanceCategory* const ownAccount = dealerOnly ? nullptr : FindOwnAccount(order);
    RegisterContract(*this, hierarchy, order);
    if (intake.view.message->code == kTradeCode) RegisterTrade(order, hierarchy, ownAccount);

    order.compulsoryDelivery = IsCompulsoryDelivery(context_, order);
    if (!IsTakenAfterMarket(request, order, hierarchy)) return kDone;
    context_.stores.TakeAdditionalMargin(order);

    CTrialScope scope(context_.undo, buffers_);
    const EventSweep sweep{request, hierarchy, ownAccount, intake.updateAllLevels, rpfAvailable};
    order.riskPreference = SweepLevels(*this, sweep, order, limitRows);
    if (order.IsConversion()) ConversionUpdateSurveillance(request, order, limitRows);
    scope.End();
    return kDone;
}

CSurveillanceCategory* CSurveillanceManager::FindOwnAccount(const tagOrderInfoForSurv& order) const {
    const bool own = order.proClient == kProClientOwn && context_.settings.HoldsClientPositions();
    return own ? FindCategory(order.accountCode.View()) : nullptr;
}

/// A scrip comes under MTM by its first trade.
void CSurveillanceManager::RegisterTrade(const tagOrderInfoForSurv& order, const CHierarchy& hierarchy,
                                         CSurveillanceCategory* ownAccount) {
    const std::int64_t key = PlainKey(order.ExchangeMask(), order.token);
    CBroadcastScrip& scrip = broadcastHash.FindOrMake(key);
    scrip.SetSecurity(order.ExchangeMask(), order.token, order.underlyingToken, order.contract, order.priceMultiplier);
    for (const Level level : kEntryOrder) scrip.AddCategory(hierarchy.At(level));
    scrip.AddCategory(ownAccount);
}

}  // namespace surv
