// The exported functions once more for C. Each hands on to its C++ namesake, which has the guards.

#include <new>
#include <type_traits>

#include "surveillance/codes.h"
#include "surveillance/host.h"
#include "surveillance/surveillance.h"
#include "surveillance/surveillance_c.h"

static_assert(SURV_ALL_SECURITIES == surv::kAllSecurities && SURV_NO_LIMIT == surv::kNoLimitQuantity &&
              SURV_NO_LEVEL == surv::level::kNone && SURV_BUY == surv::kBuy && SURV_SELL == surv::kSell);
static_assert(SURV_MASK_NSE_CASH == surv::kMaskNseCash && SURV_MASK_NSE_DERIVATIVES == surv::kMaskNseDerivatives &&
              SURV_MASK_BSE_DERIVATIVES == surv::kMaskBseDerivatives && SURV_MASK_BSE_CASH == surv::kMaskBseCash &&
              SURV_MASK_MCX == surv::kMaskMcx && SURV_MASK_NCDEX == surv::kMaskNcdex);
static_assert(SURV_PRODUCT_MARGIN == surv::product::kMargin && SURV_PRODUCT_DELIVERY == surv::product::kDelivery &&
              SURV_PRODUCT_MARGIN_PLUS == surv::product::kMarginPlus && SURV_PRODUCT_MTF == surv::product::kMtf);
static_assert(SURV_STATUS_PASS == surv::status::kPass && SURV_STATUS_NO_LIMITS == surv::status::kNoLimits &&
              SURV_STATUS_REFUSED == surv::status::kRefused && SURV_STATUS_NO_MARKET == surv::status::kNoMarket &&
              SURV_STATUS_NO_RISK_PARAMETERS == surv::status::kNoRiskParameters);

namespace {

/// Does the work with the record type of the kind; nothing for an unknown kind.
template <class Work>
void WithRowOfKind(int kind, Work work) {
    switch (kind) {
        case SURV_LIMIT_ROW: return work(std::type_identity<BKSurveillanceLimitDefTag>{});
        case SURV_POSITION_ROW: return work(std::type_identity<BKExposureTag>{});
        case SURV_BREACH_ROW: return work(std::type_identity<tagBreachRow>{});
        case SURV_HOLDING_ROW: return work(std::type_identity<tagDPHolding>{});
        default: return;
    }
}

/// Enters something into a container; 0, or -1 if memory runs out.
template <class Add>
short Entered(Add add) noexcept {
    try {
        add();
        return surv::kDone;
    } catch (...) {
        return surv::kNotDone;
    }
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------
// Lists, maps and rows

CPtrList* surv_ListNew() noexcept { return new (std::nothrow) CPtrList; }
void surv_ListDelete(CPtrList* list) noexcept { delete list; }
short surv_ListAdd(CPtrList* list, void* row) noexcept {
    return list ? Entered([&] { list->AddTail(row); }) : surv::kNotDone;
}
int surv_ListCount(const CPtrList* list) noexcept { return list ? list->GetCount() : 0; }
SurvPosition surv_ListHead(const CPtrList* list) noexcept { return list ? list->GetHeadPosition() : nullptr; }
void* surv_ListNext(const CPtrList* list, SurvPosition* position) noexcept {
    if (!list || !position || !*position) return nullptr;
    auto node = static_cast<CPtrList::Position>(*position);
    void* const row = list->GetNext(node);
    *position = node;
    return row;
}
void surv_ListForget(CPtrList* list) noexcept {
    if (list) ForgetRows(*list);
}

void* surv_RowNew(int kind) noexcept {
    void* row = nullptr;
    WithRowOfKind(kind, [&]<class Row>(std::type_identity<Row>) { row = new (std::nothrow) Row{}; });
    if (row && kind == SURV_LIMIT_ROW) SetNoLimits(*static_cast<BKSurveillanceLimitDefTag*>(row));
    return row;
}
void surv_RowFree(int kind, void* row) noexcept {
    WithRowOfKind(kind, [&]<class Row>(std::type_identity<Row>) { delete static_cast<Row*>(row); });
}
void surv_ListFreeRows(int kind, CPtrList* list) noexcept {
    if (!list) return;
    WithRowOfKind(kind, [&]<class Row>(std::type_identity<Row>) { FreeRows<Row>(*list); });
}

CMapStringToOb* surv_MapNew() noexcept {
    try {
        return new CMapStringToOb;
    } catch (...) {
        return nullptr;
    }
}
void surv_MapDelete(CMapStringToOb* map) noexcept { delete map; }
short surv_MapPut(CMapStringToOb* map, const char* key, tagAdditionalMarginInfo* record) noexcept {
    return map && key && record ? Entered([&] { PutRecord(*map, key, *record); }) : surv::kNotDone;
}

// ---------------------------------------------------------------------------------------------------------------
// The host's side

void surv_SetHostWindow(SurvHostWindow window, void* context) noexcept { SetHostWindow(window, context); }
void surv_SetHostClock(SurvHostClock clock, void* context) noexcept { SetHostClock(clock, context); }

// ---------------------------------------------------------------------------------------------------------------
// Life cycle and settings

short surv_InitializeSurvManager(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode,
                                 short limitDetailMessages, short mtmMode, short unused6, short positionMode,
                                 std::int32_t featureBits, short unused9, CPtrList* securityList, CPtrList* dpList,
                                 CPtrList* sarList) noexcept {
    return InitializeSurvManager(limitList, exposureList, rpfMarginMode, limitDetailMessages, mtmMode, unused6,
                                 positionMode, featureBits, unused9, securityList, dpList, sarList);
}
short surv_RestartSurvManager(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode, CPtrList* securityList,
                              CPtrList* dpList, CPtrList* sarList) noexcept {
    return InitializeSurvManager(limitList, exposureList, rpfMarginMode, securityList, dpList, sarList);
}
void surv_CleanupSurvManager() noexcept { CleanupSurvManager(); }
short surv_UpdateSurvExposure(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode) noexcept {
    return UpdateSurvExposure(limitList, exposureList, rpfMarginMode);
}
short surv_ComputeMTMOnOrOff(short mode) noexcept { return ComputeMTMOnOrOff(mode); }
short surv_MTMTimeIntervalAndTickCount(std::int32_t seconds, short ticks) noexcept {
    return MTMTimeIntervalAndTickCount(seconds, ticks);
}
short surv_SetMarginPlusMinOrderValue(std::int32_t rupees) noexcept { return SetMarginPlusMinOrderValue(rupees); }
short surv_SetOrderBasedPosition(short value) noexcept { return SetOrderBasedPosition(value); }
short surv_InitializeMCXLOTWeightOnOrOff(short value) noexcept { return InitializeMCXLOTWeightOnOrOff(value); }
short surv_AddUpdateAutoSquareOffTimeSettings(short kind, short exchangeMask, short value) noexcept {
    return AddUpdateAutoSquareOffTimeSettings(kind, exchangeMask, value);
}
short surv_EnableTransactionLogging(short value) noexcept { return EnableTransactionLogging(value); }
CPtrList* surv_GetTransactionLogList() noexcept { return GetTransactionLogList(); }

// ---------------------------------------------------------------------------------------------------------------
// Orders

short surv_CheckSurveillance(tagSurveillanceInfo* request, tagOrdErrMessage* error, short* status, CPtrList* limitRows,
                             CPtrList* breachRows, CPtrList* rollbackRows, short probe) noexcept {
    return CheckSurveillance(request, error, status, limitRows, breachRows, rollbackRows, probe);
}
short surv_UpdateSurveillance(tagSurveillanceInfo* request, tagAdminErrMessage* error, CPtrList* limitRows,
                              CPtrList* breachRows, short dealerOnly) noexcept {
    return UpdateSurveillance(request, error, limitRows, breachRows, dealerOnly);
}
short surv_GetClientCode1(short kind, const tagOrderInfo* orderInfo, const char* rawRecord, char* text) noexcept {
    return orderInfo ? GetClientCode1(kind, *orderInfo, rawRecord, text) : surv::kNotDone;
}
short surv_CheckSurveillanceByInfo(tagCheckSurveillanceInfo* info) noexcept { return CheckSurveillance(info); }
short surv_CheckSurveillanceByCodes(const char* groupCode, const char* dealerCode, const char* clientCode,
                                    const tagOrderRequest* order, tagOrdErrMessage* error, short* status,
                                    CPtrList* limitRows) noexcept {
    return CheckSurveillance(groupCode, dealerCode, clientCode, order, error, status, limitRows);
}
short surv_UpdateSurveillanceByInfo(tagUpdateSurveillanceInfo* info) noexcept { return UpdateSurveillance(info); }
short surv_UpdateSurveillanceByCodes(const char* groupCode, const char* dealerCode, const char* clientCode,
                                     const tagOrderInfo* order, const tagTradeInfo* trade, tagAdminErrMessage* error,
                                     CPtrList* limitRows) noexcept {
    return UpdateSurveillance(groupCode, dealerCode, clientCode, order, trade, error, limitRows);
}

// ---------------------------------------------------------------------------------------------------------------
// Limits

short surv_AddSurvLimits(BKSurveillanceLimitDefTag* limit, tagAdminErrMessage* error) noexcept {
    return AddSurvLimits(limit, error);
}
short surv_UpdateSurvLimits(BKSurveillanceLimitDefTag* limit, tagAdminErrMessage* error) noexcept {
    return UpdateSurvLimits(limit, error);
}
short surv_RemoveSurvLimits(const BKSurveillanceLimitDefTag* limit, tagAdminErrMessage* error) noexcept {
    return limit ? RemoveSurvLimits(*limit, error) : surv::kNotDone;
}
short surv_GetSurveillancePositions(BKSurveillanceLimitDefTag* limit) noexcept {
    return GetSurveillancePositions(limit);
}
short surv_GetSurvPositions(char* entityCode, short limitMask, std::int32_t token,
                            BKSurveillanceLimitDefTag** limit) noexcept {
    return limit ? GetSurvPositions(entityCode, limitMask, token, *limit) : surv::kNotDone;
}
short surv_RMSFundAllocation(tagRMSFundAllocationRequest* request, BKSurveillanceLimitDefTag* limit) noexcept {
    return RMSFundAllocation(request, limit);
}

// ---------------------------------------------------------------------------------------------------------------
// Risk parameters and margin inputs

short surv_ProcessRPFInfo(const char* message, std::int32_t length, short toStaging) noexcept {
    return ProcessRPFInfo(message, length, toStaging);
}
short surv_InitializeMarginInfo(CPtrList* list) noexcept { return InitializeMarginInfo(list); }
short surv_InitializeAllAdditionalMarginInfo(CMapStringToOb* map) noexcept {
    return InitializeAllAdditionalMarginInfo(map);
}
short surv_InitializeMCXMarginInfo(CPtrList* records) noexcept { return InitializeMCXMarginInfo(records); }
short surv_InitializeNCDEXExposureMarginInfo(CPtrList* records) noexcept {
    return InitializeNCDEXExposureMarginInfo(records);
}

// ---------------------------------------------------------------------------------------------------------------
// Reference data

short surv_InitializeClientPreferencesInfo(CPtrList* preferences, CPtrList* reserved) noexcept {
    return InitializeClientPreferencesInfo(preferences, reserved);
}
short surv_GetClientPreferencesInfo(int scope, char* code, short exchange, CPtrList* result) noexcept {
    return GetClientPreferencesInfo(scope, code, exchange, result);
}
short surv_AddUpdateClientPreferencesInfo(tagClientRiskPreferenceInfoForSurv* preference) noexcept {
    return AddUpdateClientPreferencesInfo(preference);
}
short surv_InitializeProductMasterInfo(CPtrList* records) noexcept { return InitializeProductMasterInfo(records); }
short surv_AddUpdateProductMasterInfo(tagProductTypeScripBasket* record) noexcept {
    return AddUpdateProductMasterInfo(record);
}
short surv_InitializeCompulsoryDeliverySeriesInfo(CPtrList* records) noexcept {
    return InitializeCompulsoryDeliverySeriesInfo(records);
}
short surv_InitializeTokenInfo(CPtrList* records, short sellPriceBandPercent, short sellPriceTestOn,
                               short buyPriceBandPercent, short buyPriceTestOn) noexcept {
    return InitializeTokenInfo(records, sellPriceBandPercent, sellPriceTestOn, buyPriceBandPercent, buyPriceTestOn);
}
short surv_CheckAndUpdateSecurityInfo(tagBcastUpdateSecurityInfo* info) noexcept {
    return info ? CheckAndUpdateSecurityInfo(*info) : surv::kNotDone;
}

// ---------------------------------------------------------------------------------------------------------------
// Market data

short surv_AddAndComputeMTM(int compute, tagBcastMBOOrMBPTouchline* touchline, CPtrList* changedRows,
                            CPtrList* reservedList) noexcept {
    return AddAndComputeMTM(compute, touchline, changedRows, reservedList);
}
short surv_RecomputeMTM(CPtrList* changedRows, CPtrList* reservedList) noexcept {
    return RecomputeMTM(changedRows, reservedList);
}
short surv_RecomputeMTMOnline() noexcept { return RecomputeMTMOnline(); }
void surv_SetLastBcastMBOOrMBPTouchline(tagBcastMBOOrMBPTouchline* touchline) noexcept {
    SetLastBcastMBOOrMBPTouchline(touchline);
}

// ---------------------------------------------------------------------------------------------------------------
// Queries

short surv_GetNetPositionInfoFromDll(int queryKind, char* categoryCode, char* groupCode, char* accountCode,
                                     std::int32_t token, short periodicity, CPtrList* result, short byToken,
                                     short product) noexcept {
    return GetNetPositionInfoFromDll(queryKind, categoryCode, groupCode, accountCode, token, periodicity, result,
                                     byToken, product);
}
short surv_GetMarketExposure(char* code, short periodicity, CPtrList* result) noexcept {
    return GetMarketExposure(code, periodicity, result);
}
short surv_ClientPositionPresentFromDLL(char* text1, char* text2, char* text3, char* text4) noexcept {
    return ClientPositionPresentFromDLL(text1, text2, text3, text4);
}
short surv_GetAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) noexcept {
    return GetAllSurveillancePositions(limitRows, positionRows);
}
short surv_CaptureAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) noexcept {
    return CaptureAllSurveillancePositions(limitRows, positionRows);
}
short surv_DownloadSurvInfo(const char* code, CPtrList* limitRows) noexcept {
    return DownloadSurvInfo(code, limitRows);
}

// ---------------------------------------------------------------------------------------------------------------
// Depository

short surv_GetDPPositionInfoFromDll(int kind, char* categoryCode, char* isinCode, CPtrList* result) noexcept {
    return GetDPPositionInfoFromDll(kind, categoryCode, isinCode, result);
}
short surv_UpdateDPPositionInfo(tagDPUpload* upload) noexcept { return UpdateDPPositionInfo(upload); }
