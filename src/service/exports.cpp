// The exported functions: thin guards over the one Library. Nothing is decided here, and nothing is thrown through.

#include <cassert>
#include <cstring>
#include <exception>
#include <new>

#include "orderpath/request_view.h"
#include "platform/host_list.h"
#include "queries/net_position.h"
#include "reference/preferences.h"
#include "service/library.h"
#include "surveillance/host.h"
#include "surveillance/surveillance.h"

namespace {

using surv::kDone;
using surv::kNotDone;
using surv::Library;
using surv::ReferenceStores;

/// Made at the first call and never destroyed: a call from the host's own last steps still finds it.
Library& TheLibrary() {
    static Library& library = *new Library;
    return library;
}

constexpr const char* kNotInitialized = "Surveillance Manager not initialized";
constexpr const char* kCheckNotStarted = "Check Surveillance Failed !!!. Surveillance Manager not initialized";
constexpr const char* kUpdateNotStarted = "Update Surveillance Failed !!!. Surveillance Manager not initialized";
constexpr const char* kOldForm = "This function should not be called.";

bool callRunning = false;

/// A call, as long as it lives.
class CRunningCall {
 public:
    CRunningCall() { callRunning = true; }
    CRunningCall(const CRunningCall&) = delete;
    CRunningCall& operator=(const CRunningCall&) = delete;
    ~CRunningCall() { callRunning = false; }
};

/// Runs a piece of work; whatever it throws becomes `failure`, and a lack of memory is told to the host. A window or a
/// clock of the host's that calls back in while a call runs gets `failure` and no text: the call isn't done yet.
template <class Result, class Work>
Result Contained(Result failure, Work work) noexcept {
    if (callRunning) return failure;
    const CRunningCall running;
    try {
        Library& library = TheLibrary();
        try {
            Result result = work(library);
            assert(library.context.undo.Empty() && "no trial outlives a call");
            return result;
        } catch (const std::bad_alloc&) {
            library.context.window.Notify(surv::kNotEnoughMemory);
        }
    } catch (...) {  // NOLINT(bugprone-empty-catch): nothing is thrown across the boundary
    }
    return failure;
}

/// As Contained, for entries that need a start: without one the host gets the text.
template <class Work>
short Guarded(const char* notStarted, Work work) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        if (library.context.settings.started) return work(*library.manager);
        library.context.window.Notify(notStarted);
        return kNotDone;
    });
}

short RefuseOldForm() noexcept {
    return Contained<short>(kNotDone, [](Library& library) -> short {
        library.context.window.Notify(kOldForm);
        return kNotDone;
    });
}

/// A setting that needs no start.
template <class Store>
short StoreSetting(Store store) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        store(library.context.settings);
        return kDone;
    });
}

/// A list of margin rates; it needs no start.
template <class Record, class Add>
short LoadRates(const CPtrList* records, Add add) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        ReferenceStores& stores = library.context.stores;
        surv::ForEachRow<Record>(records, [&](const Record& record) { add(stores, record); });
        return kDone;
    });
}

/// An entity's code is read so far that one which is too long shows.
constexpr std::size_t kEntityCodeWidth = sizeof(BKSurveillanceLimitDefTag::entityCode) + 1;

/// The rows of an answer, until all are made: then the host's list gets them. Should memory run out before, it gets
/// none.
template <class Row>
class CGathered {
 public:
    /// list: null when the host wants no rows. live: the rows are the library's own.
    explicit CGathered(CPtrList* list, bool live = false) : list_(list), live_(live) {}
    CGathered(const CGathered&) = delete;
    CGathered& operator=(const CGathered&) = delete;
    ~CGathered() {
        while (!rows_.IsEmpty()) {
            auto* const row = static_cast<Row*>(rows_.RemoveHead());
            if (!live_) delete row;
        }
    }
    /// Null like the host's.
    [[nodiscard]] CPtrList* List() { return list_ ? &rows_ : nullptr; }
    void HandOver() {
        if (list_) list_->TakeAll(rows_);
    }

 private:
    CPtrList* list_;
    CPtrList rows_;
    bool live_;
};
using LimitRows = CGathered<BKSurveillanceLimitDefTag>;
using PositionRows = CGathered<BKExposureTag>;

bool RowsAreLive(const surv::CSurveillanceManager& manager) { return manager.Context().settings.RowsAreLive(); }

}  // namespace

// ---------------------------------------------------------------------------------------------------------------
// The host's side

void SetHostWindow(HostWindowFunction window, void* context) noexcept {
    Contained(0, [&](Library& library) {
        library.context.window.Set(window, context);
        return 0;
    });
}

void SetHostClock(HostClockFunction clock, void* context) noexcept {
    Contained(0, [&](Library& library) {
        library.context.clock.Set(clock, context);
        return 0;
    });
}

// ---------------------------------------------------------------------------------------------------------------
// Life cycle and settings

short InitializeSurvManager(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode, short limitDetailMessages,
                            short mtmMode, short /*unused6*/, short positionMode, std::int32_t featureBits,
                            short /*unused9*/, CPtrList* securityList, CPtrList* dpList, CPtrList* sarList) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) {
        return library.Start({rpfMarginMode, limitDetailMessages, mtmMode, positionMode, featureBits},
                             {limitList, exposureList, securityList, dpList, sarList});
    });
}

short InitializeSurvManager(CPtrList* limitList, CPtrList* exposureList, short rpfMarginMode, CPtrList* securityList,
                            CPtrList* dpList, CPtrList* sarList) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) {
        return library.Restart(rpfMarginMode, {limitList, exposureList, securityList, dpList, sarList});
    });
}

void CleanupSurvManager() noexcept {
    Contained(0, [](Library& library) {
        library.CleanUp();
        return 0;
    });
}

short UpdateSurvExposure(CPtrList* /*limitList*/, CPtrList* /*exposureList*/, short rpfMarginMode) noexcept {
    return StoreSetting([&](surv::Settings& settings) { settings.rpfMarginMode = rpfMarginMode; });
}

short ComputeMTMOnOrOff(short mode) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) { return library.SetMtmMode(mode); });
}

short MTMTimeIntervalAndTickCount(std::int32_t seconds, short ticks) noexcept {
    return StoreSetting([&](surv::Settings& settings) {
        settings.mtmTimeInterval = seconds;
        settings.mtmTickCount = ticks;
    });
}

short SetMarginPlusMinOrderValue(std::int32_t rupees) noexcept {
    return StoreSetting([&](surv::Settings& settings) { settings.marginPlusMinOrderValue = rupees; });
}

short SetOrderBasedPosition(short value) noexcept {
    return StoreSetting([&](surv::Settings& settings) { settings.orderBasedPosition = value; });
}

short InitializeMCXLOTWeightOnOrOff(short value) noexcept {
    return StoreSetting([&](surv::Settings& settings) { settings.mcxLotWeightOn = value; });
}

short AddUpdateAutoSquareOffTimeSettings(short kind, short exchangeMask, short value) noexcept {
    return StoreSetting([&](surv::Settings& settings) { settings.autoSquareOff.Set(kind, exchangeMask, value); });
}

short EnableTransactionLogging(short value) noexcept {
    return StoreSetting([&](surv::Settings& settings) { settings.transactionLogging = value; });
}

CPtrList* GetTransactionLogList() noexcept { return nullptr; }

// ---------------------------------------------------------------------------------------------------------------
// Orders

short CheckSurveillance(tagSurveillanceInfo* request, tagOrdErrMessage* error, short* status, CPtrList* limitRows,
                        CPtrList* /*breachRows*/, CPtrList* rollbackRows, short probe) noexcept {
    bool cutShort = false;
    const short result = Guarded(kCheckNotStarted, [&](surv::CSurveillanceManager& manager) -> short {
        if (!request || !error || !status) return kNotDone;
        cutShort = true;
        const short done = manager.CheckSurveillance(*request, *error, *status, {limitRows, rollbackRows}, probe != 0);
        cutShort = false;
        return done;
    });
    if (cutShort) *status = surv::status::kRefused;  // a call that memory ended must not look like a pass
    return result;
}

short UpdateSurveillance(tagSurveillanceInfo* request, tagAdminErrMessage* error, CPtrList* limitRows,
                         CPtrList* /*breachRows*/, short dealerOnly) noexcept {
    return Guarded(kUpdateNotStarted, [&](surv::CSurveillanceManager& manager) -> short {
        return request ? manager.UpdateSurveillance(*request, error, limitRows, dealerOnly != 0) : kNotDone;
    });
}

short GetClientCode1(short kind, const tagOrderInfo& orderInfo, const char* rawRecord, char* text) noexcept {
    constexpr short kOwnAccount = 1;
    if (kind != 0) return kOwnAccount;
    if (!rawRecord) return kNotDone;
    std::int16_t messageCode = 0;
    std::memcpy(&messageCode, rawRecord + offsetof(tagOrderRequest, messageCode), sizeof messageCode);

    surv::FixedText<32> account;
    std::int16_t proClient = 0;
    switch (messageCode) {
        case 2000:
        case 2012:
        case 2040:
        case 2042:
        case 2070:
        case 2072:
        case 2073:
        case 2074:
        case 2075:
        case 2076:
        case 2150:
        case 2154:
        case 2155:
        case 2156:
        case 2231:
        case 9002:
        case 30160: {
            const auto* record = reinterpret_cast<const tagOrderRequest*>(rawRecord);
            proClient = record->proClient;
            account = surv::AccountOf(record->accountText);
            break;
        }
        case 2212:
        case 2222:
            proClient = orderInfo.proClient;
            account = surv::AccountOf(orderInfo.accountText);
            break;
        default: return kNotDone;
    }
    if (proClient == surv::kProClientOwn) return kOwnAccount;
    if (!text) return kNotDone;
    const std::string_view view = account.View();
    std::memcpy(text, view.data(), view.size());
    text[view.size()] = '\0';
    return kDone;
}

short CheckSurveillance(tagCheckSurveillanceInfo* /*info*/) noexcept { return RefuseOldForm(); }
short CheckSurveillance(const char* /*groupCode*/, const char* /*dealerCode*/, const char* /*clientCode*/,
                        const tagOrderRequest* /*order*/, tagOrdErrMessage* /*error*/, short* /*status*/,
                        CPtrList* /*limitRows*/) noexcept {
    return RefuseOldForm();
}
short UpdateSurveillance(tagUpdateSurveillanceInfo* /*info*/) noexcept { return RefuseOldForm(); }
short UpdateSurveillance(const char* /*groupCode*/, const char* /*dealerCode*/, const char* /*clientCode*/,
                         const tagOrderInfo* /*order*/, const tagTradeInfo* /*trade*/, tagAdminErrMessage* /*error*/,
                         CPtrList* /*limitRows*/) noexcept {
    return RefuseOldForm();
}

// ---------------------------------------------------------------------------------------------------------------
// Limits

short AddSurvLimits(BKSurveillanceLimitDefTag* limit, tagAdminErrMessage* error) noexcept {
    return Guarded("Add Surv Limits Failed !!!. Surveillance Manager not initialized",
                   [&](surv::CSurveillanceManager& manager) -> short {
                       return limit ? manager.AddSurvLimits(*limit, error) : kNotDone;
                   });
}

short UpdateSurvLimits(BKSurveillanceLimitDefTag* limit, tagAdminErrMessage* error) noexcept {
    return Guarded("Update Surv Limits !!!. Surveillance Manager not initialized",
                   [&](surv::CSurveillanceManager& manager) -> short {
                       return limit ? manager.UpdateSurvLimits(*limit, error) : kNotDone;
                   });
}

short RemoveSurvLimits(const BKSurveillanceLimitDefTag& limit, tagAdminErrMessage* error) noexcept {
    return Guarded("Remove Surv Limits !!!. Surveillance Manager not initialized",
                   [&](surv::CSurveillanceManager& manager) { return manager.RemoveSurvLimits(limit, error); });
}

short GetSurveillancePositions(BKSurveillanceLimitDefTag* limit) noexcept {
    return Guarded(kNotInitialized, [&](surv::CSurveillanceManager& manager) -> short {
        return limit ? manager.GetSurveillancePositions(*limit) : kNotDone;
    });
}

short GetSurvPositions(char* entityCode, short limitMask, std::int32_t token,
                       BKSurveillanceLimitDefTag*& limit) noexcept {
    limit = nullptr;
    return Guarded(kNotInitialized, [&](surv::CSurveillanceManager& manager) -> short {
        const auto code = surv::HostText(entityCode, kEntityCodeWidth);
        const short result = manager.GetSurvPositions(code, limitMask, token, limit);
        if (result != kDone) {
            manager.Context().window.Notify("Surveillance Manager Update Exposure Failed");
            limit = nullptr;
        }
        return result;
    });
}

short RMSFundAllocation(tagRMSFundAllocationRequest* request, BKSurveillanceLimitDefTag* limit) noexcept {
    return Guarded("RMSFund Allocation !!!. Surveillance Manager not initialized",
                   [&](surv::CSurveillanceManager& manager) -> short {
                       return request ? manager.RMSFundAllocation(*request, limit) : kNotDone;
                   });
}

// ---------------------------------------------------------------------------------------------------------------
// Risk parameters and margin inputs

short ProcessRPFInfo(const char* message, const std::int32_t& length, short toStaging) noexcept {
    return Contained<short>(kNotDone,
                            [&](Library& library) { return library.ProcessRPFInfo(message, length, toStaging != 0); });
}
short InitializeMarginInfo(CPtrList* list) noexcept {
    return LoadRates<tagMarginInfo>(list, [](ReferenceStores& stores, const auto& r) { stores.AddVarMargin(r); });
}
short InitializeAllAdditionalMarginInfo(CMapStringToOb* map) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        if (map) library.LoadAdditionalMargins(*map);
        return kDone;
    });
}
short InitializeMCXMarginInfo(CPtrList* records) noexcept {
    return LoadRates<tagMcxMarginRecord>(records,
                                         [](ReferenceStores& stores, const auto& r) { stores.AddMcxMargin(r); });
}
short InitializeNCDEXExposureMarginInfo(CPtrList* records) noexcept {
    return LoadRates<tagNcdexExposureMarginRecord>(
        records, [](ReferenceStores& stores, const auto& r) { stores.AddNcdexExposureMargin(r); });
}

// ---------------------------------------------------------------------------------------------------------------
// Reference data

short InitializeClientPreferencesInfo(CPtrList* preferences, CPtrList* /*reserved*/) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        if (preferences) library.LoadPreferences(*preferences);
        return kDone;
    });
}

short GetClientPreferencesInfo(int scope, char* code, short exchange, CPtrList* result) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        if (result) {
            const auto text = surv::HostText(code, sizeof(tagClientRiskPreferenceInfoForSurv::preferenceCode));
            surv::QueryPreferences(library.context.stores, scope, text, exchange, *result);
        }
        return kDone;
    });
}

short AddUpdateClientPreferencesInfo(tagClientRiskPreferenceInfoForSurv* preference) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        if (preference) library.AddUpdatePreference(*preference);
        return kDone;
    });
}

short InitializeProductMasterInfo(CPtrList* records) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        if (records) library.context.products.LoadBaskets(*records);
        return kDone;
    });
}

short AddUpdateProductMasterInfo(tagProductTypeScripBasket* record) noexcept {
    return Guarded(kUpdateNotStarted, [&](surv::CSurveillanceManager& manager) -> short {
        if (record) manager.Context().products.SetBasket(*record);
        return kDone;
    });
}

short InitializeCompulsoryDeliverySeriesInfo(CPtrList* records) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        if (records) library.context.products.LoadSeries(*records);
        return kDone;
    });
}

short InitializeTokenInfo(CPtrList* records, short sellPriceBandPercent, short sellPriceTestOn,
                          short buyPriceBandPercent, short buyPriceTestOn) noexcept {
    return Contained<short>(kNotDone, [&](Library& library) -> short {
        surv::ProductReference& products = library.context.products;
        if (records) products.LoadTokenPrices(*records);
        products.sellPriceTest = {sellPriceBandPercent, sellPriceTestOn == 1};
        products.buyPriceTest = {buyPriceBandPercent, buyPriceTestOn == 1};
        return kDone;
    });
}

short CheckAndUpdateSecurityInfo(tagBcastUpdateSecurityInfo& /*info*/) noexcept {
    return Guarded("CheckAndUpdateSecurityInfo Failed !!!. Surveillance Manager not initialized",
                   [](surv::CSurveillanceManager&) -> short { return kDone; });
}

// ---------------------------------------------------------------------------------------------------------------
// Market data

short AddAndComputeMTM(int compute, tagBcastMBOOrMBPTouchline* touchline, CPtrList* changedRows,
                       CPtrList* /*reservedList*/) noexcept {
    return Guarded(kCheckNotStarted, [&](surv::CSurveillanceManager& manager) -> short {
        using Marking = surv::CSurveillanceManager::Marking;
        const Marking marking = compute == 1 ? Marking::kWanted : Marking::kUnwanted;
        if (touchline) manager.AddAndComputeMTM(*touchline, marking, changedRows);
        return kDone;
    });
}

short RecomputeMTM(CPtrList* changedRows, CPtrList* /*reservedList*/) noexcept {
    return Guarded(kCheckNotStarted, [&](surv::CSurveillanceManager& manager) -> short {
        manager.RecomputeMTM(changedRows);
        return kDone;
    });
}

short RecomputeMTMOnline() noexcept {
    return Guarded("RecomputeMTMOnline failed !!!. Surveillance Manager not initialized",
                   [](surv::CSurveillanceManager& manager) -> short {
                       manager.RecomputeMTMOnline();
                       return kDone;
                   });
}

void SetLastBcastMBOOrMBPTouchline(tagBcastMBOOrMBPTouchline* /*touchline*/) noexcept {
    Guarded("SetLastBcastMBOOrMBPTouchline Failed !!!. Surveillance Manager not initialized",
            [](surv::CSurveillanceManager&) -> short { return kDone; });
}

// ---------------------------------------------------------------------------------------------------------------
// Queries

short GetNetPositionInfoFromDll(int queryKind, char* categoryCode, char* groupCode, char* accountCode,
                                std::int32_t token, short periodicity, CPtrList* result, short byToken,
                                short product) noexcept {
    return Guarded(kCheckNotStarted, [&](surv::CSurveillanceManager& manager) -> short {
        if (!categoryCode || !groupCode || !accountCode || !result) return kDone;
        const surv::NetPositionQuery query{
            queryKind,
            surv::HostText(categoryCode, kEntityCodeWidth),
            {{groupCode, sizeof(BKExposureTag::groupCode)}, {accountCode, sizeof(BKExposureTag::accountCode)}},
            token,
            periodicity,
            byToken != 0,
            product};
        PositionRows rows(result);
        const short answer = manager.GetNetPositionInfoFromDll(query, *rows.List());
        rows.HandOver();
        return answer;
    });
}

short GetMarketExposure(char* code, short periodicity, CPtrList* result) noexcept {
    return Guarded(kCheckNotStarted, [&](surv::CSurveillanceManager& manager) -> short {
        // A code that names no entity gives no rows, and that is all that the host is told.
        LimitRows rows(result, RowsAreLive(manager));
        static_cast<void>(manager.GetMarketExposure(surv::HostText(code, kEntityCodeWidth), periodicity, rows.List()));
        rows.HandOver();
        return kDone;
    });
}

/// The first two texts are taken for the group and the account of an entity without a code.
short ClientPositionPresentFromDLL(char* text1, char* text2, char* /*text3*/, char* /*text4*/) noexcept {
    return Guarded(kCheckNotStarted, [&](surv::CSurveillanceManager& manager) -> short {
        const auto group = surv::HostText(text1, sizeof(BKExposureTag::groupCode));
        const auto account = surv::HostText(text2, sizeof(BKExposureTag::accountCode));
        return manager.GetClientPositionPresentFromDLL("", group, account);
    });
}

short GetAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) noexcept {
    return Guarded(kNotInitialized, [&](surv::CSurveillanceManager& manager) -> short {
        LimitRows limits(limitRows, RowsAreLive(manager));
        PositionRows positions(positionRows);
        manager.GetAllSurveillancePositions(limits.List(), positions.List());
        limits.HandOver();
        positions.HandOver();
        return kDone;
    });
}

short CaptureAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) noexcept {
    return Guarded(kNotInitialized, [&](surv::CSurveillanceManager& manager) -> short {
        LimitRows limits(limitRows, RowsAreLive(manager));
        PositionRows positions(positionRows);
        manager.CaptureAllSurveillancePositions(limits.List(), positions.List());
        limits.HandOver();
        positions.HandOver();
        return kDone;
    });
}

short DownloadSurvInfo(const char* code, CPtrList* limitRows) noexcept {
    return Guarded("Download Failed !!!. Surveillance Manager not initialized",
                   [&](surv::CSurveillanceManager& manager) -> short {
                       LimitRows limits(limitRows, RowsAreLive(manager));
                       manager.DownloadSurvInfo(surv::HostText(code, kEntityCodeWidth), limits.List());
                       limits.HandOver();
                       return kDone;
                   });
}

// ---------------------------------------------------------------------------------------------------------------
// Depository

short GetDPPositionInfoFromDll(int kind, char* categoryCode, char* isinCode, CPtrList* result) noexcept {
    return Guarded(kCheckNotStarted, [&](surv::CSurveillanceManager& manager) {
        const auto code = surv::HostText(categoryCode, kEntityCodeWidth);
        const auto isin = surv::HostText(isinCode, sizeof(tagDPHolding::isinCode));
        CGathered<tagDPHolding> rows(result);
        const short answer = manager.GetDPPositionInfoFromDll(kind, code, isin, rows.List());
        rows.HandOver();
        return answer;
    });
}

short UpdateDPPositionInfo(tagDPUpload* upload) noexcept {
    return Guarded(kUpdateNotStarted, [&](surv::CSurveillanceManager& manager) -> short {
        return upload ? manager.UpdateDPPositionInfo(*upload) : kNotDone;
    });
}
