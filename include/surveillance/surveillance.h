#pragma once

/// @file
/// The exported functions of the surveillance library.
///
/// One call at a time: the library has no thread and takes no lock. Nothing is thrown. Unless told otherwise a
/// function returns 0 (done) or -1 (not done); the refusal of an order is no failure of the call. Failures of an
/// entry are told as a text to the host window (host.h).
///
/// Ownership. Lists stay the host's. Limit and position rows handed to a start become the library's. Rows that the
/// library puts into a list are the host's to free, except limit rows in positionMode 2 and 3, which are the
/// library's live rows; host.h has helpers for both.

#include <cstdint>

#include "surveillance/containers.h"
#include "surveillance/records.h"

/// An exported function.
#define SURVEILLANCE_API __attribute__((visibility("default")))

struct tagBcastUpdateSecurityInfo;
struct tagCheckSurveillanceInfo;
struct tagUpdateSurveillanceInfo;

// ---------------------------------------------------------------------------------------------------------------
// Life cycle and settings

/// Starts the library: stores the settings and loads the rows. The sixth and the ninth argument have no effect.
/// featureBits: 0x10 puts the family level in force (it can only turn it on). securityList holds tagSecurityIsinRow,
/// dpList tagDPHolding, sarList tagSarRow: they are read, and stay the host's.
SURVEILLANCE_API short InitializeSurvManager(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode,
                                             short limitDetailMessages, short mtmMode, short unused6,
                                             short positionMode, std::int32_t featureBits, short unused9,
                                             CPtrList* securityList, CPtrList* dpList, CPtrList* sarList) noexcept;
/// Starts again with the settings of before.
SURVEILLANCE_API short InitializeSurvManager(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode,
                                             CPtrList* securityList, CPtrList* dpList, CPtrList* sarList) noexcept;
/// Ends the life of everything that a start loads; preferences, families and settings stay.
SURVEILLANCE_API void CleanupSurvManager() noexcept;

/// Stores rpfMarginMode; the lists are ignored. Needs no start.
SURVEILLANCE_API short UpdateSurvExposure(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode) noexcept;
/// mode: 0 no mark to market; else bits 1 cash, 2 futures, 4 options.
SURVEILLANCE_API short ComputeMTMOnOrOff(short mode) noexcept;
/// When a scrip is marked again: after so many seconds, or at so many of its touchlines. 0 seconds: at every touchline.
SURVEILLANCE_API short MTMTimeIntervalAndTickCount(std::int32_t seconds, short ticks) noexcept;
/// rupees 0 switches the test off. A long start resets it to 0.
SURVEILLANCE_API short SetMarginPlusMinOrderValue(std::int32_t rupees) noexcept;
/// value 1: positions by client are built from orders, and the rows of a start stay alive as in positionMode 2 and 3.
SURVEILLANCE_API short SetOrderBasedPosition(short value) noexcept;
/// value 1: MCX quantities and values are weighted by lot.
SURVEILLANCE_API short InitializeMCXLOTWeightOnOrOff(short value) noexcept;
/// kind 0: square-off time, 1: square-off session. Other kinds and unknown masks change nothing.
SURVEILLANCE_API short AddUpdateAutoSquareOffTimeSettings(short kind, short exchangeMask, short value) noexcept;
/// Stored; nothing reads it.
SURVEILLANCE_API short EnableTransactionLogging(short value) noexcept;
/// Always null.
SURVEILLANCE_API CPtrList* GetTransactionLogList() noexcept;

// ---------------------------------------------------------------------------------------------------------------
// Orders

/// Judges an order before it goes out. request: see tagSurveillanceInfo for its variable part. status: see
/// surv::status. limitRows: on a pass one row for each limit row touched (probe: tagBreachRow of every breach);
/// rollbackRows: of a probe the same once more, by level. probe 1: try every level, keep nothing.
/// Returns 0 also for a refusal; -1 for an unknown message code (status 1), a record without an exchange mask, or a
/// null request, error record or status.
SURVEILLANCE_API short CheckSurveillance(tagSurveillanceInfo* request, tagOrdErrMessage* error, short* status,
                                         CPtrList* limitRows, CPtrList* breachRows, CPtrList* rollbackRows,
                                         short probe) noexcept;
/// Takes in an order event, a trade or a correction. dealerOnly not 0: the dealer level alone takes it.
SURVEILLANCE_API short UpdateSurveillance(tagSurveillanceInfo* request, tagAdminErrMessage* error, CPtrList* limitRows,
                                          CPtrList* breachRows, short dealerOnly) noexcept;

/// The account of a raw order record. Returns 0 with the account in text (room for 15 characters), 1 for a kind
/// other than 0 or an own-account order, -1 for a message code without an account or a null pointer. The raw record is
/// a tagOrderRequest; for codes 2212 and 2222 orderInfo is read instead.
SURVEILLANCE_API short GetClientCode1(short kind, const tagOrderInfo& orderInfo, const char* rawRecord,
                                      char* text) noexcept;

/// Old forms. They are refused whatever the state.
SURVEILLANCE_API short CheckSurveillance(tagCheckSurveillanceInfo* info) noexcept;
/// Refused, too.
SURVEILLANCE_API short CheckSurveillance(const char* groupCode, const char* dealerCode, const char* clientCode,
                                         const tagOrderRequest* order, tagOrdErrMessage* error, short* status,
                                         CPtrList* limitRows) noexcept;
/// Refused, too.
SURVEILLANCE_API short UpdateSurveillance(tagUpdateSurveillanceInfo* info) noexcept;
/// Refused, too.
SURVEILLANCE_API short UpdateSurveillance(const char* groupCode, const char* dealerCode, const char* clientCode,
                                          const tagOrderInfo* order, const tagTradeInfo* trade,
                                          tagAdminErrMessage* error, CPtrList* limitRows) noexcept;

// ---------------------------------------------------------------------------------------------------------------
// Limits

/// Adds one limit row; its used figures are worked out from what the entity holds and written back on success.
SURVEILLANCE_API short AddSurvLimits(BKSurveillanceLimitDefTag* limit, tagAdminErrMessage* error) noexcept;
/// Changes the limits of a row. messageKind 13 leaves multipliers, minima and three option bits alone.
SURVEILLANCE_API short UpdateSurvLimits(BKSurveillanceLimitDefTag* limit, tagAdminErrMessage* error) noexcept;
/// Removes the row of a scrip or group; a row across all securities can't be removed.
SURVEILLANCE_API short RemoveSurvLimits(const BKSurveillanceLimitDefTag& limit, tagAdminErrMessage* error) noexcept;
/// entityCode, limitMask and token in; the whole row as stored out.
SURVEILLANCE_API short GetSurveillancePositions(BKSurveillanceLimitDefTag* limit) noexcept;
/// limit points at the live row, after its limits were rebuilt from the fund; null when there is none. It must not
/// be held beyond the next call.
SURVEILLANCE_API short GetSurvPositions(char* entityCode, short limitMask, std::int32_t token,
                                        BKSurveillanceLimitDefTag*& limit) noexcept;
/// Adds to the fund of an entity, or withdraws what the margin in use leaves free; the limits that are set in its row
/// over all exchanges and securities follow. limit takes that row on success; null: the row goes nowhere.
SURVEILLANCE_API short RMSFundAllocation(tagRMSFundAllocationRequest* request,
                                         BKSurveillanceLimitDefTag* limit) noexcept;

// ---------------------------------------------------------------------------------------------------------------
// Risk parameters and margin inputs

/// One message of a risk parameter file: a tagRPFHeader and, by its code, a record or a count.
/// toStaging not 0: records wait in a table of their own until the message that ends the file moves them into the
/// live one and re-margins every position they concern; 0: they go into the live table at once.
/// No byte beyond length is read. A message of a wrong length changes nothing; a record with a charge,
/// price, loss or delta that is not finite is counted and not stored.
SURVEILLANCE_API short ProcessRPFInfo(const char* message, const std::int32_t& length, short toStaging) noexcept;
/// Margin rates of the day. The records are copied, the first of an exchange and token stands, one of an exchange that
/// the table isn't for is dropped; the list stays the host's. The list of InitializeMarginInfo holds tagMarginInfo.
SURVEILLANCE_API short InitializeMarginInfo(CPtrList* list) noexcept;
/// The values of the map are tagAdditionalMarginInfo records, entered by PutRecord of host.h; the keys are not used.
/// The records are copied, the first of an exchange and token stands.
SURVEILLANCE_API short InitializeAllAdditionalMarginInfo(CMapStringToOb* map) noexcept;
/// The list holds tagMcxMarginRecord, the one below tagNcdexExposureMarginRecord; copied as above.
SURVEILLANCE_API short InitializeMCXMarginInfo(CPtrList* records) noexcept;
/// The same of NCDEX.
SURVEILLANCE_API short InitializeNCDEXExposureMarginInfo(CPtrList* records) noexcept;

// ---------------------------------------------------------------------------------------------------------------
// Reference data

/// The list holds tagClientRiskPreferenceInfoForSurv; the records are copied, the first of a code and exchange stands.
SURVEILLANCE_API short InitializeClientPreferencesInfo(CPtrList* preferences, CPtrList* reserved) noexcept;
/// scope 0: every code; 1: the one code. exchange -9: all its records. The list gets the library's live records.
SURVEILLANCE_API short GetClientPreferencesInfo(int scope, char* code, short exchange, CPtrList* result) noexcept;
/// Adds or changes one record; bit 0 of marginFlags of the caller's record may change.
SURVEILLANCE_API short AddUpdateClientPreferencesInfo(tagClientRiskPreferenceInfoForSurv* preference) noexcept;
/// The list holds tagProductTypeScripBasket; the records are copied, the first of a token stands.
SURVEILLANCE_API short InitializeProductMasterInfo(CPtrList* records) noexcept;
/// Adds or changes one record; needs a start. Null does nothing.
SURVEILLANCE_API short AddUpdateProductMasterInfo(tagProductTypeScripBasket* record) noexcept;
/// The list holds tagCompulsoryDeliverySeries; those of NSE and BSE cash are kept.
SURVEILLANCE_API short InitializeCompulsoryDeliverySeriesInfo(CPtrList* records) noexcept;
/// Stores the tests of option prices against the underlying: bands in percent, a test of 1 is on. The list holds
/// tagTokenPriceRecord; those of NSE cash are copied, the first of a token stands.
SURVEILLANCE_API short InitializeTokenInfo(CPtrList* records, short sellPriceBandPercent, short sellPriceTestOn,
                                           short buyPriceBandPercent, short buyPriceTestOn) noexcept;
/// Accepted; reads nothing.
SURVEILLANCE_API short CheckAndUpdateSecurityInfo(tagBcastUpdateSecurityInfo& info) noexcept;

// ---------------------------------------------------------------------------------------------------------------
// Market data

/// Takes the broadcast of a scrip. With compute 1 and the scrip due (MTMTimeIntervalAndTickCount), what is held of it
/// is marked at its last price; changedRows gets a BKSurveillanceLimitDefTag for each row whose MTM was worked out: the
/// live row in positionMode 2 and 3, else a copy that the host frees. The second list stays empty. Either may be null.
SURVEILLANCE_API short AddAndComputeMTM(int compute, tagBcastMBOOrMBPTouchline* touchline, CPtrList* changedRows,
                                        CPtrList* reservedList) noexcept;
/// Marks every scrip, due or not; the lists as above, a row once for each scrip.
SURVEILLANCE_API short RecomputeMTM(CPtrList* changedRows, CPtrList* reservedList) noexcept;
/// In positionMode 1 clears the MTM of every limit row and lays it in anew, told in a file BroadcastMTM_*.log; in any
/// other mode does nothing.
SURVEILLANCE_API short RecomputeMTMOnline() noexcept;
/// Accepted; reads nothing.
SURVEILLANCE_API void SetLastBcastMBOOrMBPTouchline(tagBcastMBOOrMBPTouchline* touchline) noexcept;

// ---------------------------------------------------------------------------------------------------------------
// Queries

/// One screen of net positions: the list gets a new BKExposureTag for each result. periodicity: a limit mask of one
/// segment; token -9: all securities; product: 2 delivery, 4 two-leg orders, 8 margin funding (all three on the
/// settlement side alone), else every other product.
///
///   queryKind     byToken 0                                      byToken not 0: through the token's holders
///   0, 8, 10      total of the category                          the same
///   1             the same; category "ALL": every category of    of those that hold the token
///                 the house's levels
///   4             totals of the account, or of "ALL"             of each account that holds the token
///   5             the category's positions by scrip              the same
///   6, 12         positions by scrip of the account, or of "ALL" the same, if anybody holds the token
///   7             who holds the token                            the same
///   9             as 1, for the levels of families               the same
///   11            as 4, for the house's own account              the same
///
/// Group and account are trimmed in the caller's buffers, and with byToken the group of each holder is written over the
/// caller's, as far as it fits. Returns -1 for a category that isn't there; 0 with no rows for any other kind or mask,
/// or a null pointer.
SURVEILLANCE_API short GetNetPositionInfoFromDll(int queryKind, char* categoryCode, char* groupCode, char* accountCode,
                                                 std::int32_t token, short periodicity, CPtrList* result, short byToken,
                                                 short product) noexcept;
/// The limit rows of a mask of one entity or of "ALL", with the option bits of the preference in force: live rows in
/// positionMode 2 and 3 keep them, else the rows are copies that the host frees. 0 also for an unknown code.
SURVEILLANCE_API short GetMarketExposure(char* code, short periodicity, CPtrList* result) noexcept;
/// 1: an account has a position open, 0: it hasn't, -1: no such entity. The first two texts are taken for group and
/// account, and the entity is always the one with an empty code.
SURVEILLANCE_API short ClientPositionPresentFromDLL(char* text1, char* text2, char* text3, char* text4) noexcept;
/// Everything: limit rows as stored, and a new BKExposureTag for every contract of every account; in positionMode 1
/// also for each equity position in deliveries ("DD" in optionType) and two-leg orders ("MP", "MD"). Either list may be
/// null.
SURVEILLANCE_API short GetAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) noexcept;
/// The same with the netted positions of the expiry period, in positionMode 1 alone.
SURVEILLANCE_API short CaptureAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) noexcept;
/// The limit rows of one entity, as stored. A code that names none adds nothing.
SURVEILLANCE_API short DownloadSurvInfo(const char* code, CPtrList* limitRows) noexcept;

// ---------------------------------------------------------------------------------------------------------------
// Depository

/// The list gets a tagDPHolding for each holding of every entity (kind 0) or of the one of the code (kind 1, -1 when
/// there is none); any other kind does nothing. isinCode "ALL": every holding, else the one of that ISIN.
SURVEILLANCE_API short GetDPPositionInfoFromDll(int kind, char* categoryCode, char* isinCode,
                                                CPtrList* result) noexcept;
/// The quantity joins the entity's holding of the ISIN, price and haircut are taken over, and the fund figures of its
/// settlement and expiry rows across all securities follow. 0 also when there is no such entity.
SURVEILLANCE_API short UpdateDPPositionInfo(tagDPUpload* upload) noexcept;
