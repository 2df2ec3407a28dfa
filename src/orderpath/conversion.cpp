// The other side of a position conversion: what the target product takes in leaves the source product, level by level.

#include "orderpath/event_sweep.h"
#include "orderpath/intake.h"
#include "orderpath/policy.h"
#include "service/manager.h"

namespace surv {

std::int16_t CSurveillanceManager::ConversionUpdateSurveillance(const tagSurveillanceInfo& request,
                                                                tagOrderInfoForSurv order, CPtrList* limitRows) {
    const bool toDelivery = order.productType == product::kConvertToDelivery;
    order.productType = toDelivery ? product::kConvertToMargin : product::kConvertToDelivery;
    order.prevQuantity = order.quantity;
    order.prevPrice = order.price;
    order.quantity = 0;
    order.price = 0;

    CHierarchy hierarchy;
    if (FindEventHierarchy(*this, request, order, false, hierarchy).message) return kNotDone;
    order.compulsoryDelivery = IsCompulsoryDelivery(context_, order);
    EventSweep sweep{request, hierarchy, FindOwnAccount(order)};
    sweep.road = PreferenceRoad::kConversion;
    SweepLevels(*this, sweep, order, limitRows);
    return kDone;
}

}  // namespace surv
