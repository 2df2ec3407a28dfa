#include <gtest/gtest.h>

#include "positions/exposure_row.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

using Texts = std::vector<std::string>;
constexpr PositionKey kScrip{kMaskNseCash, PositionFamily::kPlain, 2885};

/// A category C1 and what its rows make of it.
class CRows {
 public:
    explicit CRows(std::int16_t positionMode = 0, std::int16_t level = 2,
                   std::int16_t subLevel = 0, const char* code = "C1")
        : scenario_({.positionMode = positionMode}) {
        const auto levels = [&](BKSurveillanceLimitDefTag& row) { row.entityLevel = level, row.subLevel = subLevel; };
        scenario_.Limit(code, 3, levels);
        category_ = scenario_.library.manager->FindCategory(code);
    }
    CSurveillanceCategory* operator->() const { return category_; }

    std::int16_t Add(BKExposureTag row) {
        tagOrderInfoForSurv order;
        FillExposureValuesToOrderInfo(row, order);
        order.scripInfo = scenario_.library.context.stores.FindOrMakeScrip(row, order);
        return category_->AddPositionRow(row, order);
    }
    /// Who holds the scrip by the index of clients: "group|account", each listed as well.
    Texts Holders() {
        Texts codes;
        const CClientBook::Side& side = category_->ClientBook().Of(Period::kExpiry);
        const auto* holders = side.positions.scrips.Find(kScrip);
        EXPECT_EQ(side.lists.Of(ProductGroup::kNormal).size(), holders ? holders->Size() : 0);
        if (!holders) return codes;
        for (const auto& holder : *holders) {
            const tagPositionOwnerInfo& owner = *holder.value->position.data.ownerInfo;
            codes.push_back(std::string{owner.groupCode.View()} + "|" + std::string{owner.accountCode.View()});
        }
        return codes;
    }

 private:
    CScenario scenario_;
    CSurveillanceCategory* category_;
};

TEST(AggregateAccounts, StandWhereTheLevelSumsOverTheHoldersAccounts) {
    const std::string own = "G1|LONGCLIENT123";
    const std::string dealer = "G1|LONGCL+";
    const std::string groupless = "|LONGCL+";
    const std::string group = "G1|LONGCLIENT+";
    const struct {
        const char *name, *code;
        std::int16_t level, subLevel, mode, client, sub, group;
        std::string holder;  // by whom the row is recorded; empty: by no one
    } cases[] = {
        {"root, mode 2", "-", 2, 0, 2, 1, -1, 0, dealer},
        {"root, mode 3", "-", 2, 0, 3, 1, -1, 0, ""},
        {"root, groupless client", "-", 2, 0, 2, 6, -1, 0, groupless},
        {"place 7, mode 3", "D1", 7, 0, 3, 1, -1, 0, dealer},
        {"place 7, mode 2", "D1", 7, 0, 2, 1, -1, 0, ""},
        {"the composite dealer of cash", "D1", 0x82, 7, 2, 1, -1, 0, dealer},
        {"the composite dealer off cash", "D1", 0x83, 7, 2, 1, -1, 0, own},
        {"place 6, sub client", "G1", 6, 0, 2, 2, 1, 6, group},
        {"dealer summing by group", "D1", 0, 6, 3, 1, -1, 6, group},
        {"mode 1 knows none", "D1", 0, 7, 1, 1, -1, 0, own},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CRows rows(c.mode, c.level, c.subLevel, c.code);
        BKExposureTag row = PositionRow(c.code, 3, 25, "LONGCLIENT123");
        row.clientLevelType = c.client, row.subClientLevelType = c.sub, row.groupLevelType = c.group;
        for (int i = 0; i < 2; ++i) rows.Add(row);
        const Texts expected = c.holder.empty() ? Texts{} : Texts{c.holder};
        EXPECT_EQ(rows.Holders(), expected);
        const bool aggregate = !c.holder.empty() && c.holder != own;
        const auto& accounts = rows->Book(Period::kExpiry).accounts.accounts;
        EXPECT_EQ(accounts.Size(), aggregate ? 2 : 1);
    }
}

}  // namespace
}  // namespace surv::test
