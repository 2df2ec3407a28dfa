// What each event of a two-leg order takes out and puts in, and where the stored order's price stands.

#include <gtest/gtest.h>

#include "orderpath/intake.h"
#include "platform/format.h"

namespace surv::test {
namespace {

/// Every figure of every record is another one.
struct Records {
    tagOrderRequest request{};
    tagOrderInfo stored{};
    tagTradeInfo trade{};
    tagTradeCorrectionRequest correction{};

    Records() {
        request.quantity = 100, request.price = 1000, request.firstLegPrice = 1100, request.secondLegPrice = 900;
        stored.quantity = 80, stored.quantityRemaining = 50, stored.quantityFilled = 30, stored.price = 950;
        stored.firstLegPrice = 1050, stored.secondLegPrice = 850;
        trade.tradedQuantity = 20, trade.tradePrice = 990, trade.firstLegPrice = 1090, trade.secondLegPrice = 890;
        correction.tradedQuantity = 15, correction.tradePrice = 980, correction.newQuantity = 12;
    }
};

struct Case {
    std::int16_t code;
    std::int16_t kind;
    /// "new quantity@price old quantity@price first/second x quantity of the first leg", and what the stored order's
    /// price does: it leaves, it enters, or it isn't used.
    const char* figures;
    std::int16_t leg;
    std::int16_t status = 1;  ///< of the stored order
};
constexpr std::int16_t kOffBook = 1 << 3;

// What orders of one leg move is told by the figures of whole events; here are the prices of two legs.
constexpr Case kEvents[]{
    // Orders come in
    {2000, 1, "100@1000 100@1000 1100/1000x100 -", 0},
    {30160, 1, "100@1000 0@0 1000/900x0 -", 1},
    // They change, and change back
    {2012, 8, "100@1000 100@950 1100/900x100 L", 2},
    {2040, 8, "100@1000 50@950 1100/900x100 L", 0},
    {2042, 1, "100@1000 50@950 1100/900x0 L", 1},
    // They end
    {2156, 1, "0@0 50@950 1050/0x50 L", 2},
    {9002, 9, "100@0 50@950 1050/0x0 L", 2},
    {2231, 9, "0@0 50@950 0/0x0 L", 1},
    // They trade, and trades are taken back
    {2222, 2, "20@990 20@890 1090/890x20 -", 2},
    {2222, 2, "20@990 0@0 990/890x20 -", 0, kOffBook},
    {2288, 3, "0@0 20@890 0/0x0 -", 0},
    // Stored orders come in again
    {31000, 1, "80@950 80@850 1050/950x80 E", 0},
    {31000, 1, "80@950 0@0 950/850x80 E", 1},
};
constexpr Case kChecks[]{
    {2000, 1, "100@1000 0@0 1100/1000x100 -", 0}, {2000, 1, "100@1000 0@0 1100/900x0 -", 1},
    {2150, 1, "100@1000 0@0 1100/1000x100 -", 2}, {30160, 1, "100@0 0@0 0/0x0 -", 1},
    {2040, 8, "100@1000 80@950 0/0x0 -", 1},      {2040, 8, "100@1000 80@950 1100/1000x100 -", 2},
};

std::string FiguresOf(const tagOrderInfoForSurv& o) {
    return Format("%d@%d %d@%d %d/%dx%d", o.quantity, o.price, o.prevQuantity, o.prevPrice, o.firstLegPrice,
                  o.secondLegPrice, o.firstLegQuantity);
}

TEST(EventTable, EveryCodeOfATwoLegOrderHasItsOwnPrices) {
    const auto expect = [](const Case& c, bool check) {
        SCOPED_TRACE(Format("code %d leg %d status %x", c.code, c.leg, c.status));
        Records records;
        records.stored.orderStatus = c.status;
        records.request.marginPlusLeg = c.leg;
        OrderIntake intake;
        intake.view = {FindMessageCode(c.code), &records.request, &records.correction,
                       &records.trade,          &records.stored,  &records.trade};
        intake.order.buySell = kSell;
        intake.order.productType = product::kMarginPlus;
        intake.order.marginPlusLeg = c.leg;
        StoredPrices prices;
        check ? FillCheckEvent(intake) : static_cast<void>(prices = FillUpdateEvent(intake, Settings{}));
        EXPECT_EQ(FiguresOf(intake.order) + (prices.leaves ? " L" : prices.enters ? " E" : " -"), c.figures);
        EXPECT_EQ(intake.order.orderEventKind, c.kind);
    };
    for (const Case& c : kEvents) expect(c, false);
    for (const Case& c : kChecks) expect(c, true);
}

}  // namespace
}  // namespace surv::test
