#pragma once

#include <vector>

#include "arguments.h"
#include "surveillance/records.h"

namespace survhost {

/// A request in one piece: the head, then the records of its variable part without a gap. The buffer has exactly the
/// size of what it holds, so that a read beyond it is seen by the sanitizers.
class Request {
 public:
    /// Of the arguments request, order, trade, tradeCorrection and orderInfo. Refuses a line that lacks the record its
    /// message code needs, that gives one its code has no room for, or whose flags announce a record it doesn't give.
    explicit Request(const Arguments& arguments);

    /// The start of the whole request, for the library to read and write.
    [[nodiscard]] tagSurveillanceInfo* Head() { return reinterpret_cast<tagSurveillanceInfo*>(bytes_.data()); }
    /// Null unless the primary record is an order.
    [[nodiscard]] const tagOrderRequest* Order() const;

 private:
    /// Appends the record that the line gives under `name`, and gives its place.
    std::size_t Append(const Arguments& arguments, const RecordTable& table, std::string_view name);
    // One step each, in the order of the records.
    void AppendPrimary(const Arguments& arguments);
    void AppendStoredOrder(const Arguments& arguments);
    void AppendTrailingTrade(const Arguments& arguments);
    void TakeExchangeMask(const Arguments& arguments, const RecordTable& table, std::size_t record);

    std::vector<char> bytes_;
    bool hasOrder_ = false;
    /// "trade" was laid down as the primary record and doesn't trail.
    bool tradeIsPrimary_ = false;
};

}  // namespace survhost
