#include "house.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "surveillance/codes.h"

namespace fuzz {
namespace {

// Bits of StartOptions::flags.
constexpr std::uint8_t kRiskMargin = 1;
constexpr std::uint8_t kFamilies = 2;
constexpr std::uint8_t kOrderBased = 4;
constexpr std::uint8_t kLimitDetails = 8;
constexpr std::uint8_t kLotWeight = 16;

constexpr std::int64_t kNow = 1'763'695'800;

/// A fault that no sanitizer sees.
void Demand(bool holds, int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "house.cpp:%d: does not hold\n", line);
    std::abort();
}

template <std::size_t Width>
void SetText(char (&field)[Width], std::string_view text) {
    std::memcpy(field, text.data(), std::min(text.size(), Width - 1));
}

StartOptions TakeOptions(CInput& input) {
    StartOptions options;
    options.positionMode = static_cast<std::int16_t>(input.Byte() % 4);
    options.mtmMode = static_cast<std::int16_t>(input.Byte() % 8);
    options.flags = input.Byte();
    return options;
}

bool LiveRows(const StartOptions& options) { return options.positionMode >= 2; }
bool AdoptsRows(const StartOptions& options) { return LiveRows(options) || (options.flags & kOrderBased) != 0; }

BKSurveillanceLimitDefTag LimitRow(std::string_view entity, std::int16_t mask, std::int32_t token) {
    return UnlimitedRow(entity, token, mask);
}

/// The contracts that the house has risk parameters of.
struct Contract {
    std::int32_t token;
    std::int32_t strikePrice;
    const char* optionType;
    float loss;  ///< rupees, in the third scenario
};
constexpr std::array kContracts{Contract{61, -1, "", 955}, Contract{62, 2'400'000, "CE", 400},
                                Contract{63, 2'400'000, "PE", -300}, Contract{64, -1, "", 970}};
constexpr std::int32_t kUnderlying = 1;

template <class Record>
void SendRisk(std::int16_t code, const Record& record) {
    std::array<char, sizeof(tagRPFHeader) + sizeof record> message{};
    tagRPFHeader head{};
    head.messageCode = code;
    head.messageLength = static_cast<std::int16_t>(message.size());
    head.segment = surv::kMaskNseDerivatives;
    std::memcpy(message.data(), &head, sizeof head);
    std::memcpy(message.data() + sizeof head, &record, sizeof record);
    ProcessRPFInfo(message.data(), static_cast<std::int32_t>(message.size()), 0);
}

void LoadRiskParameters() {
    tagRPFUnderlyingRecord underlying{};
    underlying.underlyingToken = kUnderlying;
    underlying.calendarSpreadCharge = 425;
    underlying.shortOptionMinimumCharge = 0.5F;
    SendRisk(28006, underlying);
    for (const Contract& contract : kContracts) {
        tagRPFContractRecord record{};
        SetText(record.contract.symbol, "NIFTY");
        SetText(record.contract.optionType, contract.optionType);
        record.contract.expiryDate = 1'467'244'800 + contract.token;
        record.contract.strikePrice = contract.strikePrice;
        record.token = contract.token;
        record.underlyingToken = kUnderlying;
        record.contractPrice = 2'405'180;
        record.riskArray[2] = contract.loss;
        record.riskArray[3] = -contract.loss;
        record.compositeDelta = 1;
        SendRisk(28009, record);
    }
}

constexpr const char* kIsin = "INE000000001";
constexpr std::int32_t kScrips[] = {2885, 2886};  ///< of both cash exchanges; the second has no product master

/// Everybody may trade every product, at margins that count; one scrip has a master with wide bands.
void LoadReferenceData() {
    tagProductTypeScripBasket basket{};
    basket.token = kScrips[0];
    basket.productFlags = 15;
    basket.firstLegBand = basket.secondLegBand = basket.dailyBand = 9000;
    basket.basePrice = 50'000;
    CPtrList baskets;
    baskets.AddTail(&basket);
    InitializeProductMasterInfo(&baskets);

    std::array<tagClientRiskPreferenceInfoForSurv, 4> preferences{};
    CPtrList list;
    constexpr std::int32_t kExchanges[] = {1, 2, 8, -1};
    for (std::size_t i = 0; i < preferences.size(); ++i) {
        SetText(preferences[i].preferenceCode, "*****");
        preferences[i].exchange = kExchanges[i];
        preferences[i].token = surv::kAllSecurities;
        preferences[i].allowedProducts = 15;
        preferences[i].prefExtraMarginRate = 50'000;
        preferences[i].marginAddOnFactor = 1'000'000;
        list.AddTail(&preferences[i]);
    }
    InitializeClientPreferencesInfo(&list, nullptr);
}

/// Rows that a start has failed over: which of them the library keeps, a host can't tell. They stay reachable.
void LeaveBehind(CPtrList& list) {
    static auto& rows = *new std::vector<void*>;
    while (!list.IsEmpty()) rows.push_back(list.RemoveHead());
}

template <class Row>
void TakeRows(CInput& input, CPtrList& list) {
    constexpr int kMost = 8;
    for (int left = input.Byte() % kMost; left > 0; --left) list.AddTail(new Row(input.Take<Row>()));
}

std::int64_t Clock(void* /*context*/) { return kNow; }

void Listen(void* /*context*/, unsigned message, unsigned wParam, const char* text) {
    Demand(message == 1131 && wParam == 5 && text && std::strlen(text) < 4096);
}

/// Once a process. The library writes its logs into the folder that it runs in: here it finds one that takes no file.
void OpenHost() {
    static const bool opened = [] {
        SetHostWindow(&Listen, nullptr);
        SetHostClock(&Clock, nullptr);
        return ::chdir("/proc/self") == 0;
    }();
    Demand(opened);
}

/// A list with one record, for the calls that load lists.
template <class Record, class Load>
void LoadOne(CInput& input, Load load) {
    auto record = std::make_unique<Record>(input.Take<Record>());
    CPtrList list;
    list.AddTail(record.get());
    load(&list);
}

bool IsKnownStatus(short status) {
    using namespace surv::status;
    for (const short known : {short{0}, kPass, kNoLimits, kRefused, kNoMarket, kNoRiskParameters}) {
        if (status == known) return true;
    }
    return false;
}

}  // namespace

struct CHouse::Lists {
    CPtrList limits;
    CPtrList positions;
    CPtrList securities;
    CPtrList holdings;
    CPtrList receipts;

    ~Lists() {
        FreeRows<tagSecurityIsinRow>(securities);
        FreeRows<tagDPHolding>(holdings);
        FreeRows<tagSarRow>(receipts);
    }
};

CHouse::CHouse(CInput& input) : options_(TakeOptions(input)) {
    constexpr std::int16_t kMasks[] = {3, 17, 13, 96, 385, 511};
    OpenHost();
    Lists lists;
    for (const char* entity : {"-", "G1", "D1", "F1", "C1", "C2", "S1"}) {
        for (const std::int16_t mask : kMasks) {
            auto row = LimitRow(entity, mask, surv::kAllSecurities);
            row.baseFund = row.definedFund = 1e9;
            row.marginLimit = 1e9;
            row.netExposureLimit = 1e11;
            row.maxSingleOrderQty = 1'000'000'000;
            lists.limits.AddTail(new auto(row));
        }
    }
    auto scrip = LimitRow("C1", 3, kScrips[0]);
    scrip.netQuantityLimit = 1000;
    lists.limits.AddTail(new auto(scrip));
    for (const std::int32_t token : kScrips) {
        for (const std::int16_t exchange : {surv::kMaskNseCash, surv::kMaskBseCash}) {
            tagSecurityIsinRow security{};
            security.token = token;
            security.exchange = exchange;
            SetText(security.isinCode, kIsin);
            lists.securities.AddTail(new auto(security));
        }
    }
    tagDPHolding holding{};
    SetText(holding.categoryCode, "C1");
    SetText(holding.isinCode, kIsin);
    holding.holdingQty = 1000;
    holding.collateralPrice = 100;
    lists.holdings.AddTail(new auto(holding));
    LoadReferenceData();
    Start(lists);
    Demand(started_);
    LoadRiskParameters();
}

CHouse::~CHouse() { CleanUp(); }

void CHouse::Play(CInput& input, std::string_view kinds) {
    constexpr int kMostCalls = 16;
    for (int call = 0; call < kMostCalls && !input.Empty(); ++call) {
        const std::uint8_t byte = input.Byte();
        const char kind = static_cast<char>(byte);
        Call(kinds.find(kind) != std::string_view::npos ? kind : kinds[byte % kinds.size()], input);
    }
}

void CHouse::Call(char kind, CInput& input) {
    switch (kind) {
        case 'S': StartFrom(input); break;
        case 'c':
        case 'p':
        case 'u':
        case 'd': Order(kind, input); break;
        case 't':
        case 'm': {
            CPtrList changed;
            CPtrList unused;
            if (kind == 'm') {
                RecomputeMTM(&changed, &unused);
            } else {
                auto touchline = std::make_unique<tagBcastMBOOrMBPTouchline>(input.Take<tagBcastMBOOrMBPTouchline>());
                AddAndComputeMTM(1, touchline.get(), &changed, &unused);
            }
            Drop(changed);
            break;
        }
        case 'r': RiskMessage(input, false); break;
        case 's': RiskMessage(input, true); break;
        case 'A':
        case 'U':
        case 'R': SetLimit(kind, input); break;
        case 'F': {
            auto request = std::make_unique<tagRMSFundAllocationRequest>(input.Take<tagRMSFundAllocationRequest>());
            auto row = std::make_unique<BKSurveillanceLimitDefTag>();
            RMSFundAllocation(request.get(), row.get());
            break;
        }
        case 'D': {
            auto upload = std::make_unique<tagDPUpload>(input.Take<tagDPUpload>());
            UpdateDPPositionInfo(upload.get());
            break;
        }
        default: LoadReference(kind, input); break;
    }
}

void CHouse::LoadReference(char kind, CInput& input) {
    switch (kind) {
        case 'P': {
            using Preference = tagClientRiskPreferenceInfoForSurv;
            auto preference = std::make_unique<Preference>(input.Take<Preference>());
            AddUpdateClientPreferencesInfo(preference.get());
            break;
        }
        case 'I':
            LoadOne<tagClientRiskPreferenceInfoForSurv>(
                input, [](CPtrList* list) { InitializeClientPreferencesInfo(list, nullptr); });
            break;
        case 'M': LoadOne<tagProductTypeScripBasket>(input, &InitializeProductMasterInfo); break;
        case 'Y': LoadOne<tagCompulsoryDeliverySeries>(input, &InitializeCompulsoryDeliverySeriesInfo); break;
        case 'K': {
            const auto sell = input.Take<std::int16_t>();
            const auto buy = input.Take<std::int16_t>();
            LoadOne<tagTokenPriceRecord>(input, [&](CPtrList* list) { InitializeTokenInfo(list, sell, 1, buy, 1); });
            break;
        }
        case 'V': LoadOne<tagMarginInfo>(input, &InitializeMarginInfo); break;
        case 'X': LoadOne<tagMcxMarginRecord>(input, &InitializeMCXMarginInfo); break;
        case 'N': LoadOne<tagNcdexExposureMarginRecord>(input, &InitializeNCDEXExposureMarginInfo); break;
        case 'E': {
            auto record = std::make_unique<tagAdditionalMarginInfo>(input.Take<tagAdditionalMarginInfo>());
            CMapStringToOb map;
            PutRecord(map, "", *record);
            InitializeAllAdditionalMarginInfo(&map);
            break;
        }
        default: std::abort();
    }
}

void CHouse::Start(Lists& lists) {
    SetOrderBasedPosition((options_.flags & kOrderBased) != 0 ? 1 : 0);
    InitializeMCXLOTWeightOnOrOff((options_.flags & kLotWeight) != 0 ? 1 : 0);
    MTMTimeIntervalAndTickCount(0, 1);
    const short result = InitializeSurvManager(
        &lists.limits, &lists.positions, (options_.flags & kRiskMargin) != 0 ? 1 : 0,
        (options_.flags & kLimitDetails) != 0 ? 1 : 0, options_.mtmMode, 0, options_.positionMode,
        (options_.flags & kFamilies) != 0 ? 0x10 : 0, 0, &lists.securities, &lists.holdings, &lists.receipts);
    started_ = result == 0;
    if (started_ || !AdoptsRows(options_)) {
        Demand(!started_ || AdoptsRows(options_) || (lists.limits.IsEmpty() && lists.positions.IsEmpty()));
        if (AdoptsRows(options_)) {
            ForgetRows(lists.limits);
            ForgetRows(lists.positions);
        } else {
            FreeRows<BKSurveillanceLimitDefTag>(lists.limits);
            FreeRows<BKExposureTag>(lists.positions);
        }
    } else {
        LeaveBehind(lists.limits);
        LeaveBehind(lists.positions);
    }
}

/// What a failed start has loaded goes with a clean-up, which wants a start.
void CHouse::CleanUp() {
    if (!started_) {
        Lists none;
        Start(none);
        Demand(started_);
    }
    CleanupSurvManager();
    started_ = false;
}

/// Rows of a failed start stay with the next one, so the next call 'S' cleans up first.
void CHouse::StartFrom(CInput& input) {
    CleanUp();
    options_ = TakeOptions(input);
    Lists lists;
    TakeRows<BKSurveillanceLimitDefTag>(input, lists.limits);
    TakeRows<BKExposureTag>(input, lists.positions);
    TakeRows<tagSecurityIsinRow>(input, lists.securities);
    TakeRows<tagDPHolding>(input, lists.holdings);
    TakeRows<tagSarRow>(input, lists.receipts);
    Start(lists);
}

/// The request lies in a buffer of exactly its size. A refused check, and every probe, must leave the rows alone.
void CHouse::Order(char kind, CInput& input) {
    const auto head = input.Take<tagSurveillanceInfo>();
    std::size_t size = sizeof head;
    if (const auto* code = surv::FindMessageCode(head.messageCode)) {
        switch (code->primary) {
            case surv::PrimaryRecord::kOrderRequest: size += sizeof(tagOrderRequest); break;
            case surv::PrimaryRecord::kTradeInfo: size += sizeof(tagTradeInfo); break;
            case surv::PrimaryRecord::kTradeCorrection: size += sizeof(tagTradeCorrectionRequest); break;
            case surv::PrimaryRecord::kNone: break;
        }
        if ((head.levelMarginFlags & 0x80) != 0) size += sizeof(tagOrderInfo);
        if ((head.requestFlags & 1) != 0) size += sizeof(tagTradeInfo);
    }
    const std::unique_ptr<char[]> bytes(new char[size]);
    std::memcpy(bytes.get(), &head, sizeof head);
    input.TakeBytes(bytes.get() + sizeof head, size - sizeof head);
    auto* request = reinterpret_cast<tagSurveillanceInfo*>(bytes.get());

    CPtrList limitRows;
    CPtrList breachRows;
    if (kind == 'u' || kind == 'd') {
        tagAdminErrMessage error{};
        UpdateSurveillance(request, &error, &limitRows, &breachRows, kind == 'd' ? 1 : 0);
        Demand(::strnlen(error.errorText, sizeof error.errorText) < sizeof error.errorText);
        Drop(limitRows);
        return;
    }
    const bool probe = kind == 'p';
    const std::string before = Rows();
    CPtrList rollbackRows;
    tagOrdErrMessage error{};
    short status = 0;
    const short result =
        CheckSurveillance(request, &error, &status, &limitRows, &breachRows, &rollbackRows, probe ? 1 : 0);
    if (probe) {
        FreeRows<tagBreachRow>(limitRows);
    } else {
        Drop(limitRows);
    }
    FreeRows<tagBreachRow>(rollbackRows);
    Demand(::strnlen(error.errorText, sizeof error.errorText) < sizeof error.errorText);
    Demand(IsKnownStatus(status) && breachRows.IsEmpty());
    // A level that was only updated keeps the order after a refusal. The call itself may have cleared flags.
    constexpr std::uint8_t kEveryLevel = 0b0011'1110;
    const bool allChecked = (request->levelCheckFlags & kEveryLevel) == kEveryLevel;
    const bool refused = result != 0 || status != surv::status::kPass;
    if (probe || (refused && allChecked)) Demand(Rows() == before);
}

/// The length that the call is told is that of the buffer; the head may claim another.
void CHouse::RiskMessage(CInput& input, bool staged) {
    constexpr std::size_t kLongest = 256;
    const std::size_t size = input.Byte() % kLongest;
    const std::unique_ptr<char[]> message(new char[size]);
    input.TakeBytes(message.get(), size);
    ProcessRPFInfo(message.get(), static_cast<std::int32_t>(size), staged ? 1 : 0);
}

void CHouse::SetLimit(char kind, CInput& input) {
    auto limit = std::make_unique<BKSurveillanceLimitDefTag>(input.Take<BKSurveillanceLimitDefTag>());
    tagAdminErrMessage error{};
    switch (kind) {
        case 'A': AddSurvLimits(limit.get(), &error); break;
        case 'U': UpdateSurvLimits(limit.get(), &error); break;
        default: RemoveSurvLimits(*limit, &error); break;
    }
    Demand(::strnlen(error.errorText, sizeof error.errorText) < sizeof error.errorText);
    BKSurveillanceLimitDefTag* live = nullptr;
    std::array<char, sizeof limit->entityCode + 1> code{};
    std::memcpy(code.data(), limit->entityCode, sizeof limit->entityCode);
    GetSurvPositions(code.data(), limit->limitMask, limit->token, live);
}

void CHouse::Drop(CPtrList& limitRows) const {
    if (LiveRows(options_)) {
        ForgetRows(limitRows);
    } else {
        FreeRows<BKSurveillanceLimitDefTag>(limitRows);
    }
}

std::string CHouse::Rows() const {
    CPtrList list;
    GetAllSurveillancePositions(&list, nullptr);
    std::string rows;
    for (CPtrList::Position at = list.GetHeadPosition(); at;) {
        rows.append(static_cast<const char*>(list.GetNext(at)), sizeof(BKSurveillanceLimitDefTag));
    }
    Drop(list);
    return rows;
}

}  // namespace fuzz
