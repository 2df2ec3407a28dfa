#include "platform/undo_log.h"

#include <gtest/gtest.h>

namespace surv {
namespace {

TEST(UndoLog, ARangeGoesBackNewestFirst) {
    struct [[gnu::packed]] OddSize {
        char tag;
        double figure;
        char end[2];
    };
    int row = 1;
    OddSize odd{'a', 1.5, {'x', 'y'}};
    CUndoLog log;
    const CUndoLog::Mark start = log.Here();
    log.Save(row), row = 2;
    log.Save(odd), odd = {'b', 2.5, {'z', 'z'}};
    const CUndoLog::Mark middle = log.Here();
    log.Save(row), row = 3;
    log.Save(row), row = 4;

    log.Restore(middle, log.Here());
    EXPECT_EQ(row, 2) << "the oldest image of the range stands";
    EXPECT_EQ(odd.tag, 'b') << "another range's object";
    log.Restore(start, middle);
    EXPECT_EQ(row, 1);
    const OddSize before{'a', 1.5, {'x', 'y'}};
    EXPECT_EQ(std::memcmp(&odd, &before, sizeof odd), 0);
    EXPECT_FALSE(log.Empty()) << "a restore keeps the images";
}

TEST(UndoLog, OneObjectAloneTakesItsFirstImage) {
    int row = 1, other = 10, stranger = 7;
    CUndoLog log;
    log.Save(row);
    const CUndoLog::Mark from = log.Here();
    row = 2;
    log.Save(other), other = 11;
    log.Save(row), row = 3;
    log.Save(row), row = 4;
    log.RestoreObject(&row, from, log.Here());
    log.RestoreObject(&stranger, CUndoLog::Mark{}, log.Here());
    EXPECT_EQ(row, 2);
    EXPECT_EQ(other, 11);
    EXPECT_EQ(stranger, 7);
}

TEST(UndoLog, AGuardUndoesAndForgetsUnlessItIsKept) {
    int row = 1, later = 1;
    CUndoLog log;
    log.Save(row), row = 2;
    {
        const CUndoGuard outer(log);
        log.Save(later), later = 3;
        CUndoGuard inner(log);
        log.Save(row), row = 3;
        inner.Keep();
    }
    EXPECT_EQ(row, 2) << "what an inner guard keeps belongs to the outer one";
    EXPECT_EQ(later, 1);
    EXPECT_EQ(log.Here().images, 1U) << "the guard's images are gone, older ones stay";
    log.RestoreBackTo(CUndoLog::Mark{});
    EXPECT_EQ(row, 1);
    EXPECT_TRUE(log.Empty());
}

}  // namespace
}  // namespace surv
