#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "categories/category.h"
#include "orderpath/intake.h"

namespace surv {

class CSurveillanceManager;

enum class Level : std::uint8_t { kSubClient, kClient, kFamily, kDealer, kGroup, kRoot };
inline constexpr std::size_t kLevelCount = 6;

/// The categories of an order, by level; null where the order has no such level or its code is unknown.
class CHierarchy {
 public:
    [[nodiscard]] CSurveillanceCategory* At(Level level) const { return categories_[static_cast<std::size_t>(level)]; }
    void Set(Level level, CSurveillanceCategory* category) { categories_[static_cast<std::size_t>(level)] = category; }

 private:
    std::array<CSurveillanceCategory*, kLevelCount> categories_{};
};

/// Whose flag switches the test for limits of the segment on.
enum class LimitTest : std::uint8_t { kCheckFlag, kMarginFlag, kAlways };

struct HierarchyTest {
    Level level;
    const char* unknown;      ///< the code has no category
    const char* notRelevant;  ///< it has no limits for the segment
    LimitTest limitTest;
    int bit;
};

/// In the order of the tests.
inline constexpr std::array kHierarchyTests{
    HierarchyTest{Level::kGroup, "Limits not Set or Invalid Group Code", "Relevant Limits not Set for Group Code",
                  LimitTest::kCheckFlag, 1},
    HierarchyTest{Level::kDealer, "Limits not Set or Invalid Dealer Code", "Relevant Limits not Set for Dealer Code",
                  LimitTest::kMarginFlag, 1},
    HierarchyTest{Level::kFamily, "Limits not Set or Invalid Family Code", "Relevant Limits not Set for Family Code",
                  LimitTest::kMarginFlag, 2},
    HierarchyTest{Level::kClient, "Limits not Set or Invalid Client Code", "Relevant Limits not Set for Client Code",
                  LimitTest::kCheckFlag, 4},
    HierarchyTest{Level::kSubClient, "Limits not Set or Invalid Sub Client Code",
                  "Relevant Limits not Set for Sub Client Code", LimitTest::kCheckFlag, 5},
    HierarchyTest{Level::kRoot, "Limits not Set or Invalid dealer Code", "Relevant Limits not Set for Dealer Code",
                  LimitTest::kAlways, 0},
};

/// The first test that fails: its message and the code it shows. A null message: none failed.
struct HierarchyRefusal {
    const char* message = nullptr;
    CodeText code;
};

/// A family is named when its code holds anything but blanks.
[[nodiscard]] bool NamesFamily(const tagSurveillanceInfo& request);

/// A dealer of these types is its own client.
[[nodiscard]] constexpr bool IsOwnClient(int dealerType) { return dealerType == 4 || dealerType == 45; }

/// Code of a level as the request names it; the root's is "-".
[[nodiscard]] CodeText LevelCodeOf(Level level, const tagSurveillanceInfo& request);
/// Level type as the answer shows it: the family's is 8, the root's -1.
[[nodiscard]] std::int16_t LevelTypeOf(Level level, const tagSurveillanceInfo& request);

/// In the order in which categories are entered among those that a scrip concerns.
inline constexpr std::array kEntryOrder{Level::kDealer, Level::kGroup,  Level::kRoot,
                                        Level::kFamily, Level::kClient, Level::kSubClient};

/// The level's flags in the request; the root has none. The two bytes differ by one place.
[[nodiscard]] bool HasCheckFlag(Level level, const tagSurveillanceInfo& request);
[[nodiscard]] bool HasMarginFlag(Level level, const tagSurveillanceInfo& request);

/// Finds the categories of an order and tests, level after level, that each required one exists and has limits for
/// the order's segment.
[[nodiscard]] HierarchyRefusal FindHierarchy(const CSurveillanceManager& manager, const tagSurveillanceInfo& request,
                                             const tagOrderInfoForSurv& order, CHierarchy& hierarchy);

/// The same for an event, which needs no limits; dealerOnly: the dealer alone.
[[nodiscard]] HierarchyRefusal FindEventHierarchy(const CSurveillanceManager& manager,
                                                  const tagSurveillanceInfo& request, const tagOrderInfoForSurv& order,
                                                  bool dealerOnly, CHierarchy& hierarchy);

}  // namespace surv
