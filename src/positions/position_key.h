#pragma once

#include <cstdint>

#include "shared/order.h"

namespace surv {

/// Products that are held apart. The value is what a family adds to the exchange mask in the printed key.
enum class PositionFamily : std::int16_t {
    kPlain = 0,
    kDelivery = 5,
    kMarginPlusFirst = 6,
    kMarginPlusSecond = 10,
    kMtf = 20,
};

/// Two families never share a key, whatever the token.
struct PositionKey {
    std::int16_t exchangeMask = 0;
    PositionFamily family = PositionFamily::kPlain;
    std::int32_t token = 0;

    friend bool operator==(const PositionKey&, const PositionKey&) = default;
    [[nodiscard]] std::uint64_t Hash() const;
    /// The decimal number that messages show: key segment * 10000000 + token.
    [[nodiscard]] std::int64_t Printed() const {
        return PlainKey(static_cast<std::int16_t>(exchangeMask + static_cast<std::int16_t>(family)), token);
    }
};

/// Family of an order's position in the flat sets; leg 1 or 2 tells the two positions of a two-leg order apart.
[[nodiscard]] PositionFamily FlatFamily(std::int16_t productType, int leg = 1);
/// Family of an order's contract in an account's tree.
[[nodiscard]] PositionFamily TreeFamily(std::int16_t productType);
/// Family of an order's position by client, in one period's index.
[[nodiscard]] PositionFamily ClientFamily(std::int16_t productType, Period period);
/// Family of a position row in the flat sets: delivery, two-leg and MTF rows are told apart on cash settlement masks.
[[nodiscard]] PositionFamily RowFamily(const BKExposureTag& row);

[[nodiscard]] inline PositionKey FlatKey(const tagOrderInfoForSurv& order, int leg = 1) {
    return {order.ExchangeMask(), FlatFamily(order.productType, leg), order.token};
}
[[nodiscard]] inline PositionKey TreeKey(const tagOrderInfoForSurv& order) {
    return {order.ExchangeMask(), TreeFamily(order.productType), order.token};
}

}  // namespace surv
