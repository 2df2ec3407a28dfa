#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/hash_map.h"
#include "positions/accounts.h"

namespace surv {

/// The running positions of a category over all scrips of one limit mask. Each product group has its own, so that the
/// delivery total that is shown under mask + 4 never meets the plain total of that mask.
/// totalPositions (normal and delivery), marginPlusTotals, mtfTotals.
class CMaskTotals {
 public:
    /// mask: a single-segment limit mask, also for delivery. Null until an order or a row has reached it.
    [[nodiscard]] CSurvPosition* Find(ProductGroup group, std::int16_t mask) const { return MapOf(group).Find(mask); }

    /// A row of normal products or of MTF.
    void AddRow(ProductGroup group, std::int16_t mask, const tagSurvPositionData& row, const TreeContext& context) {
        CSurvPosition& total = MapOf(group).FindOrMake(mask);
        context.Save(total.data);
        total.MergePositionData(row);
    }
    void ApplyOrder(std::int16_t mask, const tagOrderInfoForSurv& order, const TreeContext& context) {
        CSurvPosition& total = MapOf(ProductGroupOf(order.productType)).FindOrMake(mask);
        context.Save(total.data);
        total.ApplyChange(order);
    }
    /// Calls visit(group, mask, position) for each.
    template <class Visit>
    void ForEach(Visit visit) const {
        for (std::size_t group = 0; group < maps_.size(); ++group) {
            for (const auto& total : maps_[group]) visit(static_cast<ProductGroup>(group), total.key, *total.value);
        }
    }

 private:
    using Totals = HashMap<std::int16_t, CSurvPosition>;
    [[nodiscard]] Totals& MapOf(ProductGroup group) { return maps_[static_cast<std::size_t>(group)]; }
    [[nodiscard]] const Totals& MapOf(ProductGroup group) const { return maps_[static_cast<std::size_t>(group)]; }

    std::array<Totals, kProductGroupCount> maps_{Totals{19}, Totals{19}, Totals{19}, Totals{19}};
};

}  // namespace surv
