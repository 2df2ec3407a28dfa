// Memory may run out at any allocation of a call: the call fails, and everything is as it was.

#include <gtest/gtest.h>

#include "memory/failing_memory.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

/// Sends the order with memory for `allocations` of them. False: memory ran out.
bool CheckWithin(CScenario& s, const OrderSpec& order, long allocations) {
    std::vector<char> buffer = MakeRequest(order);
    auto& request = *reinterpret_cast<tagSurveillanceInfo*>(buffer.data());
    tagOrdErrMessage error{};
    CPtrList rows;
    short status = 0;
    bool done = true;
    allocationsLeft = allocations;
    try {
        s.library.manager->CheckSurveillance(request, error, status, {&rows, nullptr}, false);
    } catch (const std::bad_alloc&) {
        done = false;
    }
    allocationsLeft = -1;
    FreeRows<BKSurveillanceLimitDefTag>(rows);
    EXPECT_TRUE(!done || status == status::kPass);
    return done;
}

TEST(OutOfMemory, LeavesNoTraceOfACheckWhereverItStrikes) {
    OrderSpec checked;
    OrderSpec updatedBelow;
    updatedBelow.levelCheckFlags = 0b0000'0110;  // group and dealer are checked, the client takes it in
    OrderSpec sameTwice;
    sameTwice.dealer = "C1";
    const struct {
        const char* name;
        const OrderSpec& order;
    } cases[] = {{"every level checked", checked},
                 {"client only updated", updatedBelow},
                 {"one category at two levels", sameTwice}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CScenario s;
        s.House(2);
        for (const char* entity : {"-", "G1", "D1", "C1"}) s.Limit(entity, 3);
        const std::string before = s.Dump();
        long allocations = 0;
        while (!CheckWithin(s, c.order, allocations)) {
            ASSERT_TRUE(s.library.context.undo.Empty()) << allocations;
            ASSERT_EQ(s.Dump(), before) << "after " << allocations << " allocations";
            ASSERT_LT(++allocations, 1000);
        }
        EXPECT_GT(allocations, 5);
        EXPECT_NE(s.Dump(), before);
    }
}

}  // namespace
}  // namespace surv::test
