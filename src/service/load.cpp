// The start of a day: the host's limit rows become categories.

#include <new>

#include "platform/format.h"
#include "platform/log_file.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr const char* kNoMemoryLine = "Insufficient memory (CSurveillanceManager::Initialize) \n";
constexpr const char* kAddNoMemory = "Not enough memory (CSurveillanceInfo::AddSurvLimits)";
constexpr const char* kPositionRowsLine =
    "Position rows are not loaded by this version (CSurveillanceManager::Initialize) \n";
constexpr const char* kHoldingsLine = "Holdings are not read by this version (CSurveillanceManager::Initialize) \n";

std::string LimitFailureLine(const char* errorText, const BKSurveillanceLimitDefTag& row) {
    const std::string code{FieldText(row.entityCode)};
    return Format("%s , %s, %d, %d, %ld ((AddSurvLimits-1)CSurveillanceManager::Initialize) \n", errorText,
                  code.c_str(), row.messageCode, row.limitMask, static_cast<long>(row.token));
}

bool HasRows(const CPtrList* list) { return list && !list->IsEmpty(); }

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

}  // namespace

std::int16_t CSurveillanceManager::Initialize(const LoadLists& lists) {
    Settings& settings = context_.settings;
    settings.survLogFileName = SurvLogFileName(context_.clock);
    SetDefaultRiskPreference();
    // Positions that would be missing from every figure are refused before anything is built.
    if (HasRows(lists.exposures)) {
        AppendLogLine(settings.survLogFileName, kPositionRowsLine);
        return kNotDone;
    }
    if (HasRows(lists.dpHoldings) || HasRows(lists.sarHoldings)) {
        AppendLogLine(settings.survLogFileName, kHoldingsLine);
    }
    if (lists.limits && LoadLimits(*lists.limits) != kDone) return kNotDone;
    RecomputeAllIM();
    return kDone;
}

std::int16_t CSurveillanceManager::LoadLimits(CPtrList& list) {
    if (context_.settings.HoldsClientPositions()) {
        for (CPtrList::Position at = list.GetHeadPosition(); at;) {
            auto* row = static_cast<BKSurveillanceLimitDefTag*>(list.GetNext(at));
            if (row && !adoptedRows_.contains(row) && LoadLimit(*row, RowOwner::kAdopted) != kDone) return kNotDone;
        }
        return kDone;
    }
    while (!list.IsEmpty()) {
        CPtrList::Position head = list.GetHeadPosition();
        auto* row = static_cast<BKSurveillanceLimitDefTag*>(list.GetNext(head));
        // A row that an earlier start has adopted lives on, whatever the mode is now.
        const bool adopted = row && adoptedRows_.contains(row);
        if (row && !adopted && LoadLimit(*row, RowOwner::kCopied) != kDone) return kNotDone;
        list.RemoveHead();
        if (!adopted) delete row;
    }
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
    try {
        if (!StoreLoadedRow(row, owner, *category)) {
            AppendLogLine(log, LimitFailureLine("", row));
            return kNotDone;
        }
        if (fresh) StoreCategory(code, std::move(fresh), row.entityLevel, row.subLevel);
    } catch (const std::bad_alloc&) {
        AppendLogLine(log, LimitFailureLine(kAddNoMemory, row));
        return kNotDone;
    }
    if (owner == RowOwner::kAdopted && row.subLevel == -1) row.subLevel = 0;
    return kDone;
}

/// False when the token is there already. The place of an adopted row is made before anything points at the row.
bool CSurveillanceManager::StoreLoadedRow(BKSurveillanceLimitDefTag& row, RowOwner owner,
                                          CSurveillanceCategory& category) {
    if (owner == RowOwner::kCopied) return category.LoadSurvLimit(std::make_unique<CSurvLimitEntry>(row)).Passed();
    auto& place = adoptedRows_[&row];
    try {
        if (category.LoadSurvLimit(std::make_unique<CSurvLimitEntry>(&row)).Passed()) {
            place.reset(&row);
            return true;
        }
    } catch (...) {
        adoptedRows_.erase(&row);
        throw;
    }
    adoptedRows_.erase(&row);
    return false;
}

}  // namespace surv
