// May this order stand? The road of a check, from the request to the answer.

#include "orderpath/hierarchy.h"
#include "orderpath/intake.h"
#include "orderpath/level_walk.h"
#include "orderpath/market_price.h"
#include "orderpath/policy.h"
#include "orderpath/refusal.h"
#include "orderpath/risk_lookup.h"
#include "platform/format.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr std::int16_t kNoOrder = 2070;

Refusal NoMarket(const OrderIntake& intake) {
    const std::string symbol{FieldText(intake.order.contract.symbol)};
    const std::string series{FieldText(intake.order.contract.series)};
    const std::string text = Format(refusal::kNoMarket.text, symbol.c_str(), series.c_str());
    return MakeRefusal(refusal::kNoMarket, WithClientText(intake.clientText, text));
}

/// Takes the scrip's prices, and a price for an order at market. False: there is no market.
bool PriceOrder(const CSurveillanceManager& manager, OrderIntake& intake) {
    tagOrderInfoForSurv& order = intake.order;
    if (order.IsConversion()) return true;
    TakeMarketPrices(manager, order);
    // A stored order at market went in at the price that the check would have taken.
    if (intake.view.message->code == 2040 && order.prevQuantity > 0 && order.prevPrice == 0) {
        order.prevPrice = MarketPrice(order);
    }
    if (order.price == 0) order.price = MarketPrice(order);
    return order.price != 0;
}

Refusal UnknownOrLimitless(const OrderIntake& intake, const HierarchyRefusal& failed) {
    std::string text = WithClientText(intake.clientText, failed.message);
    text.append(" : ").append(failed.code.View()).append(" ");
    return {status::kNoLimits, code::kNoLimits, CodeUse::kErrorCode, std::move(text)};
}

Refusal NoRiskParameters(const OrderIntake& intake) {
    return MakeRefusal(refusal::kNoRiskParameters, WithClientText(intake.clientText, refusal::kNoRiskParameters.text));
}

/// Whose conversions are answered in the order's record, too.
bool WantsRejectionText(const tagSurveillanceInfo& request, const tagOrderInfoForSurv& order) {
    constexpr int kOwnDealing = 4;
    return order.IsConversion() && (IsOwnClient(request.dealerType) ||
                                    (request.dealerType == level::kClientsDealer && request.clientType == kOwnDealing));
}

/// The text of a refusal in the walk climbs to the host with the client ahead and " of " behind.
Refusal AtEndOfWalk(const tagSurveillanceInfo& request, const OrderIntake& intake, Refusal refusal) {
    refusal.status = status::kRefused;
    refusal.text.append(" of ");
    if (intake.view.order && WantsRejectionText(request, intake.order)) {
        WriteField(intake.view.order->rejectionText, refusal.text);
    }
    refusal.text = WithClientText(intake.clientText, refusal.text);
    return refusal;
}

}  // namespace

std::int16_t CSurveillanceManager::CheckSurveillance(tagSurveillanceInfo& request, tagOrdErrMessage& error,
                                                     short& status, const CheckLists& lists, bool probe) {
    status = status::kPass;
    request.failedLevelType = -1;
    WriteField(request.failedLevelCode, {});

    OrderIntake intake;
    intake.view = ViewRequest(request);
    if (!intake.view.message || !intake.view.message->inCheck) return kNotDone;
    if (intake.view.message->code == kNoOrder) return kDone;
    if (!ReadRequest(request, context_, OrderRoad::kCheck, intake)) return kNotDone;
    tagOrderInfoForSurv& order = intake.order;
    WriteField(request.failedLevelCode, order.levelCode.View());

    const auto refuse = [&](const Refusal& refusal) {
        WriteRefusal(refusal, context_.clock, error, status);
        return kDone;
    };
    CHierarchy hierarchy;
    const HierarchyRefusal failed = FindHierarchy(*this, request, order, hierarchy);
    if (failed.message) return refuse(UnknownOrLimitless(intake, failed));

    FillCheckEvent(intake);
    ScaleNcdexPrices(order);  // before the market's prices come in, which are scaled already
    const bool priced = PriceOrder(*this, intake);
    order.scripInfo = context_.stores.FindOrMakeScrip(order);
    if (!priced) return refuse(NoMarket(intake));
    if (NeedsRiskParameters(order)) {
        if (!FindRiskParameters(context_, order)) return refuse(NoRiskParameters(intake));
        RegisterContract(*this, hierarchy, order);
    }
    order.parentCode = ParentCodeOf(order, request);
    const PolicyAnswer policy = TestOrderPolicy(*this, request, intake, hierarchy);
    if (policy.end == PolicyEnd::kRefused) return refuse(policy.refusal);
    if (policy.end == PolicyEnd::kPassesAtOnce) return kDone;

    CLevelWalk walk(*this, request, intake, hierarchy, lists, probe ? CheckMode::kProbe : CheckMode::kReal);
    const CLevelWalk::End end = walk.Run();
    if (end == CLevelWalk::End::kPass) {
        walk.Commit();
        return kDone;
    }
    walk.Rollback();
    return refuse(end == CLevelWalk::End::kRefused ? AtEndOfWalk(request, intake, walk.GetRefusal())
                                                   : walk.GetRefusal());
}

}  // namespace surv
