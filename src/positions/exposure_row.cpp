#include "positions/exposure_row.h"

#include <algorithm>

#include "platform/numeric.h"

namespace surv {
namespace {

constexpr std::int16_t kMtfRow = 8;  ///< messageKind

void FillFigures(const tagSurvPositionData& data, BKExposureTag& row) {
    row.limitMask = data.limitMask;
    row.lastPrice = data.lastPrice;
    row.orderBuyQty = RowQuantity(data.orderBuyQty);
    row.orderBuyValue = data.orderBuyValue;
    row.orderSellQty = RowQuantity(data.orderSellQty);
    row.orderSellValue = data.orderSellValue;
    row.tradedBuyQty = RowQuantity(data.tradedBuyQty);
    row.tradedBuyValue = data.tradedBuyValue;
    row.tradedSellQty = RowQuantity(data.tradedSellQty);
    row.tradedSellValue = data.tradedSellValue;
    row.openPositionValue = data.openPositionValue;
    row.mtmValue = data.mtmValue;
}

void FillHolder(const tagPositionOwnerInfo& owner, BKExposureTag& row) {
    WriteField(row.levelCode, owner.levelCode.View());
    WriteField(row.groupCode, owner.groupCode.View());
    WriteField(row.accountCode, owner.accountCode.View());
    WriteField(row.userId, owner.userId.View());
    row.clientLevelType = owner.clientLevelType;
    row.subClientLevelType = owner.subClientLevelType;
    row.groupLevelType = owner.groupLevelType;
}

void FillScrip(const tagExposureScripSpecificInfo& scrip, BKExposureTag& row) {
    std::copy_n(scrip.rowHead, sizeof scrip.rowHead, reinterpret_cast<char*>(&row));
    row.rowStamp = scrip.rowStamp;
    row.marketSegment = scrip.marketSegment;
    row.token = scrip.token;
    row.underlyingToken = scrip.underlyingToken;
    row.priceMultiplier = scrip.priceMultiplier;
    row.contract = scrip.contract;
    row.marginRates = scrip.marginRates;
    row.scripRates = scrip.scripRates;
}

}  // namespace

void FillExposureValuesToOrderInfo(const BKExposureTag& row, tagOrderInfoForSurv& order) {
    order.token = row.token;
    order.underlyingToken = row.underlyingToken;
    order.marketSegment = row.marketSegment;
    order.contract = row.contract;
    order.priceMultiplier = row.priceMultiplier;
    order.marginRates = row.marginRates;
    order.scripRates = row.scripRates;
}

void FillOrderFromRow(tagOrderInfoForSurv& order, const BKExposureTag& row) {
    order.levelCode = FieldText(row.levelCode);
    order.parentCode = FieldText(row.groupCode);
    order.accountCode = FieldText(row.accountCode);
    order.userId = FieldText(row.userId);
    order.clientLevelType = row.clientLevelType;
    order.subClientLevelType = row.subClientLevelType;
    order.groupLevelType = row.groupLevelType;
    if (row.messageKind == kMtfRow) order.productType = product::kMtf;
}

tagSurvPositionData PositionDataOf(const BKExposureTag& row, const tagOrderInfoForSurv& order) {
    tagSurvPositionData data;
    data.limitMask = row.limitMask;
    data.lastPrice = row.lastPrice;
    data.orderBuyQty = row.orderBuyQty;
    data.orderBuyValue = row.orderBuyValue;
    data.orderSellQty = row.orderSellQty;
    data.orderSellValue = row.orderSellValue;
    data.tradedBuyQty = row.tradedBuyQty;
    data.tradedBuyValue = row.tradedBuyValue;
    data.tradedSellQty = row.tradedSellQty;
    data.tradedSellValue = row.tradedSellValue;
    data.openPositionValue = row.openPositionValue;
    data.mtmValue = row.mtmValue;
    data.scripInfo = order.scripInfo;
    data.ownerInfo = order.ownerInfo;
    return data;
}

void FillRowFromPosition(const tagSurvPositionData& data, BKExposureTag& row) {
    FillFigures(data, row);
    if (data.ownerInfo) FillHolder(*data.ownerInfo, row);
    if (data.scripInfo) FillScrip(*data.scripInfo, row);
}

}  // namespace surv
