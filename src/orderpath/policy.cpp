#include "orderpath/policy.h"

#include <array>

#include "limits/scrip_trial.h"
#include "orderpath/hierarchy.h"
#include "service/manager.h"

namespace surv {
namespace {

struct PolicyInput {
    const CSurveillanceManager& manager;
    const tagSurveillanceInfo& request;
    const tagOrderInfoForSurv& order;
};

/// Whether the order only reduces what its account holds at the root.
bool IsSquareOffAtRoot(const PolicyInput& in) {
    const CSurveillanceCategory* root = in.manager.FindCategory(kRootCode);
    const CClientExposure* account = root ? root->Book(Period::kExpiry).accounts.FindAccount(in.order) : nullptr;
    if (!account) return false;
    CSurvPosition after;
    if (const CScripExposure* scrip = account->FindScrip(in.order, in.manager.Context().settings)) {
        after = scrip->position;
    }
    after.ApplyChange(in.order);
    return IsSquareOffOrder(in.order, after);
}

/// The exchange lets no one open a position in the scrip.
bool OpensClosedScrip(const PolicyInput& in) {
    constexpr std::int16_t kModeWithTest = 1;
    constexpr std::uint8_t kNoNewPositions = 1 << 5;
    return in.manager.Context().settings.positionMode == kModeWithTest &&
           (in.request.requestFlags & kNoNewPositions) != 0 && !IsSquareOffAtRoot(in);
}

bool NamesNoProduct(const PolicyInput& in) {
    return in.order.productType == product::kNone && IsCashExchange(in.order.ExchangeMask());
}

/// NRI clients and series of compulsory delivery take deliveries alone.
bool NeedsDelivery(const PolicyInput& in) {
    const std::int16_t product = in.order.productType;
    const bool delivery = product == product::kDelivery || product == product::kAmoDelivery;
    const bool nri = in.order.nriClient && IsCashExchange(in.order.ExchangeMask());
    return !delivery && (nri || in.order.compulsoryDelivery);
}

struct PolicyTest {
    bool (*refuses)(const PolicyInput&);
    CodeUse codeUse;
    const char* text;
};
/// In the order of the tests. Those of the product master, the after-market and the option prices come between.
constexpr std::array kPolicyTests{
    PolicyTest{&OpensClosedScrip, CodeUse::kErrorCode, "New Positions for given scrip are not allowed for "},
    PolicyTest{&NamesNoProduct, CodeUse::kErrorCode, "Wrong Product type "},
    PolicyTest{&NeedsDelivery, CodeUse::kNone, "Only Delivery Order Allowed"},
};

}  // namespace

std::optional<Refusal> TestOrderPolicy(const CSurveillanceManager& manager, const tagSurveillanceInfo& request,
                                       const OrderIntake& intake) {
    const PolicyInput input{manager, request, intake.order};
    for (const PolicyTest& test : kPolicyTests) {
        if (test.refuses(input)) return Refusal{status::kRefused, code::kRefused, test.codeUse, test.text};
    }
    return std::nullopt;
}

}  // namespace surv
