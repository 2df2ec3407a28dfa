// The start of a day: the host's limit rows become categories, and its other rows what they hold.

#include <new>

#include "mtm/broadcast_scrip.h"
#include "platform/format.h"
#include "platform/log_file.h"
#include "platform/numeric.h"
#include "positions/exposure_row.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr const char* kNoMemoryLine = "Insufficient memory (CSurveillanceManager::Initialize) \n";
constexpr const char* kAddNoMemory = "Not enough memory (CSurveillanceInfo::AddSurvLimits)";
constexpr const char* kAddExposures = "AddExposures";
constexpr const char* kAddMtfExposures = "AddMTFExposures";

std::string LimitFailureLine(const char* errorText, const BKSurveillanceLimitDefTag& row) {
    const std::string code{FieldText(row.entityCode)};
    return Format("%s , %s, %d, %d, %ld ((AddSurvLimits-1)CSurveillanceManager::Initialize) \n", errorText,
                  code.c_str(), row.messageCode, row.limitMask, static_cast<long>(row.token));
}

std::string ExposureFailureLine(const char* operation, const BKExposureTag& row) {
    const std::string level{FieldText(row.levelCode)};
    const std::string account{FieldText(row.accountCode)};
    return Format("Invalid Periodicity  %s, %s, %ld, %d ((%s)CSurveillanceManager::Initialize) \n", level.c_str(),
                  account.c_str(), static_cast<long>(row.token), row.limitMask, operation);
}

/// Figures that the closing of a load forms anew, whatever the row said.
void ResetFormedFigures(BKSurveillanceLimitDefTag& row, const Settings& settings) {
    const bool mode1 = settings.positionMode == 1;
    if (mode1 || settings.HoldsClientPositions()) {
        row.usedMtm = 0;
        row.usedMtmFull = 0;
        row.usedBookedPnl = 0;
    }
    if (mode1) {
        row.usedMarginOrder = 0;
        row.usedMarginTraded = 0;
        row.usedMarginMax = 0;
        row.usedExposureMargin = 0;
    }
}

/// The settlement masks of equity, on which a row may name a product.
bool IsCashSettlement(std::int16_t mask) { return mask == 3 || mask == 0x11; }

bool IsMtfRow(const BKExposureTag& row) {
    constexpr std::int16_t kMtfRow = 8;
    return IsCashSettlement(row.limitMask) && row.messageKind == kMtfRow;
}

/// Rows of deliveries and two-leg orders come out of queries and don't come back in.
bool IsProductLabelled(const BKExposureTag& row) {
    const std::string_view label = FieldText(row.contract.optionType);
    return IsCashSettlement(row.limitMask) && (label == "DD" || label == "MP" || label == "MD");
}

bool HasTraded(const BKExposureTag& row) { return row.tradedBuyQty != 0 || row.tradedSellQty != 0; }

/// Margin of these segments is taken from risk parameters.
bool HasRiskParameters(std::int16_t marketSegment) {
    switch (marketSegment) {
        case 2:
        case 3:
        case 5:
        case 6:
        case 8: return true;
        default: return false;
    }
}

/// The price of a row as the market tells it: NCDEX rows are scaled, and one without a multiplier counts as 1.0.
std::int32_t ClosePriceOf(const BKExposureTag& row, std::int16_t exchangeMask) {
    if (exchangeMask != kMaskNcdex || row.priceMultiplier == 0) return row.lastPrice;
    const double factor = static_cast<double>(static_cast<float>(row.priceMultiplier)) / 10000.0;
    return ClampToInt32(static_cast<double>(static_cast<float>(row.lastPrice)) / factor);
}

/// Hands every row of a host's list to load(row), in order, until one fails. Rows that are adopted stay in the list and
/// are passed over when a later start brings them again; others are freed as they are done.
template <class Row, class Adopted, class Load>
std::int16_t TakeRows(CPtrList& list, bool adopts, const Adopted& adoptedRows, Load load) {
    if (adopts) {
        for (CPtrList::Position at = list.GetHeadPosition(); at;) {
            auto* row = static_cast<Row*>(list.GetNext(at));
            if (row && !adoptedRows.contains(row) && load(*row) != kDone) return kNotDone;
        }
        return kDone;
    }
    while (!list.IsEmpty()) {
        CPtrList::Position head = list.GetHeadPosition();
        auto* row = static_cast<Row*>(list.GetNext(head));
        // A row that an earlier start has adopted lives on, whatever the mode is now.
        const bool adopted = row && adoptedRows.contains(row);
        if (row && !adopted && load(*row) != kDone) return kNotDone;
        list.RemoveHead();
        if (!adopted) delete row;
    }
    return kDone;
}

/// The place of a row among those adopted, made before anything of the row is entered. It goes again unless it is kept:
/// a row that a failed start has left is taken at the next one.
template <class Row>
class CAdoption {
 public:
    using Adopted = std::unordered_map<const void*, std::unique_ptr<Row>>;

    CAdoption(Adopted& adopted, Row& row, bool adopts) : adopted_(adopted), row_(row) {
        if (adopts) place_ = &adopted_[&row];
    }
    CAdoption(const CAdoption&) = delete;
    CAdoption& operator=(const CAdoption&) = delete;
    ~CAdoption() {
        if (place_ && !*place_) adopted_.erase(&row_);
    }
    /// The row is the library's from now on, if it is adopted at all.
    void Keep() {
        if (place_) place_->reset(&row_);
    }

 private:
    Adopted& adopted_;
    Row& row_;
    std::unique_ptr<Row>* place_ = nullptr;  ///< null: the row is not adopted
};

}  // namespace

std::int16_t CSurveillanceManager::Initialize(const LoadLists& lists) {
    Settings& settings = context_.settings;
    settings.survLogFileName = SurvLogFileName(context_.clock);
    SetDefaultRiskPreference();
    const bool adopts = settings.HoldsClientPositions();
    const RowOwner owner = adopts ? RowOwner::kAdopted : RowOwner::kCopied;
    const auto loadLimit = [&](BKSurveillanceLimitDefTag& row) { return LoadLimit(row, owner); };
    const auto loadExposure = [&](BKExposureTag& row) { return LoadExposure(row, owner); };
    if (lists.limits && TakeRows<BKSurveillanceLimitDefTag>(*lists.limits, adopts, adoptedRows_, loadLimit) != kDone) {
        return kNotDone;
    }
    // A start without its holdings is a start: no sale is covered and nothing counts as collateral.
    static_cast<void>(InitializeDPPositionInfo(lists.securities, lists.dpHoldings, lists.sarHoldings));
    if (lists.exposures &&
        TakeRows<BKExposureTag>(*lists.exposures, adopts, adoptedExposures_, loadExposure) != kDone) {
        return kNotDone;
    }
    RecomputeCashMargin(kMaskNseCash);
    RecomputeCashMargin(kMaskBseCash);
    RecomputeMCXIM();
    static_cast<void>(CollateralRecompute(0, "ALL", "ALL"));
    LayInOpeningMtm();
    RecomputeAllIM();
    return kDone;
}

std::int16_t CSurveillanceManager::LoadLimit(BKSurveillanceLimitDefTag& row, RowOwner owner) {
    const std::string& log = context_.settings.survLogFileName;
    const CodeText code = FieldText(row.entityCode);
    CSurveillanceCategory* category = FindCategory(code);
    std::unique_ptr<CSurveillanceCategory> fresh;
    if (!category) {
        fresh.reset(new (std::nothrow) CSurveillanceCategory(context_));
        category = fresh.get();
        if (!category) {
            AppendLogLine(log, kNoMemoryLine);
            return kNotDone;
        }
        LinkPreferences(*category, code);
    }
    ResetFormedFigures(row, context_.settings);
    TakeExposureMarginBit(row, *category);
    const bool adopts = owner == RowOwner::kAdopted;
    try {
        CAdoption adoption(adoptedRows_, row, adopts);
        auto entry = adopts ? std::make_unique<CSurvLimitEntry>(&row) : std::make_unique<CSurvLimitEntry>(row);
        if (!category->LoadSurvLimit(std::move(entry)).Passed()) {
            AppendLogLine(log, LimitFailureLine("", row));
            return kNotDone;
        }
        if (fresh) StoreCategory(code, std::move(fresh), row.entityLevel, row.subLevel);
        adoption.Keep();
    } catch (const std::bad_alloc&) {
        AppendLogLine(log, LimitFailureLine(kAddNoMemory, row));
        return kNotDone;
    }
    if (adopts && row.subLevel == -1) row.subLevel = 0;
    return kDone;
}

// ---------------------------------------------------------------------------------------------------------------
// Position rows

std::int16_t CSurveillanceManager::LoadExposure(BKExposureTag& row, RowOwner owner) {
    try {
        CAdoption adoption(adoptedExposures_, row, owner == RowOwner::kAdopted);
        if (EnterExposure(row) != kDone) return kNotDone;
        adoption.Keep();
        return kDone;
    } catch (const std::bad_alloc&) {
        AppendLogLine(context_.settings.survLogFileName, kNoMemoryLine);
    }
    return kNotDone;
}

/// What is registered for a row stands once however often it is registered, so it comes first: the positions, which
/// would count twice, are the last thing that may fail.
std::int16_t CSurveillanceManager::EnterExposure(BKExposureTag& row) {
    const std::string& log = context_.settings.survLogFileName;
    tagOrderInfoForSurv order;
    FillExposureValuesToOrderInfo(row, order);
    order.scripInfo = context_.stores.FindOrMakeScrip(row, order);
    const CodeText level = FieldText(row.levelCode);
    CSurveillanceCategory* category = FindCategory(level);
    if (!category) return kDone;
    if (IsProductLabelled(row)) {
        AppendLogLine(log, ExposureFailureLine(kAddExposures, row));
        return kNotDone;
    }
    if (row.limitMask != 0) {
        LinkHolder(row, level);
        RegisterRow(row, *category);
    }
    const bool mtf = IsMtfRow(row);
    const std::int16_t result = mtf ? category->AddMtfPositionRow(row, order) : category->AddPositionRow(row, order);
    if (result != kDone) AppendLogLine(log, ExposureFailureLine(mtf ? kAddMtfExposures : kAddExposures, row));
    return result;
}

void CSurveillanceManager::LinkHolder(const BKExposureTag& row, const CodeText& level) {
    if (!context_.settings.familyLevelEnabled) return;
    const std::string_view family = FieldText(row.familyCode);
    if (!Trimmed(family).empty()) context_.stores.clientFamilyMap.FindOrMake(level, family);
    AddClientRiskPreference(level);
}

/// The category is told of new risk parameters and prices of what it holds.
void CSurveillanceManager::RegisterRow(const BKExposureTag& row, CSurveillanceCategory& category) {
    const std::int16_t exchangeMask = SegmentToExchangeMask(row.marketSegment);
    if (exchangeMask <= 0) return;
    if (context_.settings.rpfMarginMode == 1 && HasRiskParameters(row.marketSegment)) {
        const std::int32_t underlyingToken = row.underlyingToken;
        const std::int32_t token = row.token;
        rpfCategoriesByToken.FindOrMake(SegmentTokenKey(exchangeMask, token), underlyingToken, token)
            .AddCategory(&category);
    }
    if (!HasTraded(row)) return;
    const std::int64_t key = PlainKey(exchangeMask, row.token);
    if (!broadcastHash.Find(key)) {
        auto scrip = std::make_unique<CBroadcastScrip>();
        scrip->exchange = exchangeMask;
        scrip->broadcastToken = row.token;
        scrip->closePrice = ClosePriceOf(row, exchangeMask);
        scrip->SetSecurity(exchangeMask, row.token, row.underlyingToken, row.contract, row.priceMultiplier);
        broadcastHash.Insert(key, std::move(scrip));
    }
    AddToBroadcastUpdateHash(key, &category);
}

}  // namespace surv
