// A published day of futures: the MTM of a book, worked out apart from the prices of the file, is the one in the rows.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

#include "mtm/marked_house.h"

namespace surv::test {
namespace {

/// One line of the file, paise.
struct DayOfContract {
    std::int32_t previous, open, high, low, close;
};

std::vector<DayOfContract> ReadDay(std::size_t count) {
    std::ifstream file(SURVEILLANCE_SOURCE_DIR "/../shared/realdata/bhav/fo_futures_bhavcopy_19072024.csv");
    std::vector<DayOfContract> days;
    std::string line;
    std::getline(file, line);  // names
    while (days.size() < count && std::getline(file, line)) {
        std::istringstream cells(line.substr(line.find(',') + 1));
        DayOfContract day{};
        for (std::int32_t* price : {&day.previous, &day.open, &day.high, &day.low, &day.close}) {
            double rupees = 0;
            char comma = 0;
            cells >> rupees >> comma;
            *price = static_cast<std::int32_t>(std::lround(rupees * 100));
        }
        if (day.open > 0) days.push_back(day);  // else no one has traded in it
    }
    return days;
}

TEST(FuturesBook, MarksAsThePricesOfThePublishedDaySay) {
    constexpr std::size_t kPositions = 200;
    constexpr std::int32_t kFirstToken = 40000;
    constexpr std::int16_t kMasks[]{5, 0xD, 0x1FF};
    const std::vector<DayOfContract> days = ReadDay(kPositions);
    if (days.size() < kPositions) GTEST_SKIP() << "the exchange files are missing";

    struct Holding {
        std::int64_t bought, sold;
        std::int64_t paid;  // paise, less what was received
    };
    std::vector<Holding> book;
    CMarkedHouse s;
    for (const char* entity : {"C1", "-"}) {
        for (const std::int16_t mask : kMasks) s.AddLimit(entity, mask);
    }
    for (std::size_t i = 0; i < kPositions; ++i) {
        // Longs, shorts, and every third position partly closed at the day's open.
        const auto quantity = static_cast<std::int32_t>(25 * (1 + i % 7));
        const std::int32_t closed = i % 3 == 0 ? quantity / 5 : 0;
        const bool isLong = i % 2 == 0;
        const std::int64_t opened = std::int64_t{quantity} * days[i].previous + 1;  // averages aren't whole
        const std::int64_t undone = std::int64_t{closed} * days[i].open;
        BKExposureTag row = ContractRow("C1", 5, 0, -1, kFirstToken + static_cast<std::int32_t>(i));
        row.lastPrice = days[i].previous;
        row.tradedBuyQty = isLong ? quantity : closed, row.tradedSellQty = isLong ? closed : quantity;
        row.tradedBuyValue = static_cast<double>(isLong ? opened : undone);
        row.tradedSellValue = static_cast<double>(isLong ? undone : opened);
        book.push_back({row.tradedBuyQty, row.tradedSellQty, isLong ? opened - undone : undone - opened});
        for (const char* entity : {"C1", "-"}) {
            WriteField(row.levelCode, entity);
            s.AddPosition(row);
        }
    }
    s.Start(2, 2);

    using Price = std::int32_t DayOfContract::*;
    for (const Price price : {&DayOfContract::open, &DayOfContract::high, &DayOfContract::low, &DayOfContract::close}) {
        std::int64_t mtm = 0;     // what selling out would bring, less what was paid
        std::int64_t losses = 0;  // of the positions that lose
        for (std::size_t i = 0; i < kPositions; ++i) {
            const std::int32_t last = days[i].*price;
            s.Touch(kMaskNseDerivatives, kFirstToken + static_cast<std::int32_t>(i), last);
            const std::int64_t of = (book[i].bought - book[i].sold) * last - book[i].paid;
            mtm += of;
            losses += std::min<std::int64_t>(of, 0);
        }
        ASSERT_NE(mtm, 0);
        for (const char* entity : {"C1", "-"}) {
            for (const std::int16_t mask : kMasks) {
                constexpr double kThousandthOfAPaisa = 1e-3;
                const LimitRow& row = s.Row(entity, mask);
                EXPECT_NEAR(row.usedMtmFull, static_cast<double>(mtm), kThousandthOfAPaisa);
                EXPECT_NEAR(row.usedMtm, static_cast<double>(losses), kThousandthOfAPaisa);
            }
        }
    }
    const std::string marked = s.Dump();
    s.RecomputeAll();
    EXPECT_TRUE(s.Dump() == marked);
}

}  // namespace
}  // namespace surv::test
