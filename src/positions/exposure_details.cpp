#include "positions/exposure_details.h"

#include "platform/format.h"

namespace surv {

CSurvPosition& CExposureDetails::CommitPosition(const tagOrderInfoForSurv& order, CSurvPosition* known,
                                                CUndoLog& undo) {
    CSurvPosition& position = known ? *known : positions.FindOrMake(FlatKey(order));
    undo.Save(position.data);
    position.ApplyChange(order);
    return position;
}

CSurvPosition& CExposureDetails::CommitAt(const PositionKey& key, const tagOrderInfoForSurv& order, CUndoLog& undo) {
    return CommitPosition(order, &positions.FindOrMake(key), undo);
}

CSurvPosition& CExposureDetails::CommitLegPosition(const tagOrderInfoForSurv& order, int leg, CUndoLog& undo) {
    CSurvPosition& position = positions.FindOrMake(FlatKey(order, leg));
    undo.Save(position.data);
    if (order.productType == product::kMarginPlus && leg == 1) {
        position.ApplyLegChange(order);
    } else {
        position.ApplyChange(order);
    }
    return position;
}

CSurvPosition* CExposureDetails::FindOrReport(const PositionKey& key) {
    CSurvPosition* position = Find(key);
    if (!position) {
        errorCode = code::kStore;
        errorText = Format("Exposure details not available for %lld", static_cast<long long>(key.Printed()));
    }
    return position;
}

void CExposureDetails::AddRow(const BKExposureTag& row, const tagSurvPositionData& data, CUndoLog& undo) {
    const PositionKey key{SegmentToExchangeMask(row.marketSegment), RowFamily(row), row.token};
    CSurvPosition& position = positions.FindOrMake(key);
    undo.Save(position.data);
    position.TakeRow(data);
}

template <class Figure>
std::int16_t CExposureDetails::Read(const PositionKey& key, double& out, Figure figure) {
    CSurvPosition* position = FindOrReport(key);
    out = position ? figure(*position) : 0.0;
    return position ? kDone : kNotDone;
}

std::int16_t CExposureDetails::GetGrossExposure(Selector side, const PositionKey& key, double& out) {
    return Read(key, out, [side](const CSurvPosition& p) { return p.GetGrossExposure(side, 0, GrossMode::kNetted); });
}
std::int16_t CExposureDetails::GetNetExposure(Selector side, const PositionKey& key, double& out) {
    return Read(key, out, [side](const CSurvPosition& p) { return p.GetNetExposure(side); });
}
std::int16_t CExposureDetails::GetNetSaleExposure(Selector side, const PositionKey& key, double& out) {
    return Read(key, out, [side](const CSurvPosition& p) { return p.GetNetSaleExposure(side); });
}
std::int16_t CExposureDetails::GetNetPosition(Selector side, const PositionKey& key, double& out) {
    return Read(key, out, [side](const CSurvPosition& p) { return p.GetNetPosition(side); });
}
std::int16_t CExposureDetails::GetTurnover(Selector side, const PositionKey& key, double& out) {
    return Read(key, out, [side](const CSurvPosition& p) { return p.GetTurnover(side); });
}
std::int16_t CExposureDetails::GetMaxGrossExposure(const PositionKey& key, double& out) {
    return Read(key, out, [](const CSurvPosition& p) { return p.GetMaxGrossExposure(0, GrossMode::kNetted); });
}
std::int16_t CExposureDetails::GetMaxNetExposure(const PositionKey& key, double& out) {
    return Read(key, out, [](const CSurvPosition& p) { return p.GetMaxNetExposure(); });
}
std::int16_t CExposureDetails::GetMaxNetSaleExposure(const PositionKey& key, double& out) {
    return Read(key, out, [](const CSurvPosition& p) { return p.GetMaxNetSaleExposure(); });
}
std::int16_t CExposureDetails::GetMaxNetPosition(const PositionKey& key, double& out) {
    return Read(key, out, [](const CSurvPosition& p) { return p.GetMaxNetPosition(); });
}
std::int16_t CExposureDetails::GetMaxTurnover(const PositionKey& key, double& out) {
    return Read(key, out, [](const CSurvPosition& p) { return p.GetMaxTurnover(); });
}
std::int16_t CExposureDetails::GetMTM(const PositionKey& key, LotWeighting weighting, double& out) {
    return Read(key, out, [weighting](CSurvPosition& p) { return p.GetMTM(weighting); });
}
std::int16_t CExposureDetails::GetPendingOrderValue(const PositionKey& key, double& out) {
    return Read(key, out, [](const CSurvPosition& p) { return p.GetPendingOrderValue(); });
}

}  // namespace surv
