// Position rows and prices of one account.

#include <memory>

#include "margin/tree_margin.h"
#include "platform/host_list.h"
#include "positions/accounts.h"
#include "positions/exposure_row.h"

namespace surv {

void CScripExposure::SetDayData(const tagSurvPositionData& daily, const TreeContext& context) {
    context.Save(dayPosition.data);
    dayPosition.data = {};
    dayPosition.MergePositionData(daily);
    dayPosition.data.ownerInfo = position.data.ownerInfo;
}

void CScripExposure::LoadMargin(double ratePercent, const TreeContext& context) {
    constexpr std::int16_t kOfValue = 1;
    if (!scripMargin) scripMargin = std::make_unique<tagScripMargin>();
    context.Save(*scripMargin);
    const tagOrderInfoForSurv noPreference;
    for (std::size_t v = 0; v < kViewCount; ++v) {
        const Selector selector = kSelectors[v];
        scripMargin->view[v].spreadPosition = static_cast<double>(position.GetNetQuantity(static_cast<int>(selector)));
        scripMargin->loadedMargin[v] = position.GetMcxPositionMargin(noPreference, selector, kOfValue, ratePercent);
    }
}

ScripPath CClientExposure::AddRow(tagSurvPositionData row, const tagOrderInfoForSurv& order,
                                  const TreeContext& context) {
    row.ownerInfo = OwnerOf(order);
    const ScripPath path = FindOrMakePath(order, context.settings);
    context.Save(path.scrip->position.data);
    path.scrip->position.TakeRow(row);
    if (IsSegment(order.marketSegment)) AddSegmentRow(row, order, context);
    context.Save(levelTypes);
    levelTypes = {ownerInfo->clientLevelType, ownerInfo->groupLevelType, ownerInfo->subClientLevelType};
    return path;
}

void CClientExposure::AddSegmentRow(const tagSurvPositionData& row, const tagOrderInfoForSurv& order,
                                    const TreeContext& context) {
    if (context.settings.RowsFillClientPositions()) {
        const bool mtf = order.productType == product::kMtf;
        CSurvPosition& position =
            SegmentPosition(order.marketSegment, mtf ? ProductGroup::kMtf : ProductGroup::kNormal);
        context.Save(position.data);
        position.MergePositionData(row);
    }
    SegmentFigures& figures = FiguresOf(order.marketSegment);
    context.Save(figures);
    figures.openValueSum += row.openPositionValue;
    figures.AddMtm(row.mtmValue, +1.0);
}

void CClientExposure::ApplyPrice(const tagOrderInfoForSurv& order, const CSurvPosition& position,
                                 const Settings& settings) {
    if (position.data.lastPrice != order.lastTradedPrice) {  // else taking out and putting in would cost a last digit
        CSurvPosition priced = position;
        priced.SetLastPrice(order);
        MoveSegmentMtm(order, position, priced, TreeContext{settings});
    }
    if (CScripExposure* scrip = FindScrip(order, settings)) scrip->position.SetLastPrice(order);
}

void CClientExposure::CollectPositions(std::int16_t mask, std::int32_t token,
                                       std::vector<const CSurvPosition*>& list) const {
    if (token != kAllSecurities) return;
    ForEachScrip([&](const CScripExposure& scrip) {
        if (!scrip.IsBlank() && MaskWithin(scrip.position.data.limitMask, mask)) list.push_back(&scrip.position);
    });
}

void CClientExposure::CollectRows(std::int16_t mask, std::int32_t token, CPtrList& list) const {
    std::vector<const CSurvPosition*> positions;
    CollectPositions(mask, token, positions);
    for (const CSurvPosition* position : positions) {
        auto row = std::make_unique<BKExposureTag>();
        FillRowFromPosition(position->GetPositionData(), *row);
        HandOver(list, std::move(row));
    }
}

}  // namespace surv
