// Dumps of limit rows, as they are stored.

#include "service/manager.h"

namespace surv {

void CSurveillanceManager::AppendAllLimitRows(CPtrList& list) const {
    for (const auto& category : categories) category.value->AppendLimitRows(list);
}

void CSurveillanceManager::DownloadSurvInfo(std::string_view code, CPtrList* limitRows) const {
    const CSurveillanceCategory* category = FindCategory(code);
    if (category && limitRows) category->AppendLimitRows(*limitRows);
}

}  // namespace surv
