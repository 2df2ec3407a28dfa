#include "platform/hash_map.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

namespace surv {
namespace {

/// Keys far apart and side by side, below 0 and beyond 32 bits.
std::int64_t KeyOf(std::int64_t number) { return (number % 7) * 10'000'000'000LL - 3 + number; }

TEST(HashMap, AgreesWithAModelThroughGrowthAndRemoval) {
    constexpr unsigned kSeed = 20251121;
    for (const std::uint32_t buckets : {0U, 1U, 53U}) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", buckets " << buckets);
        std::mt19937 random(kSeed);
        HashMap<std::int64_t, int> map(buckets);
        std::map<std::int64_t, int*> model;
        std::vector<std::int64_t> order;  // of insertion
        for (int step = 0; step < 4000; ++step) {
            // The map swells past its scan and its first index, then shrinks to a few entries, over and over.
            const bool grows = step / 400 % 2 == 0;
            const std::int64_t key = KeyOf(static_cast<std::int64_t>(random() % 150));
            const auto at = model.find(key);
            ASSERT_EQ(map.Find(key), at == model.end() ? nullptr : at->second) << "key " << key << " at " << step;
            if (at == model.end()) {
                ASSERT_EQ(map.Take(key), nullptr);
                if (!grows) continue;
                model[key] = &map.FindOrMake(key, step);
                order.push_back(key);
            } else if (!grows) {
                ASSERT_EQ(map.Take(key).get(), at->second);
                model.erase(at);
                std::erase(order, key);
            }
            ASSERT_EQ(map.Size(), model.size());
            std::vector<std::int64_t> walked;
            for (const auto& entry : map) walked.push_back(entry.key);
            ASSERT_EQ(walked, order);
        }
        map.Clear();
        EXPECT_TRUE(map.Empty());
        for (const std::int64_t key : order) EXPECT_EQ(map.Find(key), nullptr);
    }
}

}  // namespace
}  // namespace surv
