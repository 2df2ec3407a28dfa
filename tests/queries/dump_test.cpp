#include <gtest/gtest.h>

#include "support/scenario.h"

namespace surv::test {
namespace {

/// "level account token quantity label", in the order of the list; the rows are freed.
std::vector<std::string> Told(CPtrList& rows) {
    std::vector<std::string> told;
    for (CPtrList::Position at = rows.GetHeadPosition(); at;) {
        const auto& row = *static_cast<const BKExposureTag*>(rows.GetNext(at));
        std::string text;
        for (const std::string_view part : {FieldText(row.levelCode), FieldText(row.accountCode)}) {
            text.append(part).append(" ");
        }
        text.append(std::to_string(row.token)).append(" ").append(std::to_string(row.tradedBuyQty));
        const std::string_view label = FieldText(row.contract.optionType);
        if (!label.empty()) text.append(" ").append(label);
        told.push_back(text);
    }
    FreeRows<BKExposureTag>(rows);
    return told;
}

/// Two clients with a limit row each; C1 has a share of today and of before, C2 a share and what it has closed again.
class CDumped {
 public:
    explicit CDumped(std::int16_t positionMode) {
        for (const char* code : {"C1", "C2"}) {
            limits_.AddTail(new BKSurveillanceLimitDefTag(EmptyLimit(code, 3)));
        }
        Position("C1", 2, 30, 2885);
        Position("C1", 3, 100, 2885);
        Position("C2", 3, 10, 1594);
        Position("C2", 3, 0, 1660);
        scenario_ = std::make_unique<CScenario>(Library::StartSettings{.positionMode = positionMode},
                                                LoadLists{.limits = &limits_, .exposures = &positions_});
    }
    CSurveillanceManager* operator->() const { return scenario_->library.manager.get(); }

    /// A trade of C1 in a product, in its netted positions; `mask` as rows of the product have it.
    void Trade(PositionFamily family, std::int32_t token, std::int32_t quantity, std::int16_t mask) {
        CSurveillanceCategory& category = *scenario_->library.manager->FindCategory("C1");
        tagOrderInfoForSurv order;
        order.marketSegment = 1, order.token = token, order.orderEventKind = event::kTrade, order.buySell = kBuy;
        order.quantity = quantity, order.price = 100, order.levelCode = "C1", order.accountCode = "C1";
        order.scripInfo = scenario_->library.context.stores.FindOrMakeScrip(order);
        order.ownerInfo = category.OwnerOf(order);
        CUndoLog& undo = scenario_->library.context.undo;
        const PositionKey key{kMaskNseCash, family, token};
        category.Book(Period::kExpiry).exposures.CommitAt(key, order, undo).data.limitMask = mask;
        undo.Clear();
    }
    /// As a call leaves it that made the position and was put back.
    void Blank(PositionFamily family, std::int32_t token) {
        CSurveillanceCategory& category = *scenario_->library.manager->FindCategory("C1");
        category.Book(Period::kExpiry).exposures.Find({kMaskNseCash, family, token})->data = {};
    }
    std::string LabelOf(std::int32_t token) const {
        const auto* scrip = scenario_->library.context.stores.FindScrip(kMaskNseCash, token);
        return std::string{FieldText(scrip->contract.optionType)};
    }
    std::vector<std::string> All() const { return Positions(&CSurveillanceManager::GetAllSurveillancePositions); }
    std::vector<std::string> Captured() const {
        return Positions(&CSurveillanceManager::CaptureAllSurveillancePositions);
    }

 private:
    using Dump = void (CSurveillanceManager::*)(CPtrList*, CPtrList*) const;

    void Position(const char* code, std::int16_t mask, std::int32_t traded, std::int32_t token) {
        positions_.AddTail(new BKExposureTag(PositionRow(code, mask, traded, code, token)));
    }
    std::vector<std::string> Positions(Dump dump) const {
        CPtrList both, limits, positions;
        (scenario_->library.manager.get()->*dump)(&limits, &both);
        (scenario_->library.manager.get()->*dump)(nullptr, &positions);
        (scenario_->library.manager.get()->*dump)(nullptr, nullptr);
        EXPECT_EQ(limits.GetCount(), 2);
        const bool live = scenario_->library.context.settings.RowsAreLive();
        EXPECT_EQ(limits.GetHeadPosition()->element == &scenario_->Row("C1", 3), live);
        live ? ForgetRows(limits) : FreeRows<BKSurveillanceLimitDefTag>(limits);
        std::vector<std::string> told = Told(positions);
        EXPECT_EQ(Told(both), told) << "each half comes alone, too";
        return told;
    }

    CPtrList limits_, positions_;
    std::unique_ptr<CScenario> scenario_;
};

using Texts = std::vector<std::string>;

TEST(Dump, HoldsEveryContractOfEveryAccount) {
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{1}, std::int16_t{2}, std::int16_t{3}}) {
        SCOPED_TRACE(mode);
        const CDumped house(mode);
        EXPECT_EQ(house.All(), (Texts{"C1 C1 2885 30", "C1 C1 2885 100", "C2 C2 1594 10", "C2 C2 1660 0"}));
        const Texts netted{"C1 C1 2885 100", "C2 C2 1594 10", "C2 C2 1660 0"};
        EXPECT_EQ(house.Captured(), mode == 1 ? netted : Texts{}) << "of the expiry period, in one mode alone";
    }
}

TEST(Dump, NamesTheProductsOfEquityPositions) {
    CDumped house(1);
    house.Trade(PositionFamily::kMarginPlusSecond, 11, 7, 0);
    house.Trade(PositionFamily::kMarginPlusFirst, 11, 6, 0);
    house.Trade(PositionFamily::kDelivery, 12, 5, 3);
    house.Trade(PositionFamily::kDelivery, 14, 2, 17);
    house.Trade(PositionFamily::kMarginPlusSecond, 15, 0, 0);
    house.Blank(PositionFamily::kMarginPlusSecond, 15);
    house.Trade(PositionFamily::kDelivery, 1'000'012, 4, 3);  // seven digits: a plain one to a walk
    house.Trade(PositionFamily::kMtf, 13, 3, 3);
    const Texts plain{"C1 C1 2885 30", "C1 C1 2885 100"};
    const Texts products{"C1 C1 12 5 DD", "C1 C1 14 2 DD", "C1 C1 11 6 MP", "C1 C1 11 7 MD"};
    Texts expected = plain;
    expected.insert(expected.end(), products.begin(), products.end());
    expected.insert(expected.end(), {"C2 C2 1594 10", "C2 C2 1660 0"});
    EXPECT_EQ(house.All(), expected);
    EXPECT_EQ(house.LabelOf(12), "DD") << "stays for whoever reads the scrip later";
    EXPECT_EQ(house.LabelOf(14), "DD") << "of BSE, too";
    EXPECT_EQ(house.LabelOf(11), "") << "an order's position has no mask";
    EXPECT_EQ(house.Captured().size(), 9) << "whatever the product";

    CDumped other(2);
    other.Trade(PositionFamily::kDelivery, 12, 5, 3);
    EXPECT_EQ(other.All().size(), 4) << "deliveries are told apart in one mode alone";
}

TEST(Dump, OfOneCodeHoldsItsLimitRowsAlone) {
    const CDumped house(0);
    const struct {
        const char* code;
        int count;
    } cases[] = {{"C1", 1}, {"C", 0}, {"", 0}, {"NOSUCHCODE", 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code);
        CPtrList rows;
        house->DownloadSurvInfo(c.code, &rows);
        EXPECT_EQ(rows.GetCount(), c.count);
        FreeRows<BKSurveillanceLimitDefTag>(rows);
        house->DownloadSurvInfo(c.code, nullptr);
    }
}

}  // namespace
}  // namespace surv::test
