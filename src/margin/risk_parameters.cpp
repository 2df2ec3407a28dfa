#include "margin/risk_parameters.h"

#include <cmath>
#include <type_traits>

namespace surv {
namespace {

bool IsFinite(const tagRPFUnderlyingRecord& record) {
    return std::isfinite(record.calendarSpreadCharge) && std::isfinite(record.shortOptionMinimumCharge);
}

bool IsFinite(const tagRPFContractRecord& record) {
    constexpr std::size_t kLosses = std::extent_v<decltype(tagRPFContractRecord::riskArray)>;
    for (std::size_t i = 0; i < kLosses; ++i) {  // no reference to the whole array: the record is packed
        if (!std::isfinite(record.riskArray[i])) return false;
    }
    return std::isfinite(record.contractPrice) && std::isfinite(record.compositeDelta);
}

}  // namespace

bool CRPFParameterTable::StoreUnderlying(const tagRPFUnderlyingRecord& record, std::int16_t segment) {
    if (!IsFinite(record)) return false;
    underlyings.FindOrMake(SegmentTokenKey(segment, record.underlyingToken), segment).record = record;
    return true;
}

bool CRPFParameterTable::StoreContract(const tagRPFContractRecord& record, std::int16_t segment) {
    CRPFUnderlyingWiseInfo* underlying = underlyings.Find(SegmentTokenKey(segment, record.underlyingToken));
    if (!underlying || !IsFinite(record)) return false;
    underlying->contracts.FindOrMake(SegmentTokenKey(segment, record.token)).record = record;
    return true;
}

}  // namespace surv
