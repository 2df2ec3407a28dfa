// Marking to market: a touchline marks one scrip, a pass marks all.

#include "mtm/category_mark.h"
#include "mtm/mtm_log.h"
#include "service/manager.h"

namespace surv {
namespace {

/// While it lives, passes lay the whole MTM in, whatever the house has switched on.
class CReloadPhase {
 public:
    CReloadPhase(Settings& settings, MtmReload phase) : settings_(settings), mtmMode_(settings.mtmMode) {
        settings_.mtmMode = 1;
        settings_.mtmReloadPhase = phase;
    }
    CReloadPhase(const CReloadPhase&) = delete;
    CReloadPhase& operator=(const CReloadPhase&) = delete;
    ~CReloadPhase() {
        settings_.mtmReloadPhase = MtmReload::kNone;
        settings_.mtmMode = mtmMode_;
    }

 private:
    Settings& settings_;
    std::int16_t mtmMode_;
};

/// By the class flags. A strike of 0 with an expiry is neither a future nor an option, and always counts.
bool IsClassOn(const CBroadcastScrip& scrip, const Settings& settings) {
    const std::int32_t strike = scrip.security.strikePrice;
    const bool expires = scrip.security.expiryDate >= 1;
    if (!settings.mtmCashOn && IsCashExchange(scrip.exchange)) return false;
    if (!settings.mtmOptionsOn && expires && strike >= 1) return false;
    return settings.mtmFuturesOn || !expires || strike >= 0;
}

bool IsMarked(const CBroadcastScrip& scrip, const Settings& settings) {
    if (settings.mtmMode == 0 || scrip.broadcastToken <= 0 || scrip.scripToken <= 0) return false;
    return settings.mtmReloadPhase != MtmReload::kNone || IsClassOn(scrip, settings);
}

/// An order that names the scrip and has its prices; no quantity, no holder, no preference.
tagOrderInfoForSurv OrderOf(const CBroadcastScrip& scrip, const Settings& settings) {
    tagOrderInfoForSurv order;
    order.marketSegment = SegmentOfContract(scrip.exchange, scrip.security.strikePrice);
    order.token = scrip.scripToken;
    order.underlyingToken = scrip.underlyingToken;
    order.contract = scrip.security;
    order.rpfRecomputeFlag = settings.mtmReloadPhase != MtmReload::kNone ? 1 : 0;
    order.lotWeighting = settings.mcxLotWeightOn == 1 ? LotWeighting::kOn : LotWeighting::kOff;
    FillPrices(order, scrip, PriceScale::kScrip);
    return order;
}

/// A token out of its range may come to the key of another exchange's scrip.
bool IsOf(const CBroadcastScrip& scrip, const tagBcastMBOOrMBPTouchline& touchline) {
    return scrip.exchange == 0 || scrip.exchange == touchline.exchange;
}

void ClearMtm(const CSurveillanceManager& manager, MtmReload phase) {
    for (const auto& category : manager.categories) {
        for (const auto& info : category.value->limitStores) {
            for (const auto& entry : info.value->store.entries) {
                BKSurveillanceLimitDefTag& row = entry.value->Row();
                row.usedMtm = 0;
                row.usedMtmFull = 0;
                if (phase == MtmReload::kOpening) row.usedBookedPnl = 0;
            }
        }
    }
}

}  // namespace

void CSurveillanceManager::RecomputeScrip(CBroadcastScrip& scrip, CPtrList* changedRows) {
    const Settings& settings = context_.settings;
    if (!IsMarked(scrip, settings)) return;
    const bool untraded = scrip.lastTradedPrice == 0;
    if (untraded && settings.mtmReloadPhase != MtmReload::kNone && settings.HoldsClientPositions()) {
        scrip.lastTradedPrice = scrip.closePrice;
    }
    tagOrderInfoForSurv order = OrderOf(scrip, settings);
    for (CSurveillanceCategory* category : scrip.categories) {
        order.riskPreference = EffectivePreference(*category, scrip.exchange);
        CCategoryMark mark(*category, order);
        if (changedRows) mark.HandOut(*changedRows);
        mark.Move();
    }
}

void CSurveillanceManager::AddAndComputeMTM(const tagBcastMBOOrMBPTouchline& touchline, Marking marking,
                                            CPtrList* changedRows) {
    if (touchline.token == 0) return;
    context_.products.TakeTokenPrice(touchline);
    CBroadcastScrip* const scrip = broadcastHash.Find(PlainKey(touchline.exchange, touchline.token));
    if (!scrip || !IsOf(*scrip, touchline)) return;
    if (!scrip->Tick(touchline, context_.settings, context_.clock) || marking != Marking::kWanted) return;
    try {
        RecomputeScrip(*scrip, changedRows);
    } catch (...) {
        scrip->ForgetComputedPrice();  // categories that the marking didn't reach are marked at the next check
        throw;
    }
}

void CSurveillanceManager::RecomputeMTM(CPtrList* changedRows) {
    if (context_.settings.mtmMode == 0) return;
    for (const auto& scrip : broadcastHash) RecomputeScrip(*scrip.value, changedRows);
}

void CSurveillanceManager::RecomputeMTMWithLogging(CPtrList* changedRows) {
    const CMtmLog log(context_.clock);
    if (context_.settings.mtmMode == 0) return;
    for (const auto& scrip : broadcastHash) {
        log.Tell(*scrip.value);
        RecomputeScrip(*scrip.value, changedRows);
    }
}

void CSurveillanceManager::RecomputeMTMOnline() {
    if (context_.settings.positionMode != 1) return;
    const CReloadPhase phase(context_.settings, MtmReload::kOnline);
    ClearMtm(*this, MtmReload::kOnline);
    RecomputeMTMWithLogging(nullptr);
}

void CSurveillanceManager::LayInOpeningMtm() {
    if (!context_.settings.RowsFillClientPositions()) {
        RecomputeMTM(nullptr);
        return;
    }
    // Rows that an earlier start has left may hold theirs already.
    const CReloadPhase phase(context_.settings, MtmReload::kOpening);
    ClearMtm(*this, MtmReload::kOpening);
    RecomputeMTM(nullptr);
}

void CSurveillanceManager::AddToBroadcastUpdateHash(std::int64_t key, CSurveillanceCategory* category) {
    if (CBroadcastScrip* const scrip = broadcastHash.Find(key)) scrip->AddCategory(category);
}

}  // namespace surv
