// The holdings of a start, of an upload during the day, and of a query, each at the categories it is about.

#include <new>

#include "platform/host_list.h"
#include "platform/log_file.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr std::string_view kEveryHolding = "ALL";

/// Does `work` at the categories of a kind and code.
template <class Work>
std::int16_t AtCategories(const CSurveillanceManager& manager, int kind, std::string_view code, Work work) {
    constexpr int kEvery = 0;
    constexpr int kOne = 1;
    if (kind == kEvery) {
        for (const auto& category : manager.categories) work(*category.value);
    } else if (kind == kOne) {
        CSurveillanceCategory* category = manager.FindNamed(code);
        if (!category) return kNotDone;
        work(*category);
    }
    return kDone;
}

/// Hands each row of a list with the category that it names to `take`.
template <class Row, class Take>
void ForEachKnown(const CSurveillanceManager& manager, const CPtrList* list, Take take) {
    ForEachRow<Row>(list, [&](const Row& row) {
        if (CSurveillanceCategory* category = manager.FindCategory(FieldText(row.categoryCode))) take(*category, row);
    });
}

void KeepIsin(ReferenceStores& stores, const tagSecurityIsinRow& row) {
    if (!IsCashExchange(row.exchange)) return;
    auto& isins = row.exchange == kMaskNseCash ? stores.isinByNseToken : stores.isinByBseToken;
    isins.FindOrMake(row.token, FieldText(row.isinCode));
}

}  // namespace

/// All that needs memory comes first, so that no row counts unless every row does.
std::int16_t CSurveillanceManager::InitializeDPPositionInfo(const CPtrList* securities, const CPtrList* holdings,
                                                            const CPtrList* sarHoldings) try {
    context_.settings.survLogFileName = SurvLogFileName(context_.clock);
    ForEachRow<tagSecurityIsinRow>(securities,
                                   [this](const tagSecurityIsinRow& row) { KeepIsin(context_.stores, row); });
    const auto reserve = [](CSurveillanceCategory& category, const auto& row) {
        category.ReserveHolding(FieldText(row.isinCode));
    };
    ForEachKnown<tagDPHolding>(*this, holdings, reserve);
    ForEachKnown<tagSarRow>(*this, sarHoldings, reserve);

    ForEachKnown<tagDPHolding>(
        *this, holdings, [](CSurveillanceCategory& category, const tagDPHolding& row) { category.AddDPInfo(row); });
    ForEachKnown<tagSarRow>(*this, sarHoldings,
                            [](CSurveillanceCategory& category, const tagSarRow& row) { category.AddSARInfo(row); });
    return kDone;
} catch (const std::bad_alloc&) {
    context_.window.Notify(kNotEnoughMemory);
    return kNotDone;
}

std::int16_t CSurveillanceManager::UpdateDPPositionInfo(const tagDPUpload& upload) {
    context_.settings.survLogFileName = SurvLogFileName(context_.clock);
    CSurveillanceCategory* category = FindCategory(FieldText(upload.categoryCode));
    if (!category) return kDone;
    category->UpdateDPInfo(upload);
    category->RecomputeCollateral(kEveryHolding);
    return kDone;
}

std::int16_t CSurveillanceManager::GetDPPositionInfoFromDll(int kind, std::string_view categoryCode,
                                                            std::string_view isinCode, CPtrList* result) const {
    return AtCategories(*this, kind, categoryCode, [&](const CSurveillanceCategory& category) {
        if (result) category.GetDPInfo(isinCode, *result);
    });
}

std::int16_t CSurveillanceManager::CollateralRecompute(int kind, std::string_view categoryCode,
                                                       std::string_view isinCode) {
    return AtCategories(*this, kind, categoryCode,
                        [&](CSurveillanceCategory& category) { category.RecomputeCollateral(isinCode); });
}

}  // namespace surv
