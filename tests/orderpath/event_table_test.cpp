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
    const char* figures;  ///< "new quantity@price old quantity@price first/second x quantity of the first leg"
    std::int16_t leg;
    std::int16_t status = 1;  ///< of the stored order
};
constexpr std::int16_t kOffBook = 1 << 3;

// What orders of one leg move is told by the figures of whole events; here are the prices of two legs.
constexpr Case kCases[]{
    // Orders come in
    {2000, 1, "100@1000 100@1000 1100/1000x100", 0},
    {30160, 1, "100@1000 0@0 1000/900x0", 1},
    // They change, and change back
    {2012, 8, "100@1000 100@950 1100/900x100", 2},
    {2040, 8, "100@1000 50@950 1100/900x100", 0},
    {2042, 1, "100@1000 50@950 1100/900x0", 1},
    // They end
    {2156, 1, "0@0 50@950 1050/0x50", 2},
    {9002, 9, "100@0 50@950 1050/0x0", 2},
    {2231, 9, "0@0 50@950 0/0x0", 1},
    // They trade, and trades are taken back
    {2222, 2, "20@990 20@890 1090/890x20", 2},
    {2222, 2, "20@990 0@0 990/890x20", 0, kOffBook},
    {2288, 3, "0@0 20@890 0/0x0", 0},
    // Stored orders come in again
    {31000, 1, "80@950 80@850 1050/950x80", 0},
    {31000, 1, "80@950 0@0 950/850x80", 1},
};

std::string FiguresOf(const tagOrderInfoForSurv& o) {
    return Format("%d@%d %d@%d %d/%dx%d", o.quantity, o.price, o.prevQuantity, o.prevPrice, o.firstLegPrice,
                  o.secondLegPrice, o.firstLegQuantity);
}

TEST(EventTable, EveryCodeOfATwoLegOrderHasItsOwnPrices) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(Format("code %d leg %d status %x", c.code, c.leg, c.status));
        Records records;
        records.stored.orderStatus = c.status;
        OrderIntake intake;
        intake.view = {FindMessageCode(c.code), &records.request, &records.correction,
                       &records.trade,          &records.stored,  &records.trade};
        intake.order.buySell = kSell;
        intake.order.productType = product::kMarginPlus;
        intake.order.marginPlusLeg = c.leg;
        static_cast<void>(FillUpdateEvent(intake, Settings{}));
        EXPECT_EQ(FiguresOf(intake.order), c.figures);
        EXPECT_EQ(intake.order.orderEventKind, c.kind);
        EXPECT_EQ(intake.order.buySell, c.kind == 0 ? 0 : kSell);
    }
}

/// The prices of a stored order at market are those that its check took; an event says which of them it uses.
TEST(EventTable, SaysWhereTheStoredOrdersPriceStands) {
    std::string uses;
    for (const int number : {2000, 2012, 2040, 2042, 2155, 2075, 2222, 2286, 2223, 5440, 5445, 31000}) {
        const auto code = static_cast<std::int16_t>(number);
        Records records;
        records.stored.orderStatus = 1;
        OrderIntake intake;
        intake.view = {FindMessageCode(code), &records.request, &records.correction,
                       &records.trade,        &records.stored,  &records.trade};
        const StoredPrices prices = FillUpdateEvent(intake, Settings{});
        uses += prices.leaves ? 'L' : prices.enters ? 'E' : '-';
    }
    EXPECT_EQ(uses, "-LLELLLL---E");
}

}  // namespace
}  // namespace surv::test
