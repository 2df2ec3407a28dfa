#include "request.h"

#include <gtest/gtest.h>

#include <cstring>

namespace survhost {
namespace {

constexpr std::string_view kArguments = "request order trade tradeCorrection orderInfo";

template <class Record>
Record At(Request& request, std::size_t offset) {
    Record record;
    std::memcpy(&record, reinterpret_cast<const char*>(request.Head()) + offset, sizeof record);
    return record;
}

TEST(Request, RecordsLieOneBehindTheOtherAndTheFlagsAnnounceThem) {
    const Json line = ParseLine(
        R"({"call":"CheckSurveillance","request":{"messageCode":2040,"levelMarginFlags":2,"requestFlags":32},
            "trade":{"tradePrice":3},"orderInfo":{"price":2},"order":{"exchangeMask":8,"price":1}})");
    const Arguments arguments(line, kArguments);
    Request request(arguments);
    EXPECT_EQ(request.Head()->levelMarginFlags, 0x82);
    EXPECT_EQ(request.Head()->requestFlags, 0x21);
    EXPECT_EQ(request.Head()->exchangeMask, 8);
    EXPECT_EQ(request.Order()->price, 1);
    EXPECT_EQ(At<tagOrderInfo>(request, 154 + 492).price, 2);
    EXPECT_EQ(At<tagTradeInfo>(request, 154 + 492 + 782).tradePrice, 3);
}

TEST(Request, ThePrimaryRecordIsTheOneOfTheMessageCode) {
    // storedOrder: where the stored order must lie
    const std::tuple<const char*, const char*, std::size_t, int> cases[]{
        {"trade", R"("messageCode":2222},"trade":{"exchangeMask":2})", 154 + 402, 0},
        {"correction and trade", R"("messageCode":5440},"tradeCorrection":{"exchangeMask":2},"trade":{})", 154 + 188,
         1},
        {"none", R"("messageCode":31000,"exchangeMask":2})", 154, 0},
        {"none, told with its order", R"("messageCode":2070,"exchangeMask":2},"order":{"price":9})", 154, 0},
        {"unknown code", R"("messageCode":4711},"order":{"exchangeMask":2})", 154 + 492, 0},
        {"mask of its own", R"("messageCode":2000,"exchangeMask":2},"order":{"exchangeMask":1})", 154 + 492, 0},
    };
    for (const auto& [name, records, storedOrder, requestFlags] : cases) {
        SCOPED_TRACE(name);
        const Json line = ParseLine(
            std::string(R"({"call":"UpdateSurveillance","orderInfo":{"price":77},"request":{)") + records + "}");
        const Arguments arguments(line, kArguments);
        Request request(arguments);
        EXPECT_EQ(At<tagOrderInfo>(request, storedOrder).price, 77);
        EXPECT_EQ(request.Head()->requestFlags, requestFlags);
        EXPECT_EQ(request.Head()->exchangeMask, 2);
    }
}

}  // namespace
}  // namespace survhost
