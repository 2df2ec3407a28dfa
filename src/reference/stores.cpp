#include "reference/stores.h"

#include <cstring>
#include <memory>

namespace surv {

int ReferenceStores::StoreOf(std::int16_t exchangeMask) {
    switch (exchangeMask) {
        case kMaskNseCash: return 0;
        case kMaskNseDerivatives: return 1;
        case kMaskBseDerivatives: return 2;
        case kMaskBseCash: return 3;
        case kMaskMcx: return 4;
        case kMaskNcdex: return 5;
        default: return -1;
    }
}

tagExposureScripSpecificInfo* ReferenceStores::FindScrip(std::int16_t exchangeMask, std::int32_t token) const {
    const int store = StoreOf(exchangeMask);
    return store < 0 ? nullptr : scrips_[store].Find(token);
}

tagExposureScripSpecificInfo* ReferenceStores::FindOrMakeScrip(const tagOrderInfoForSurv& order) {
    const std::int16_t mask = order.ExchangeMask();
    if (tagExposureScripSpecificInfo* found = FindScrip(mask, order.token)) return found;
    const int store = StoreOf(mask);
    if (store < 0) return nullptr;
    auto scrip = std::make_unique<tagExposureScripSpecificInfo>();
    FillValues(*scrip, order);
    return &scrips_[store].Insert(order.token, std::move(scrip));
}

tagExposureScripSpecificInfo* ReferenceStores::FindOrMakeScrip(const BKExposureTag& row,
                                                               const tagOrderInfoForSurv& order) {
    if (tagExposureScripSpecificInfo* found = FindScrip(order.ExchangeMask(), order.token)) return found;
    tagExposureScripSpecificInfo* const scrip = FindOrMakeScrip(order);
    if (scrip) {
        std::memcpy(scrip->rowHead, &row, sizeof scrip->rowHead);
        scrip->rowStamp = row.rowStamp;
    }
    return scrip;
}

FixedText<16> ReferenceStores::FindIsin(std::int16_t exchangeMask, std::int32_t token) const {
    if (!IsCashExchange(exchangeMask)) return {};
    const FixedText<16>* isin = (exchangeMask == kMaskNseCash ? isinByNseToken : isinByBseToken).Find(token);
    return isin ? *isin : FixedText<16>{};
}

const ReferenceStores::AdditionalMargins* ReferenceStores::AdditionalMarginsOf(std::int32_t exchangeMask) const {
    switch (exchangeMask) {
        case kMaskNseDerivatives: return &additionalMarginNse_;
        case kMaskNcdex: return &additionalMarginNcdex_;
        case kMaskMcx: return &additionalMarginMcx_;
        default: return nullptr;
    }
}

void ReferenceStores::AddAdditionalMargin(const tagAdditionalMarginInfo& record) {
    auto* store = const_cast<AdditionalMargins*>(AdditionalMarginsOf(record.exchange));
    if (store) store->FindOrMake(record.token, record);
}

const tagAdditionalMarginInfo* ReferenceStores::FindAdditionalMargin(std::int16_t exchangeMask,
                                                                     std::int32_t token) const {
    const AdditionalMargins* store = AdditionalMarginsOf(exchangeMask);
    return store ? store->Find(token) : nullptr;
}

void ReferenceStores::TakeAdditionalMargin(tagOrderInfoForSurv& order) const {
    const tagAdditionalMarginInfo* record = FindAdditionalMargin(order.ExchangeMask(), order.token);
    if (!record) return;
    order.additionalMargin = {record->additionalMarginRate, record->longMarginRate, record->shortMarginRate,
                              record->sellExposureRate, record->buyExposureRate};
}

void ReferenceStores::ClearDay() {
    for (ScripStore& store : scrips_) store.Clear();
    for (AdditionalMargins* store : {&additionalMarginNse_, &additionalMarginNcdex_, &additionalMarginMcx_}) {
        store->Clear();
    }
    isinByNseToken.Clear();
    isinByBseToken.Clear();
}

}  // namespace surv
