#pragma once

#include "categories/category.h"

namespace surv {

/// Ends the walk over a period's masks once every store of that period has been met.
class CEarlyStop {
 public:
    CEarlyStop(const CSurveillanceCategory& category, Period period)
        : stores_(static_cast<int>(category.limitStores.Size())),
          otherPeriod_(category.Book(period == Period::kDaily ? Period::kExpiry : Period::kDaily).rowCount) {}

    void Matched() { ++matched_; }
    [[nodiscard]] bool AllMet() const { return otherPeriod_ < stores_ && stores_ - otherPeriod_ <= matched_; }

 private:
    int stores_;
    int otherPeriod_;
    int matched_ = 0;
};

}  // namespace surv
