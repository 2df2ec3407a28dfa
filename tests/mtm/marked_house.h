#pragma once

// A house that starts with limit rows and positions and is then marked by touchlines.

#include <string>
#include <utility>
#include <vector>

#include "support/scenario.h"

namespace surv::test {

using LimitRow = BKSurveillanceLimitDefTag;
using Figures = std::vector<double>;

/// A traded position row of a client: so many bought (below 0: sold) at 250.00, which is the last price too.
/// strike: -1 a future, above 0 an option, both with an expiry.
[[nodiscard]] inline BKExposureTag ContractRow(std::string_view level, std::int16_t mask, std::int32_t traded,
                                               std::int32_t strike, std::int32_t token) {
    BKExposureTag row = PositionRow(level, mask, traded, "C1", token);
    row.underlyingToken = 26000;
    row.contract.strikePrice = strike, row.contract.expiryDate = 1'500'000'000;
    return row;
}

class CMarkedHouse : public CScenario {
 public:
    /// Every touchline is due unless a test says otherwise.
    CMarkedHouse() { library.CleanUp(); }
    ~CMarkedHouse() {
        library.CleanUp();  // before the lists, whose rows it may own
        limits_.RemoveAll();
        positions_.RemoveAll();
    }
    CMarkedHouse(const CMarkedHouse&) = delete;
    CMarkedHouse& operator=(const CMarkedHouse&) = delete;

    LimitRow& AddLimit(std::string_view entity, std::int16_t mask, std::int32_t token = kAllSecurities) {
        return *static_cast<LimitRow*>(limits_.AddTail(new LimitRow(EmptyLimit(entity, mask, token)))->element);
    }
    void AddPosition(const BKExposureTag& row) { positions_.AddTail(new BKExposureTag(row)); }
    void Start(std::int16_t positionMode, std::int16_t mtmMode, std::int16_t orderBased = 0) {
        library.context.settings.orderBasedPosition = orderBased;
        ASSERT_EQ(library.Start({.mtmMode = mtmMode, .positionMode = positionMode},
                                {.limits = &limits_, .exposures = &positions_}),
                  kDone);
    }
    [[nodiscard]] CSurveillanceManager& Manager() { return *library.manager; }
    [[nodiscard]] CBroadcastScrip& Scrip(std::int16_t exchange, std::int32_t token) {
        return *Manager().broadcastHash.Find(PlainKey(exchange, token));
    }

    /// Sends a price of a scrip; gives the rows handed out, as they were handed out.
    std::vector<LimitRow> Touch(std::int16_t exchange, std::int32_t token, std::int32_t price, bool compute = true) {
        tagBcastMBOOrMBPTouchline touchline{};
        touchline.exchange = exchange, touchline.token = token, touchline.lastTradedPrice = price;
        touchline.closePrice = 25000;
        using Marking = CSurveillanceManager::Marking;
        CPtrList changed;
        Manager().AddAndComputeMTM(touchline, compute ? Marking::kWanted : Marking::kUnwanted, &changed);
        return Taken(changed);
    }
    std::vector<LimitRow> RecomputeAll() {
        CPtrList changed;
        Manager().RecomputeMTM(&changed);
        return Taken(changed);
    }

 private:
    std::vector<LimitRow> Taken(CPtrList& list) const {
        std::vector<LimitRow> rows;
        for (CPtrList::Position at = list.GetHeadPosition(); at;) {
            rows.push_back(*static_cast<LimitRow*>(list.GetNext(at)));
        }
        library.context.settings.RowsAreLive() ? ForgetRows(list) : FreeRows<LimitRow>(list);
        return rows;
    }

    CPtrList limits_;
    CPtrList positions_;
};

}  // namespace surv::test
