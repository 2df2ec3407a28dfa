#pragma once

// Indexes from a level to the categories of that level. They point; every category is owned by the manager's
// directory alone.

#include <cstdint>

#include "categories/category.h"
#include "platform/hash_map.h"
#include "platform/hash_set.h"

namespace surv {

/// entityLevel + 10 * subLevel, a subLevel of -1 counting as 0.
[[nodiscard]] constexpr std::int16_t PeriodGroupKey(std::int16_t entityLevel, std::int16_t subLevel) {
    const int sub = subLevel == -1 ? 0 : subLevel;
    return static_cast<std::int16_t>(entityLevel + sub * 10);
}

/// Entity code to category.
using CategoryGroup = HashMap<CodeText, CSurveillanceCategory*>;

/// categoriesByPeriod: the categories of each level, filed once, under the levels of their first row.
class CCategoriesByPeriod {
 public:
    /// A code that the group holds already stays.
    void Add(std::int16_t entityLevel, std::int16_t subLevel, const CodeText& code, CSurveillanceCategory& category) {
        constexpr std::uint32_t kBlock = 10;
        CategoryGroup& group = groups_.FindOrMake(PeriodGroupKey(entityLevel, subLevel), kBlock);
        group.FindOrMake(code, &category);
    }
    /// Null when no category has the levels.
    [[nodiscard]] const CategoryGroup* Find(std::int16_t key) const { return groups_.Find(key); }
    void Clear() { groups_.Clear(); }

 private:
    HashMap<std::int16_t, CategoryGroup> groups_{13};
};

/// The categories that a derivative contract reaches: all through which an order or a row in it has come.
class CTokenCategories {
 public:
    CTokenCategories() = default;
    CTokenCategories(std::int32_t ofUnderlying, std::int32_t ofContract)
        : underlyingToken(ofUnderlying), token(ofContract) {}

    std::int32_t underlyingToken = 0;
    std::int32_t token = -1;
    HashSet<CSurveillanceCategory*> categories;

    /// A category stands once; null is ignored.
    void AddCategory(CSurveillanceCategory* category) {
        if (category) categories.Insert(category);
    }
};

}  // namespace surv
