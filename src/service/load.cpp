// The start of a day: the host's limit rows become categories.

#include "platform/format.h"
#include "platform/log_file.h"
#include "reference/preferences.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr const char* kNoMemoryLine = "Insufficient memory (CSurveillanceManager::Initialize) \n";
constexpr const char* kPositionRowsLine =
    "Position rows are not loaded by this version (CSurveillanceManager::Initialize) \n";

std::string LimitFailureLine(const BKSurveillanceLimitDefTag& row) {
    const std::string errorText;  // a row that is already there writes none
    const std::string code{FieldText(row.entityCode)};
    return Format("%s , %s, %d, %d, %ld ((AddSurvLimits-1)CSurveillanceManager::Initialize) \n", errorText.c_str(),
                  code.c_str(), row.messageKind, row.limitMask, static_cast<long>(row.token));
}

}  // namespace

std::int16_t CSurveillanceManager::Initialize(const LoadLists& lists) {
    Settings& settings = context_.settings;
    settings.survLogFileName = SurvLogFileName(context_.clock);
    SetDefaultRiskPreference();
    // Positions that would be missing from every figure are refused before anything is built.
    if (lists.exposures && !lists.exposures->IsEmpty()) {
        AppendLogLine(settings.survLogFileName, kPositionRowsLine);
        return kNotDone;
    }
    if (lists.limits && LoadLimits(*lists.limits) != kDone) return kNotDone;
    return kDone;
}

std::int16_t CSurveillanceManager::LoadLimits(CPtrList& list) {
    if (context_.settings.HoldsClientPositions()) {
        for (CPtrList::Position at = list.GetHeadPosition(); at;) {
            auto* row = static_cast<BKSurveillanceLimitDefTag*>(list.GetNext(at));
            if (!row || adoptedRows_.contains(row)) continue;
            if (LoadLimit(row) != kDone) return kNotDone;
        }
        return kDone;
    }
    while (!list.IsEmpty()) {
        CPtrList::Position head = list.GetHeadPosition();
        auto* row = static_cast<BKSurveillanceLimitDefTag*>(list.GetNext(head));
        if (row && LoadLimit(row) != kDone) return kNotDone;
        list.RemoveHead();
        delete row;
    }
    return kDone;
}

std::int16_t CSurveillanceManager::LoadLimit(BKSurveillanceLimitDefTag* row) try {
    const Settings& settings = context_.settings;
    if ((settings.positionMode >= 1 && settings.positionMode <= 3) || settings.orderBasedPosition == 1) {
        row->usedMtm = 0;
        row->usedMtmFull = 0;
        row->usedBookedPnl = 0;
    }
    const CodeText code = FieldText(row->entityCode);
    CSurveillanceCategory* category = FindCategory(code);
    std::unique_ptr<CSurveillanceCategory> fresh;
    if (!category) {
        fresh = std::make_unique<CSurveillanceCategory>(context_);
        category = fresh.get();
        LinkPreferences(*category, code);
    }
    TakeExposureMarginBit(*row, *category);

    const bool live = settings.HoldsClientPositions();
    auto entry = live ? std::make_unique<CSurvLimitEntry>(row) : std::make_unique<CSurvLimitEntry>(*row);
    if (!category->LoadSurvLimit(std::move(entry)).Passed()) {
        AppendLogLine(settings.survLogFileName, LimitFailureLine(*row));
        return kNotDone;
    }
    const bool isNew = fresh != nullptr;
    if (isNew) categories.Insert(code, std::move(fresh));
    if (live) {
        adoptedRows_.emplace(row, row);
        if (row->subLevel == -1) row->subLevel = 0;
        if (isNew) categoriesByPeriod.Add(row->entityLevel, row->subLevel, code, *category);
    }
    return kDone;
} catch (const std::bad_alloc&) {
    AppendLogLine(context_.settings.survLogFileName, kNoMemoryLine);
    return kNotDone;
}

}  // namespace surv
