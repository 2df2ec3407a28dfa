#pragma once

// The exchanges' risk parameters in memory: a table of underlyings, each with its contracts. One table is live, one
// takes a file in while it arrives.

#include <cstdint>

#include "platform/hash_map.h"
#include "surveillance/records.h"

namespace surv {

/// A token of a segment, as one key. Two segments never share one.
[[nodiscard]] constexpr std::int64_t SegmentTokenKey(std::int16_t segment, std::int32_t token) {
    return (static_cast<std::int64_t>(segment) << 32) | static_cast<std::uint32_t>(token);
}

[[nodiscard]] constexpr std::int16_t SegmentOfKey(std::int64_t key) { return static_cast<std::int16_t>(key >> 32); }
[[nodiscard]] constexpr std::int32_t TokenOfKey(std::int64_t key) { return static_cast<std::int32_t>(key); }

/// The risk parameters of one contract.
class CRPFContractWiseInfo {
 public:
    tagRPFContractRecord record{};
};

/// The charges of one underlying, and its contracts.
class CRPFUnderlyingWiseInfo {
 public:
    explicit CRPFUnderlyingWiseInfo(std::int16_t segmentOfFile) : segment(segmentOfFile) {}

    tagRPFUnderlyingRecord record{};
    const std::int16_t segment;                                   ///< exchange mask of the message that made it
    HashMap<std::int64_t, CRPFContractWiseInfo> contracts{7001};  ///< by SegmentTokenKey

    /// Null when the underlying has no such contract.
    [[nodiscard]] const CRPFContractWiseInfo* FindContract(std::int16_t contractSegment, std::int32_t token) const {
        return contracts.Find(SegmentTokenKey(contractSegment, token));
    }
};

class CRPFParameterTable {
 public:
    tagRPFFileDetails fileDetails{};
    HashMap<std::int64_t, CRPFUnderlyingWiseInfo> underlyings{257};  ///< by SegmentTokenKey

    /// Null when the table has no such underlying.
    [[nodiscard]] const CRPFUnderlyingWiseInfo* FindUnderlying(std::int16_t segment, std::int32_t token) const {
        return underlyings.Find(SegmentTokenKey(segment, token));
    }
    /// Enters or overwrites the record; the contracts stay. False: a figure isn't finite, and nothing is stored.
    bool StoreUnderlying(const tagRPFUnderlyingRecord& record, std::int16_t segment);
    /// Enters or overwrites the record under its underlying. False: the table hasn't got the underlying, or a figure
    /// isn't finite, and nothing is stored.
    bool StoreContract(const tagRPFContractRecord& record, std::int16_t segment);
    /// Deletes all underlyings and their contracts; the file details stay.
    void Clear() { underlyings.Clear(); }
};

/// What is known of the risk parameter files of the day.
struct RiskParameters {
    CRPFParameterTable live;           ///< orders and recomputations read it
    CRPFParameterTable staging;        ///< holds a file while it arrives
    std::int32_t underlyingCount = 0;  ///< records received since the last start of their list
    std::int32_t contractCount = 0;

    void Clear() {
        live.Clear();
        staging.Clear();
    }
};

}  // namespace surv
