#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "positions/accounts.h"

namespace surv {

/// The accounts of one period of a category by product group, in the order in which they joined, so that a walk over
/// one product passes the others by. In the daily period kNormal (dailyAccountList) holds all products but MTF, and
/// kMtf is mtfDailyAccountList; in the expiry period the four are normalAccountList, deliveryAccountList,
/// marginPlusAccountList, mtfAccountList. The accounts are the tree's.
///
/// 1. An account stands in a list exactly when its flag of that list is set: at most once.
class CAccountLists {
 public:
    /// Joining is put back by the log with everything else.
    void Join(ProductGroup group, CClientExposure& account, const TreeContext& context) {
        const auto index = static_cast<std::size_t>(group);
        const auto flag = static_cast<std::uint8_t>(1U << index);
        if (account.listed & flag) return;
        List& list = lists_[index];
        if (list.accounts.size() == list.count) list.accounts.push_back(nullptr);
        context.Save(account.listed);
        context.Save(list.count);
        list.accounts[list.count++] = &account;
        account.listed |= flag;
    }
    [[nodiscard]] std::span<CClientExposure* const> Of(ProductGroup group) const {
        const List& list = lists_[static_cast<std::size_t>(group)];
        return {list.accounts.data(), list.count};
    }

 private:
    struct List {
        std::vector<CClientExposure*> accounts;  // places past the count are free
        std::size_t count = 0;
    };
    std::array<List, kProductGroupCount> lists_;
};

/// The list of a period that a product's accounts stand in.
[[nodiscard]] inline ProductGroup ListOf(Period period, std::int16_t productType) {
    const ProductGroup group = ProductGroupOf(productType);
    return period == Period::kExpiry || group == ProductGroup::kMtf ? group : ProductGroup::kNormal;
}

}  // namespace surv
