#include "orderpath/policy.h"

#include <array>

#include "limits/scrip_trial.h"
#include "orderpath/policy_tests.h"
#include "service/manager.h"

namespace surv {
namespace {

PolicyVerdict TakeMarginRates(PolicyInput& in) {
    in.manager.Context().stores.TakeAdditionalMargin(in.order);
    return std::nullopt;
}

/// The exchange lets no one open a position in the scrip.
PolicyVerdict TestClosedScrip(PolicyInput& in) {
    constexpr std::int16_t kModeWithTest = 1;
    constexpr std::uint8_t kNoNewPositions = 1 << 5;
    const bool closed =
        in.manager.Context().settings.positionMode == kModeWithTest && (in.request.requestFlags & kNoNewPositions) != 0;
    if (!closed || IsSquareOffAtRoot(in)) return std::nullopt;
    return RefusePolicy(refusal::kNewPositionsClosed);
}

PolicyVerdict TestNamesProduct(PolicyInput& in) {
    const bool named = in.order.productType != product::kNone || !IsCashExchange(in.order.ExchangeMask());
    return named ? std::nullopt : RefusePolicy(refusal::kWrongProduct);
}

/// From here on the order carries its series without blanks.
PolicyVerdict NoteCompulsoryDelivery(PolicyInput& in) {
    if (IsCashExchange(in.order.ExchangeMask())) {
        const FixedText<8> series = Trimmed(FieldText(in.order.contract.series));
        WriteWholeField(in.order.contract.series, series.View());
    }
    in.order.compulsoryDelivery = IsCompulsoryDelivery(in.manager.Context(), in.order);
    return std::nullopt;
}

/// NRI clients and series of compulsory delivery take deliveries alone.
PolicyVerdict TestNeedsDelivery(PolicyInput& in) {
    const std::int16_t product = in.order.productType;
    const bool delivery = product == product::kDelivery || product == product::kAmoDelivery;
    const bool nri = in.order.nriClient && IsCashExchange(in.order.ExchangeMask());
    if (delivery || (!nri && !in.order.compulsoryDelivery)) return std::nullopt;
    return RefusePolicy(refusal::kDeliveryAlone);
}

/// In the order in which they run.
using PolicyTest = PolicyVerdict (*)(PolicyInput&);
constexpr std::array<PolicyTest, 10> kPolicyTests{
    &TestProduct,      &TestMarginPlusShape, &TestAfterMarket, &TakeMarginRates,        &TestClosedScrip,
    &TestNamesProduct, &TestSellPrice,       &TestBuyPrice,    &NoteCompulsoryDelivery, &TestNeedsDelivery,
};

}  // namespace

bool IsCompulsoryDelivery(const SurvContext& context, const tagOrderInfoForSurv& order) {
    const std::int16_t mask = order.ExchangeMask();
    if (!IsCashExchange(mask)) return false;
    return context.products.compulsoryDeliverySeries.Contains(SeriesKey(mask, FieldText(order.contract.series)));
}

bool IsSquareOffAtRoot(const PolicyInput& in) {
    const CSurveillanceCategory* root = in.hierarchy.At(Level::kRoot);
    const CClientExposure* account = root ? root->Book(Period::kExpiry).accounts.FindAccount(in.order) : nullptr;
    if (!account) return false;
    CSurvPosition after;
    if (const CScripExposure* scrip = account->FindScrip(in.order, in.manager.Context().settings)) {
        after = scrip->position;
    }
    after.ApplyChange(in.order);
    return IsSquareOffOrder(in.order, after);
}

PolicyAnswer TestOrderPolicy(CSurveillanceManager& manager, tagSurveillanceInfo& request, OrderIntake& intake,
                             const CHierarchy& hierarchy) {
    PolicyInput input{manager, request, intake, intake.order, hierarchy};
    for (const PolicyTest test : kPolicyTests) {
        if (PolicyVerdict verdict = test(input)) return *std::move(verdict);
    }
    return {};
}

}  // namespace surv
