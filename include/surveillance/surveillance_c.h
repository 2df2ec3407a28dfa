#pragma once

/// @file
/// The exported functions for C, and for every language that calls C: each function of surveillance.h with surv_ before
/// its name. Arguments, answers and ownership are told there and in host.h; what a C++ host passes by reference is a
/// pointer here, and a null one gives -1. Nothing is thrown. The records are those of records.h.

#include "surveillance/records.h"

/// Marks what the shared library exports.
#define SURVEILLANCE_API __attribute__((visibility("default")))

#ifdef __cplusplus
/// In C++ the functions throw nothing, by type.
#define SURVEILLANCE_NOEXCEPT noexcept
class CPtrList;
class CMapStringToOb;
struct tagBcastUpdateSecurityInfo;
struct tagCheckSurveillanceInfo;
struct tagUpdateSurveillanceInfo;
extern "C" {
#else
#define SURVEILLANCE_NOEXCEPT
typedef struct CPtrList CPtrList;
typedef struct CMapStringToOb CMapStringToOb;
typedef struct tagBcastUpdateSecurityInfo tagBcastUpdateSecurityInfo;
typedef struct tagCheckSurveillanceInfo tagCheckSurveillanceInfo;
typedef struct tagUpdateSurveillanceInfo tagUpdateSurveillanceInfo;
#endif

// ---------------------------------------------------------------------------------------------------------------
// The numbers that a request is written with and an answer is read by. The others are listed in codes.h.

/// Numbers of codes.h.
enum {
    SURV_ALL_SECURITIES = -9,  ///< token of a row
    SURV_NO_LIMIT = -1,        ///< of a limit or a multiplier
    SURV_NO_LEVEL = 255,       ///< clientType, subClientType
    SURV_BUY = 1,              ///< buySell
    SURV_SELL = 2,             ///< buySell

    SURV_MASK_NSE_CASH = 1,         ///< exchange mask
    SURV_MASK_NSE_DERIVATIVES = 2,  ///< exchange mask
    SURV_MASK_BSE_DERIVATIVES = 4,  ///< exchange mask
    SURV_MASK_BSE_CASH = 8,         ///< exchange mask
    SURV_MASK_MCX = 0x10,           ///< exchange mask
    SURV_MASK_NCDEX = 0x40,         ///< exchange mask

    SURV_PRODUCT_MARGIN = 1,       ///< productType
    SURV_PRODUCT_DELIVERY = 2,     ///< productType
    SURV_PRODUCT_MARGIN_PLUS = 4,  ///< productType
    SURV_PRODUCT_MTF = 8,          ///< productType

    SURV_STATUS_PASS = 1,                  ///< the order may stand
    SURV_STATUS_NO_LIMITS = -306,          ///< a code of the order has no limits
    SURV_STATUS_REFUSED = -312,            ///< a rule refused it
    SURV_STATUS_NO_MARKET = -314,          ///< at market, and no price is known
    SURV_STATUS_NO_RISK_PARAMETERS = -317  ///< the contract has no risk parameters
};

// ---------------------------------------------------------------------------------------------------------------
// Lists, maps and rows. A null list is an empty one.

/// Where a walk along a list stands; null is the end.
typedef void* SurvPosition;

/// Null without memory.
SURVEILLANCE_API CPtrList* surv_ListNew(void) SURVEILLANCE_NOEXCEPT;
/// Deletes the list, not its rows.
SURVEILLANCE_API void surv_ListDelete(CPtrList* list) SURVEILLANCE_NOEXCEPT;
/// -1 without memory: the row isn't in the list.
SURVEILLANCE_API short surv_ListAdd(CPtrList* list, void* row) SURVEILLANCE_NOEXCEPT;
/// How many rows it holds.
SURVEILLANCE_API int surv_ListCount(const CPtrList* list) SURVEILLANCE_NOEXCEPT;
/// Where a walk begins.
SURVEILLANCE_API SurvPosition surv_ListHead(const CPtrList* list) SURVEILLANCE_NOEXCEPT;
/// The row of the position, which moves on. Null at the end.
SURVEILLANCE_API void* surv_ListNext(const CPtrList* list, SurvPosition* position) SURVEILLANCE_NOEXCEPT;
/// Empties the list and frees no row: for rows that are the library's.
SURVEILLANCE_API void surv_ListForget(CPtrList* list) SURVEILLANCE_NOEXCEPT;

/// The records that pass into another's ownership.
enum SurvRowKind {
    SURV_LIMIT_ROW,     ///< BKSurveillanceLimitDefTag
    SURV_POSITION_ROW,  ///< BKExposureTag
    SURV_BREACH_ROW,    ///< tagBreachRow
    SURV_HOLDING_ROW    ///< tagDPHolding
};
/// A row of zeros, to hand to a start or to free; the limits of a limit row are -1, which is none. Null without memory,
/// and for an unknown kind.
SURVEILLANCE_API void* surv_RowNew(int kind) SURVEILLANCE_NOEXCEPT;
/// Frees a row of the kind; null is none.
SURVEILLANCE_API void surv_RowFree(int kind, void* row) SURVEILLANCE_NOEXCEPT;
/// Empties the list and frees its rows, which are all of the kind.
SURVEILLANCE_API void surv_ListFreeRows(int kind, CPtrList* list) SURVEILLANCE_NOEXCEPT;

/// The map of surv_InitializeAllAdditionalMarginInfo. It points at the records put in.
SURVEILLANCE_API CMapStringToOb* surv_MapNew(void) SURVEILLANCE_NOEXCEPT;
/// Deletes the map, not its records.
SURVEILLANCE_API void surv_MapDelete(CMapStringToOb* map) SURVEILLANCE_NOEXCEPT;
/// -1 without memory: the record isn't in the map.
SURVEILLANCE_API short surv_MapPut(CMapStringToOb* map, const char* key,
                                   tagAdditionalMarginInfo* record) SURVEILLANCE_NOEXCEPT;

// ---------------------------------------------------------------------------------------------------------------
// Namesakes

/// HostWindowFunction of host.h.
typedef void (*SurvHostWindow)(void* context, unsigned message, unsigned wParam, const char* text);
/// HostClockFunction of host.h.
typedef int64_t (*SurvHostClock)(void* context);

/// @name Namesakes
/// @{

/// As the function of surveillance.h or host.h without surv_ before its name.
SURVEILLANCE_API void surv_SetHostWindow(SurvHostWindow window, void* context) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API void surv_SetHostClock(SurvHostClock clock, void* context) SURVEILLANCE_NOEXCEPT;

// ---------------------------------------------------------------------------------------------------------------
// Life cycle and settings

SURVEILLANCE_API short surv_InitializeSurvManager(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode,
                                                  short limitDetailMessages, short mtmMode, short unused6,
                                                  short positionMode, int32_t featureBits, short unused9,
                                                  CPtrList* securityList, CPtrList* dpList,
                                                  CPtrList* sarList) SURVEILLANCE_NOEXCEPT;
/// The short form of InitializeSurvManager.
SURVEILLANCE_API short surv_RestartSurvManager(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode,
                                               CPtrList* securityList, CPtrList* dpList,
                                               CPtrList* sarList) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API void surv_CleanupSurvManager(void) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_UpdateSurvExposure(CPtrList* limitList, CPtrList* exposureList,
                                               short rpfMarginMode) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_ComputeMTMOnOrOff(short mode) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_MTMTimeIntervalAndTickCount(int32_t seconds, short ticks) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_SetMarginPlusMinOrderValue(int32_t rupees) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_SetOrderBasedPosition(short value) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_InitializeMCXLOTWeightOnOrOff(short value) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_AddUpdateAutoSquareOffTimeSettings(short kind, short exchangeMask,
                                                               short value) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_EnableTransactionLogging(short value) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API CPtrList* surv_GetTransactionLogList(void) SURVEILLANCE_NOEXCEPT;

// ---------------------------------------------------------------------------------------------------------------
// Orders

SURVEILLANCE_API short surv_CheckSurveillance(tagSurveillanceInfo* request, tagOrdErrMessage* error, short* status,
                                              CPtrList* limitRows, CPtrList* breachRows, CPtrList* rollbackRows,
                                              short probe) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_UpdateSurveillance(tagSurveillanceInfo* request, tagAdminErrMessage* error,
                                               CPtrList* limitRows, CPtrList* breachRows,
                                               short dealerOnly) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_GetClientCode1(short kind, const tagOrderInfo* orderInfo, const char* rawRecord,
                                           char* text) SURVEILLANCE_NOEXCEPT;

/// Old forms. They are refused whatever the state.
SURVEILLANCE_API short surv_CheckSurveillanceByInfo(tagCheckSurveillanceInfo* info) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_CheckSurveillanceByCodes(const char* groupCode, const char* dealerCode,
                                                     const char* clientCode, const tagOrderRequest* order,
                                                     tagOrdErrMessage* error, short* status,
                                                     CPtrList* limitRows) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_UpdateSurveillanceByInfo(tagUpdateSurveillanceInfo* info) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_UpdateSurveillanceByCodes(const char* groupCode, const char* dealerCode,
                                                      const char* clientCode, const tagOrderInfo* order,
                                                      const tagTradeInfo* trade, tagAdminErrMessage* error,
                                                      CPtrList* limitRows) SURVEILLANCE_NOEXCEPT;

// ---------------------------------------------------------------------------------------------------------------
// Limits

SURVEILLANCE_API short surv_AddSurvLimits(BKSurveillanceLimitDefTag* limit,
                                          tagAdminErrMessage* error) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_UpdateSurvLimits(BKSurveillanceLimitDefTag* limit,
                                             tagAdminErrMessage* error) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_RemoveSurvLimits(const BKSurveillanceLimitDefTag* limit,
                                             tagAdminErrMessage* error) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_GetSurveillancePositions(BKSurveillanceLimitDefTag* limit) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_GetSurvPositions(char* entityCode, short limitMask, int32_t token,
                                             BKSurveillanceLimitDefTag** limit) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_RMSFundAllocation(tagRMSFundAllocationRequest* request,
                                              BKSurveillanceLimitDefTag* limit) SURVEILLANCE_NOEXCEPT;

// ---------------------------------------------------------------------------------------------------------------
// Risk parameters and margin inputs

SURVEILLANCE_API short surv_ProcessRPFInfo(const char* message, int32_t length, short toStaging) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_InitializeMarginInfo(CPtrList* list) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_InitializeAllAdditionalMarginInfo(CMapStringToOb* map) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_InitializeMCXMarginInfo(CPtrList* records) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_InitializeNCDEXExposureMarginInfo(CPtrList* records) SURVEILLANCE_NOEXCEPT;

// ---------------------------------------------------------------------------------------------------------------
// Reference data

SURVEILLANCE_API short surv_InitializeClientPreferencesInfo(CPtrList* preferences,
                                                            CPtrList* reserved) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_GetClientPreferencesInfo(int scope, char* code, short exchange,
                                                     CPtrList* result) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_AddUpdateClientPreferencesInfo(tagClientRiskPreferenceInfoForSurv* preference)
    SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_InitializeProductMasterInfo(CPtrList* records) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_AddUpdateProductMasterInfo(tagProductTypeScripBasket* record) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_InitializeCompulsoryDeliverySeriesInfo(CPtrList* records) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_InitializeTokenInfo(CPtrList* records, short sellPriceBandPercent, short sellPriceTestOn,
                                                short buyPriceBandPercent, short buyPriceTestOn) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_CheckAndUpdateSecurityInfo(tagBcastUpdateSecurityInfo* info) SURVEILLANCE_NOEXCEPT;

// ---------------------------------------------------------------------------------------------------------------
// Market data

SURVEILLANCE_API short surv_AddAndComputeMTM(int compute, tagBcastMBOOrMBPTouchline* touchline, CPtrList* changedRows,
                                             CPtrList* reservedList) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_RecomputeMTM(CPtrList* changedRows, CPtrList* reservedList) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_RecomputeMTMOnline(void) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API void surv_SetLastBcastMBOOrMBPTouchline(tagBcastMBOOrMBPTouchline* touchline) SURVEILLANCE_NOEXCEPT;

// ---------------------------------------------------------------------------------------------------------------
// Queries

SURVEILLANCE_API short surv_GetNetPositionInfoFromDll(int queryKind, char* categoryCode, char* groupCode,
                                                      char* accountCode, int32_t token, short periodicity,
                                                      CPtrList* result, short byToken,
                                                      short product) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_GetMarketExposure(char* code, short periodicity, CPtrList* result) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_ClientPositionPresentFromDLL(char* text1, char* text2, char* text3,
                                                         char* text4) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_GetAllSurveillancePositions(CPtrList* limitRows,
                                                        CPtrList* positionRows) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_CaptureAllSurveillancePositions(CPtrList* limitRows,
                                                            CPtrList* positionRows) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_DownloadSurvInfo(const char* code, CPtrList* limitRows) SURVEILLANCE_NOEXCEPT;

// ---------------------------------------------------------------------------------------------------------------
// Depository

SURVEILLANCE_API short surv_GetDPPositionInfoFromDll(int kind, char* categoryCode, char* isinCode,
                                                     CPtrList* result) SURVEILLANCE_NOEXCEPT;
SURVEILLANCE_API short surv_UpdateDPPositionInfo(tagDPUpload* upload) SURVEILLANCE_NOEXCEPT;

/// @}

#ifdef __cplusplus
}
#endif
