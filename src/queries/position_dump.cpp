// Dumps of everything: the limit rows as they are stored, and every position.

#include <array>
#include <memory>
#include <string_view>

#include "platform/host_list.h"
#include "positions/exposure_row.h"
#include "queries/product_forms.h"
#include "service/manager.h"

namespace surv {
namespace {

/// The one mode in which the netted positions are dumped.
bool DumpsNettedPositions(const Settings& settings) {
    constexpr std::int16_t kCapturing = 1;
    return settings.positionMode == kCapturing;
}

/// Left behind by a call that was put back.
bool HoldsNothing(const CSurvPosition& position) { return !position.data.scripInfo && position.data.limitMask == 0; }

/// Products that equity rows name in optionType, in the order in which they are dumped.
struct LabelledFamily {
    PositionFamily family;
    std::string_view label;
};
constexpr std::array kLabelledFamilies{
    LabelledFamily{PositionFamily::kDelivery, "DD"},
    LabelledFamily{PositionFamily::kMarginPlusFirst, "MP"},
    LabelledFamily{PositionFamily::kMarginPlusSecond, "MD"},
};

void WriteLabel(tagContractDescriptor& contract, std::string_view label) {
    label.copy(static_cast<char*>(contract.optionType), label.size());
}

std::unique_ptr<BKExposureTag> RowOf(const tagSurvPositionData& data) {
    auto row = std::make_unique<BKExposureTag>();
    FillRowFromPosition(data, *row);
    return row;
}

void AppendLabelledRows(const CExposureDetails& exposures, const LabelledFamily& wanted, CPtrList& list) {
    for (const auto& position : exposures.positions) {
        if (WalkFamily(position.key) != wanted.family || HoldsNothing(*position.value)) continue;
        const tagSurvPositionData data = position.value->GetPositionData();
        const bool settlement = data.limitMask == 3 || data.limitMask == 0x11;
        if (settlement && data.scripInfo) WriteLabel(data.scripInfo->contract, wanted.label);
        auto row = RowOf(data);
        WriteLabel(row->contract, wanted.label);
        HandOver(list, std::move(row));
    }
}

void AppendTreeRows(const CSurveillanceCategory& category, CPtrList& list) {
    constexpr std::int16_t kEveryMask = -1;
    for (const Period period : kPeriods) {
        for (const auto& account : category.Book(period).accounts.accounts) {
            account.value->CollectRows(kEveryMask, kAllSecurities, list);
        }
    }
}

void AppendNettedRows(const CSurveillanceCategory& category, CPtrList& list) {
    for (const auto& position : category.Book(Period::kExpiry).exposures.positions) {
        if (!HoldsNothing(*position.value)) HandOver(list, RowOf(position.value->GetPositionData()));
    }
}

}  // namespace

void CSurveillanceManager::GetAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) const {
    const bool labelled = DumpsNettedPositions(context_.settings);
    for (const auto& category : categories) {
        if (limitRows) category.value->AppendLimitRows(*limitRows);
        if (!positionRows) continue;
        AppendTreeRows(*category.value, *positionRows);
        if (!labelled) continue;
        for (const LabelledFamily& wanted : kLabelledFamilies) {
            AppendLabelledRows(category.value->Book(Period::kExpiry).exposures, wanted, *positionRows);
        }
    }
}

void CSurveillanceManager::CaptureAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) const {
    const bool netted = DumpsNettedPositions(context_.settings);
    for (const auto& category : categories) {
        if (limitRows) category.value->AppendLimitRows(*limitRows);
        if (positionRows && netted) AppendNettedRows(*category.value, *positionRows);
    }
}

void CSurveillanceManager::DownloadSurvInfo(std::string_view code, CPtrList* limitRows) const {
    const CSurveillanceCategory* category = FindNamed(code);
    if (category && limitRows) category->AppendLimitRows(*limitRows);
}

}  // namespace surv
