#include "categories/category.h"

namespace surv {

tagPositionOwnerInfo* CSurveillanceCategory::OwnerOf(const tagOrderInfoForSurv& order) {
    if (!ownerInfo_) {
        ownerInfo_ = std::make_unique<tagPositionOwnerInfo>();
        FillOwner(*ownerInfo_, order);
    }
    return ownerInfo_.get();
}

CSurvLimitEntry* CSurveillanceCategory::FindRow(std::int16_t limitMask, std::int32_t token) const {
    const CSurveillanceInfo* info = limitStores.Find(limitMask);
    return info ? info->store.Find(token) : nullptr;
}

void CSurveillanceCategory::AppendLimitRows(CPtrList& list) const {
    for (const auto& info : limitStores) info.value->store.AppendRows(list, context_.settings.RowsAreLive());
}

}  // namespace surv
