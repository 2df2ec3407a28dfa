#include "call_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "surveillance/host.h"
#include "text_format.h"

namespace survhost {
namespace {

// ---------------------------------------------------------------------------------------------------------------
// Life cycle and settings

/// Whether the rows handed in are the library's afterwards depends on the settings before and after the call.
void CallInitialize(Session& session, const Arguments& arguments, Json& answer) {
    const std::string form = arguments.Has("form") ? arguments.Text("form") : "long";
    if (form != "long" && form != "short") throw ScriptError("\"form\" must be \"long\" or \"short\"");
    LimitRows limits;
    PositionRows positions;
    arguments.AddRows("limitList", limits);
    arguments.AddRows("exposureList", positions);
    RowList<tagSecurityIsinRow> securities;
    HoldingRows holdings;
    RowList<tagSarRow> sarHoldings;
    arguments.AddRows("securityList", securities);
    arguments.AddRows("dpList", holdings);
    arguments.AddRows("sarList", sarHoldings);
    const std::int16_t marginMode = arguments.Short("rpfMarginMode");
    const bool refused = session.Started();  // nothing is stored then, and no row is taken

    short result = 0;
    if (form == "short") {
        // The short form keeps every setting; arguments that only the long form has do nothing.
        result = ::InitializeSurvManager(limits.Get(), positions.Get(), marginMode, securities.Get(), holdings.Get(),
                                         sarHoldings.Get());
    } else {
        const std::int16_t positionMode = arguments.Short("positionMode");
        result =
            ::InitializeSurvManager(limits.Get(), positions.Get(), marginMode, arguments.Short("limitDetailMessages"),
                                    arguments.Short("mtmMode"), 0, positionMode, arguments.Long("featureBits"), 0,
                                    securities.Get(), holdings.Get(), sarHoldings.Get());
        if (!refused) session.SetPositionMode(positionMode);
    }
    if (!refused) {
        session.SetStarted(result == 0);
        if (session.StartAdoptsRows()) {
            limits.SetOwner(LimitRows::Owner::kLibrary);
            positions.SetOwner(PositionRows::Owner::kLibrary);
        }
    }
    answer["result"] = result;
}

/// Returns nothing, so its answer has no result.
void CallCleanup(Session& session, const Arguments&, Json&) {
    ::CleanupSurvManager();
    session.SetStarted(false);
}

/// Its two lists are ignored, so the script doesn't give them.
void CallUpdateExposure(Session&, const Arguments& arguments, Json& answer) {
    CPtrList limits;
    CPtrList positions;
    answer["result"] = ::UpdateSurvExposure(&limits, &positions, arguments.Short("rpfMarginMode"));
}

void CallSetOrderBased(Session& session, const Arguments& arguments, Json& answer) {
    answer["result"] = ::SetOrderBasedPosition(arguments.Short("value"));
    session.SetOrderBased(arguments.Short("value"));
}

/// There is no log: null.
void CallTransactionLog(Session&, const Arguments&, Json& answer) {
    const CPtrList* log = ::GetTransactionLogList();
    answer["result"] = log ? Json(log->GetCount()) : Json(nullptr);
}

// ---------------------------------------------------------------------------------------------------------------
// Accounts and limits

/// The raw record carries the message code, so it must be there whichever record is read.
void CallGetClientCode(Session&, const Arguments& arguments, Json& answer) {
    const auto order = arguments.Record<tagOrderRequest>("order");
    const auto stored = arguments.Has("orderInfo") ? arguments.Record<tagOrderInfo>("orderInfo") : tagOrderInfo{};
    std::array<char, 16> text{};
    answer["result"] =
        ::GetClientCode1(arguments.Short("kind"), stored, reinterpret_cast<const char*>(&order), text.data());
    Put(answer, "text", std::string(TextIn(text.data(), text.size())));
}

/// Add, change and remove: one limit row in, an error record out.
template <auto Function>
void CallOnLimit(Session&, const Arguments& arguments, Json& answer) {
    auto limit = arguments.Record<BKSurveillanceLimitDefTag>("limit");
    tagAdminErrMessage error{};
    answer["result"] = Function(limit, error);
    PutError(answer, error);
}

/// The row found is written over the one that asked.
void CallGetLimit(Session&, const Arguments& arguments, Json& answer) {
    auto limit = arguments.Record<BKSurveillanceLimitDefTag>("limit");
    const short result = ::GetSurveillancePositions(&limit);
    answer["result"] = result;
    if (result == 0) answer["limit"] = DecodeRecord(limit);
}

/// The pointer is into the library's store: decoded at once, never freed.
void CallGetLiveLimit(Session&, const Arguments& arguments, Json& answer) {
    BKSurveillanceLimitDefTag* limit = nullptr;
    answer["result"] = ::GetSurvPositions(arguments.Buffer("entityCode").data(), arguments.Short("limitMask"),
                                          arguments.Long("token"), limit);
    answer["limit"] = limit ? DecodeRecord(*limit) : Json(nullptr);
}

/// The request comes back with the answer in its out fields; what was asked is left out of it.
void CallFund(Session&, const Arguments& arguments, Json& answer) {
    auto request = arguments.Record<tagRMSFundAllocationRequest>("request");
    BKSurveillanceLimitDefTag limit{};
    const short result = ::RMSFundAllocation(&request, &limit);
    answer["result"] = result;
    Json out = DecodeRecord(request);
    for (const char* asked : {"entityName", "entityKey", "requestedFund"}) out.erase(asked);
    Put(answer, "request", std::move(out));
    if (result == 0) answer["limit"] = DecodeRecord(limit);
}

// ---------------------------------------------------------------------------------------------------------------
// Product and security reference data, margin rates. The records are copied, so the lists stay the host's.

template <class Record, auto Function>
void LoadFrom(std::string_view argument, const Arguments& arguments, Json& answer) {
    RowList<Record> records;
    arguments.AddRows(argument, records);
    answer["result"] = Function(records.Get());
}

template <class Record, auto Function>
void CallLoad(Session&, const Arguments& arguments, Json& answer) {
    LoadFrom<Record, Function>("records", arguments, answer);
}

void CallMarginInfo(Session&, const Arguments& arguments, Json& answer) {
    LoadFrom<tagMarginInfo, &::InitializeMarginInfo>("list", arguments, answer);
}

void CallTokenInfo(Session&, const Arguments& arguments, Json& answer) {
    RowList<tagTokenPriceRecord> records;
    arguments.AddRows("records", records);
    answer["result"] = ::InitializeTokenInfo(records.Get(), arguments.Short("sellPriceBandPercent"),
                                             arguments.Short("sellPriceTestOn"), arguments.Short("buyPriceBandPercent"),
                                             arguments.Short("buyPriceTestOn"));
}

void CallSetBasket(Session&, const Arguments& arguments, Json& answer) {
    auto record = arguments.Record<tagProductTypeScripBasket>("record");
    answer["result"] = ::AddUpdateProductMasterInfo(&record);
}

// ---------------------------------------------------------------------------------------------------------------
// Preferences

/// The records are copied, so the list stays the host's.
void CallInitializePreferences(Session&, const Arguments& arguments, Json& answer) {
    PreferenceRows preferences;
    arguments.AddRows("preferences", preferences);
    CPtrList reserved;
    answer["result"] = ::InitializeClientPreferencesInfo(preferences.Get(), &reserved);
}

/// The library may turn a bit of the caller's record.
void CallAddPreference(Session&, const Arguments& arguments, Json& answer) {
    auto preference = arguments.Record<tagClientRiskPreferenceInfoForSurv>("preference");
    const std::uint8_t before = preference.marginFlags;
    answer["result"] = ::AddUpdateClientPreferencesInfo(&preference);
    if (preference.marginFlags != before) Put(answer, "marginFlags", preference.marginFlags);
}

/// The list gets the library's own records.
void CallGetPreferences(Session&, const Arguments& arguments, Json& answer) {
    PreferenceRows preferences(PreferenceRows::Owner::kLibrary);
    answer["result"] = ::GetClientPreferencesInfo(arguments.Long("scope"), arguments.Buffer("code").data(),
                                                  arguments.Short("exchange"), preferences.Get());
    Put(answer, "preferences", preferences.Decode());
}

// ---------------------------------------------------------------------------------------------------------------
// Market data and queries

/// Reads nothing of its argument, which has no layout here: any bytes do.
void CallCheckSecurity(Session&, const Arguments&, Json& answer) {
    alignas(std::max_align_t) static std::array<char, 1024> bytes{};
    answer["result"] = ::CheckAndUpdateSecurityInfo(reinterpret_cast<tagBcastUpdateSecurityInfo&>(bytes));
}

void CallTouchline(Session& session, const Arguments& arguments, Json& answer) {
    auto touchline = arguments.Record<tagBcastMBOOrMBPTouchline>("touchline");
    LimitRows changed(LimitRowOwner(session));
    CPtrList reserved;
    answer["result"] = ::AddAndComputeMTM(arguments.Long("compute"), &touchline, changed.Get(), &reserved);
    Put(answer, "changedRows", changed.Decode());
}

void CallRecompute(Session& session, const Arguments&, Json& answer) {
    LimitRows changed(LimitRowOwner(session));
    CPtrList reserved;
    answer["result"] = ::RecomputeMTM(changed.Get(), &reserved);
    Put(answer, "changedRows", changed.Decode());
}

void CallNetPositions(Session&, const Arguments& arguments, Json& answer) {
    PositionRows positions;
    answer["result"] = ::GetNetPositionInfoFromDll(
        arguments.Long("queryKind"), arguments.Buffer("categoryCode").data(), arguments.Buffer("groupCode").data(),
        arguments.Buffer("accountCode").data(), arguments.Long("token"), arguments.Short("periodicity"),
        positions.Get(), arguments.Short("byToken"), arguments.Short("product"));
    Put(answer, "positions", positions.Decode());
}

void CallMarketExposure(Session& session, const Arguments& arguments, Json& answer) {
    LimitRows limits(LimitRowOwner(session));
    answer["result"] =
        ::GetMarketExposure(arguments.Buffer("code").data(), arguments.Short("periodicity"), limits.Get());
    Put(answer, "limits", limits.Decode());
}

void CallPositionPresent(Session&, const Arguments& arguments, Json& answer) {
    std::vector<std::string> texts = arguments.Texts("texts");
    if (texts.size() != 4) throw ScriptError("\"texts\" must be an array of 4");
    answer["result"] =
        ::ClientPositionPresentFromDLL(texts[0].data(), texts[1].data(), texts[2].data(), texts[3].data());
}

/// The two dumps: a half that isn't wanted is asked for with no list.
template <auto Function>
void CallDump(Session& session, const Arguments& arguments, Json& answer) {
    bool wantLimits = !arguments.Has("want");
    bool wantPositions = wantLimits;
    for (const std::string& half : arguments.Texts("want")) {
        if (half != "limits" && half != "positions") throw ScriptError(fmt::format("\"want\" knows no \"{}\"", half));
        (half == "limits" ? wantLimits : wantPositions) = true;
    }
    LimitRows limits(LimitRowOwner(session));
    PositionRows positions;
    answer["result"] = Function(wantLimits ? limits.Get() : nullptr, wantPositions ? positions.Get() : nullptr);
    Put(answer, "limits", limits.Decode());
    Put(answer, "positions", positions.Decode());
}

void CallDownload(Session& session, const Arguments& arguments, Json& answer) {
    LimitRows limits(LimitRowOwner(session));
    answer["result"] = ::DownloadSurvInfo(arguments.Text("code").c_str(), limits.Get());
    Put(answer, "limits", limits.Decode());
}

// ---------------------------------------------------------------------------------------------------------------
// Depository

void CallGetHoldings(Session&, const Arguments& arguments, Json& answer) {
    HoldingRows holdings;
    answer["result"] = ::GetDPPositionInfoFromDll(arguments.Long("kind"), arguments.Buffer("categoryCode").data(),
                                                  arguments.Buffer("isinCode").data(), holdings.Get());
    Put(answer, "holdings", holdings.Decode());
}

void CallUpload(Session&, const Arguments& arguments, Json& answer) {
    auto upload = arguments.Record<tagDPUpload>("upload");
    answer["result"] = ::UpdateDPPositionInfo(&upload);
}

// ---------------------------------------------------------------------------------------------------------------
// The table

using Limit = BKSurveillanceLimitDefTag;
using Error = tagAdminErrMessage;

// In the order of the library's header. A row without a function is a call whose records have no table so far.
constexpr std::array kCalls{
    Call{"InitializeSurvManager",
         "form limitList exposureList rpfMarginMode limitDetailMessages mtmMode positionMode featureBits securityList "
         "dpList sarList",
         &CallInitialize},
    Call{"CleanupSurvManager", "", &CallCleanup},
    Call{"UpdateSurvExposure", "rpfMarginMode", &CallUpdateExposure},
    Call{"ComputeMTMOnOrOff", "mode",
         [](Session&, const Arguments& a, Json& out) { out["result"] = ::ComputeMTMOnOrOff(a.Short("mode")); }},
    Call{"MTMTimeIntervalAndTickCount", "seconds ticks",
         [](Session&, const Arguments& a, Json& out) {
             out["result"] = ::MTMTimeIntervalAndTickCount(a.Long("seconds"), a.Short("ticks"));
         }},
    Call{"SetMarginPlusMinOrderValue", "rupees",
         [](Session&, const Arguments& a, Json& out) {
             out["result"] = ::SetMarginPlusMinOrderValue(a.Long("rupees"));
         }},
    Call{"SetOrderBasedPosition", "value", &CallSetOrderBased},
    Call{"InitializeMCXLOTWeightOnOrOff", "value",
         [](Session&, const Arguments& a, Json& out) {
             out["result"] = ::InitializeMCXLOTWeightOnOrOff(a.Short("value"));
         }},
    Call{"EnableTransactionLogging", "value",
         [](Session&, const Arguments& a, Json& out) { out["result"] = ::EnableTransactionLogging(a.Short("value")); }},
    Call{"GetTransactionLogList", "", &CallTransactionLog},
    Call{"AddUpdateAutoSquareOffTimeSettings", "kind exchangeMask value",
         [](Session&, const Arguments& a, Json& out) {
             out["result"] =
                 ::AddUpdateAutoSquareOffTimeSettings(a.Short("kind"), a.Short("exchangeMask"), a.Short("value"));
         }},

    Call{"CheckSurveillance", "request order trade tradeCorrection orderInfo probe", &CallCheckSurveillance},
    Call{"UpdateSurveillance", "request order trade tradeCorrection orderInfo dealerOnly", &CallUpdateSurveillance},
    Call{"GetClientCode1", "kind orderInfo order", &CallGetClientCode},

    Call{"AddSurvLimits", "limit", &CallOnLimit<[](Limit& l, Error& e) { return ::AddSurvLimits(&l, &e); }>},
    Call{"UpdateSurvLimits", "limit", &CallOnLimit<[](Limit& l, Error& e) { return ::UpdateSurvLimits(&l, &e); }>},
    Call{"RemoveSurvLimits", "limit", &CallOnLimit<[](Limit& l, Error& e) { return ::RemoveSurvLimits(l, &e); }>},
    Call{"GetSurveillancePositions", "limit", &CallGetLimit},
    Call{"GetSurvPositions", "entityCode limitMask token", &CallGetLiveLimit},
    Call{"RMSFundAllocation", "request", &CallFund},

    Call{"ProcessRPFInfo", "messageCode segment toStaging underlying contract count messageLength", &CallProcessRpf},
    Call{"InitializeMarginInfo", "list", &CallMarginInfo},
    Call{"InitializeAllAdditionalMarginInfo", "map", &CallAdditionalMargin},
    Call{"InitializeMCXMarginInfo", "records", &CallLoad<tagMcxMarginRecord, &::InitializeMCXMarginInfo>},
    Call{"InitializeNCDEXExposureMarginInfo", "records",
         &CallLoad<tagNcdexExposureMarginRecord, &::InitializeNCDEXExposureMarginInfo>},
    Call{"InitializeProductMasterInfo", "records",
         &CallLoad<tagProductTypeScripBasket, &::InitializeProductMasterInfo>},
    Call{"InitializeCompulsoryDeliverySeriesInfo", "records",
         &CallLoad<tagCompulsoryDeliverySeries, &::InitializeCompulsoryDeliverySeriesInfo>},
    Call{"InitializeTokenInfo", "records sellPriceBandPercent sellPriceTestOn buyPriceBandPercent buyPriceTestOn",
         &CallTokenInfo},
    Call{"AddUpdateProductMasterInfo", "record", &CallSetBasket},
    Call{"InitializeClientPreferencesInfo", "preferences", &CallInitializePreferences},
    Call{"AddUpdateClientPreferencesInfo", "preference", &CallAddPreference},
    Call{"GetClientPreferencesInfo", "scope code exchange", &CallGetPreferences},
    Call{"CheckAndUpdateSecurityInfo", "", &CallCheckSecurity},

    Call{"AddAndComputeMTM", "compute touchline", &CallTouchline},
    Call{"RecomputeMTM", "", &CallRecompute},
    Call{"RecomputeMTMOnline", "",
         [](Session&, const Arguments&, Json& out) { out["result"] = ::RecomputeMTMOnline(); }},
    Call{"SetLastBcastMBOOrMBPTouchline", "",
         [](Session&, const Arguments&, Json&) { ::SetLastBcastMBOOrMBPTouchline(nullptr); }},

    Call{"GetNetPositionInfoFromDll", "queryKind categoryCode groupCode accountCode token periodicity byToken product",
         &CallNetPositions},
    Call{"GetMarketExposure", "code periodicity", &CallMarketExposure},
    Call{"ClientPositionPresentFromDLL", "texts", &CallPositionPresent},
    Call{"GetAllSurveillancePositions", "want", &CallDump<&::GetAllSurveillancePositions>},
    Call{"CaptureAllSurveillancePositions", "want", &CallDump<&::CaptureAllSurveillancePositions>},
    Call{"DownloadSurvInfo", "code", &CallDownload},
    Call{"GetDPPositionInfoFromDll", "kind categoryCode isinCode", &CallGetHoldings},
    Call{"UpdateDPPositionInfo", "upload", &CallUpload},
};

ScriptError UnknownCall(const std::string& name) {
    std::vector<std::string_view> names;
    names.reserve(kCalls.size());
    for (const Call& call : kCalls) names.push_back(call.name);
    return ScriptError(fmt::format("unknown call \"{}\"{}", name, Suggestion(name, names)));
}

const Call& FindCall(const std::string& name) {
    const auto found = std::find_if(kCalls.begin(), kCalls.end(), [&](const Call& call) { return call.name == name; });
    if (found == kCalls.end()) throw UnknownCall(name);
    if (!found->run) throw ScriptError(fmt::format("call \"{}\" is not available yet", name));
    return *found;
}

void SetClock(Session& session, const Json& line) {
    const Arguments arguments(line, "now");
    using Limits = std::numeric_limits<std::int64_t>;
    session.SetClock(WholeNumber(arguments.Need("now"), "now", Limits::min(), Limits::max()));
}

}  // namespace

void Put(Json& answer, std::string_view name, Json value) {
    const bool isDefault = value.is_number() ? value == 0 : value == "" || (value.is_structured() && value.empty());
    if (!isDefault) answer[std::string(name)] = std::move(value);
}

Json RunCall(Session& session, const Json& line) {
    const auto name = line.find("call");
    if (name == line.end() || !name->is_string()) throw ScriptError("\"call\" must name an exported function");
    if (*name == "@clock") {
        SetClock(session, line);
        return nullptr;
    }
    const Call& call = FindCall(name->get<std::string>());
    Json answer{{"call", call.name}};
    call.run(session, Arguments(line, call.arguments), answer);
    if (auto texts = session.TakeNotifications(); !texts.empty()) answer["notifications"] = std::move(texts);
    return answer;
}

}  // namespace survhost
