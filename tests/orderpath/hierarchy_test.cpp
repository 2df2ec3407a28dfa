#include "orderpath/hierarchy.h"

#include <gtest/gtest.h>

#include "support/scenario.h"

namespace surv::test {
namespace {

void ExpectRefusal(const Answer& answer, const std::string& text) {
    EXPECT_EQ(answer.text, text);
    EXPECT_EQ(answer.Head(), "-306, -208, 0 at now: D1, -1") << "the dealer's, until the walk begins";
}

TEST(Hierarchy, WhichLevelsAnOrderHas) {
    const struct {
        std::int32_t features;
        std::uint8_t dealer, client, subClient;
        std::int16_t proClient;
        const char* family;
        const char* refusal;  // of a house without F1, C1 and S1; null: it passes
    } cases[] = {
        {0, 0, 2, 255, 1, "", "Limits not Set or Invalid Client Code : C1 "},
        {0, 0, 255, 2, 1, "", "Limits not Set or Invalid Sub Client Code : S1 "},
        {0, 1, 2, 2, 1, "", nullptr},
        {0, 0, 255, 255, 1, "F1", nullptr},
        {0x10, 4, 255, 255, 2, "F1", "Limits not Set or Invalid Family Code : F1 "},
        {0x10, 0, 255, 255, 1, "     F", nullptr},
        {0x10, 0, 2, 255, 1, "", nullptr},
        {0x10, 0, 1, 255, 1, "", "Limits not Set or Invalid Client Code : C1 "},
        {0x10, 0, 255, 3, 1, "", "Limits not Set or Invalid Sub Client Code : S1 "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.features << " " << int{c.client} << " " << int{c.subClient} << c.family);
        CScenario s({.featureBits = c.features});
        for (const char* entity : {"-", "G1", "D1"}) s.Limit(entity, 3);
        const Answer answer = s.Check({.proClient = c.proClient,
                                       .family = c.family,
                                       .subClient = "S1",
                                       .dealerType = c.dealer,
                                       .clientType = c.client,
                                       .subClientType = c.subClient});
        if (c.refusal) {
            ExpectRefusal(answer, std::string("C1|") + c.refusal);
        } else {
            EXPECT_TRUE(answer.Passed()) << answer.text;
        }
    }
    // A client that isn't required is taken where its code is known.
    CScenario s({.featureBits = 0x10});
    s.House();
    s.Row("C1", 3).maxSingleOrderQty = 99;
    EXPECT_EQ(s.Check({}).failedLevelCode, "C1");
    s.Limit("C2", 5);
    EXPECT_TRUE(s.Check({.client = "C2"}).Passed()) << "and its limits needn't be those of the segment";
    for (const char* entity : {"-", "G1", "D1"}) s.Limit(entity, 0x11, {}, 2885);
    EXPECT_EQ(s.Check({.exchangeMask = kMaskBseCash}).text, "C1|Relevant Limits not Set for Group Code : G1 ")
        << "rows of a scrip open no segment";
}

/// From the group's on upwards; the margin flags stand one place lower.
TEST(Hierarchy, EachLevelHasOneFlagForChecksAndOneForMargin) {
    for (const Level level : {Level::kGroup, Level::kDealer, Level::kFamily, Level::kClient, Level::kSubClient}) {
        const int place = 5 - static_cast<int>(level);
        tagSurveillanceInfo request{};
        request.levelCheckFlags = static_cast<std::uint8_t>(1 << place);
        request.levelMarginFlags = static_cast<std::uint8_t>(1 << (place - 1));
        EXPECT_TRUE(HasCheckFlag(level, request) && HasMarginFlag(level, request)) << place;
        request.levelCheckFlags = request.levelMarginFlags = 0;
        EXPECT_FALSE(HasCheckFlag(level, request) || HasMarginFlag(level, request)) << place;
    }
    tagSurveillanceInfo every{};
    every.levelCheckFlags = every.levelMarginFlags = 0xFF;
    EXPECT_FALSE(HasCheckFlag(Level::kRoot, every) || HasMarginFlag(Level::kRoot, every)) << "the root has none";
}

}  // namespace
}  // namespace surv::test
