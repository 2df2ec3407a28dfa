#include "positions/client_position.h"

namespace surv {
void CClientPosition::ApplyOrder(const tagOrderInfoForSurv& order, const TreeContext& context) {
    context.Save(position.data);
    if (order.IsConversion()) {
        position.ApplyChange(order);
    } else {
        position.Update11(order);
    }
    position.data.ownerInfo = clientExposure->ownerInfo.get();
}

void CClientPosition::AddData(const tagSurvPositionData& row, const TreeContext& context) {
    context.Save(position.data);
    position.AddPositionData(row);
    position.data.ownerInfo = clientExposure->ownerInfo.get();
}

void CClientPosition::ApplyPrice(const tagOrderInfoForSurv& order, const Settings& settings) {
    clientExposure->ApplyPrice(order, position, settings);
    position.SetLastPrice(order);
}

bool CClientPositions::Counts(const tagOrderInfoForSurv& order, const Settings& settings) {
    return order.orderEventKind == event::kTrade || order.orderEventKind == event::kCorrection ||
           order.IsConversion() || settings.orderBasedPosition == 1;
}

CClientPosition& CClientPositions::FindOrMake(const PositionKey& key, const tagOrderInfoForSurv& order,
                                              CClientExposure& account) {
    constexpr std::uint32_t kBlock = 10;
    return scrips.FindOrMake(key, kBlock).FindOrMake(MakeAccountKey(order), &account);
}

void CClientPositions::RecordOrder(const tagOrderInfoForSurv& order, Period period, CClientExposure& account,
                                   const TreeContext& context) {
    if (!Counts(order, context.settings)) return;
    const PositionKey key{order.ExchangeMask(), ClientFamily(order.productType, period), order.token};
    FindOrMake(key, order, account).ApplyOrder(order, context);
}

void CClientPositions::RecordRow(const tagSurvPositionData& row, const tagOrderInfoForSurv& order,
                                 CClientExposure& account, const TreeContext& context) {
    FindOrMake(TreeKey(order), order, account).AddData(row, context);
}

}  // namespace surv
