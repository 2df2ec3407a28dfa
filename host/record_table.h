#pragma once

// The boundary's records as data. A record is described by one table of its fields; encoding, decoding and the
// strictness of both are the same code for all (json_record.h).
//
// To add a record tagX:
//   1. record_table.cpp: its table. R is the record, FIELD takes place, kind and width from it, and what a script needs
//      to know besides is said behind:
//          constexpr auto kX = [] {
//              using R = tagX;
//              return std::array{FIELD(token), FIELD(limit).Default(-1), FIELD(account).Unterminated()};
//          }();
//      A block inside the record joins as At(offsetof(R, block), kBlock), with Join around the parts.
//   2. There too: RECORD(tagX, kX), and a line in AllTables, by which the tests hold the table against the header.
//   3. Below: the declaration of its TableOf.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

#include "surveillance/records.h"

namespace survhost {

enum class FieldKind : std::uint8_t { kByte, kShort, kLong, kFloat, kDouble, kText };

/// One field of a record. Bytes of a record that no field covers can't be set and aren't shown.
struct Field {
    std::string_view name;
    std::size_t offset;
    FieldKind kind;
    std::size_t width;          ///< bytes of one element; of a text, all its bytes
    std::size_t count = 1;      ///< elements; above 1 the field is an array
    std::size_t room = 0;       ///< bytes that a text may fill
    int defaultValue = 0;       ///< of a number that is left out
    bool neverWritten = false;  ///< left out of every answer

    [[nodiscard]] constexpr std::size_t End() const { return offset + width * count; }

    [[nodiscard]] constexpr Field Default(int value) const {
        Field field = *this;
        field.defaultValue = value;
        return field;
    }
    /// A text that needs no terminating zero when it fills its field.
    [[nodiscard]] constexpr Field Unterminated() const {
        Field field = *this;
        field.room = width;
        return field;
    }
    [[nodiscard]] constexpr Field NeverWritten() const {
        Field field = *this;
        field.neverWritten = true;
        return field;
    }
    [[nodiscard]] constexpr Field ShiftedBy(std::size_t bytes) const {
        Field field = *this;
        field.offset += bytes;
        return field;
    }
};

template <class Element>
constexpr FieldKind KindOf() {
    if constexpr (std::is_same_v<Element, std::uint8_t>) {
        return FieldKind::kByte;
    } else if constexpr (std::is_same_v<Element, std::int16_t>) {
        return FieldKind::kShort;
    } else if constexpr (std::is_same_v<Element, std::int32_t>) {
        return FieldKind::kLong;
    } else if constexpr (std::is_same_v<Element, float>) {
        return FieldKind::kFloat;
    } else if constexpr (std::is_same_v<Element, double>) {
        return FieldKind::kDouble;
    } else {
        static_assert(std::is_same_v<Element, char>, "a field of a kind that no record has had so far");
        return FieldKind::kText;
    }
}

/// The field of a member of type Member; kind, width and count follow from the type.
template <class Member>
constexpr Field MakeField(std::string_view name, std::size_t offset) {
    using Element = std::remove_all_extents_t<Member>;
    constexpr FieldKind kKind = KindOf<Element>();
    constexpr std::size_t kExtent = std::is_array_v<Member> ? std::extent_v<Member> : 1;
    if constexpr (kKind == FieldKind::kText) {
        return {.name = name, .offset = offset, .kind = kKind, .width = kExtent, .room = kExtent - 1};
    } else {
        return {.name = name, .offset = offset, .kind = kKind, .width = sizeof(Element), .count = kExtent};
    }
}

struct RecordTable {
    std::string_view name;
    std::size_t size;
    std::span<const Field> fields;  ///< in the order of their offsets

    /// Null when the record has no such field.
    [[nodiscard]] const Field* Find(std::string_view field) const;
};

/// The table of a record type.
template <class Record>
const RecordTable& TableOf() = delete;
template <>
const RecordTable& TableOf<tagSurveillanceInfo>();
template <>
const RecordTable& TableOf<tagOrderRequest>();
template <>
const RecordTable& TableOf<tagOrderInfo>();
template <>
const RecordTable& TableOf<tagTradeCorrectionRequest>();
template <>
const RecordTable& TableOf<tagTradeInfo>();
template <>
const RecordTable& TableOf<tagAdminErrMessage>();
template <>
const RecordTable& TableOf<tagOrdErrMessage>();
template <>
const RecordTable& TableOf<tagBreachRow>();
template <>
const RecordTable& TableOf<tagRPFUnderlyingRecord>();
template <>
const RecordTable& TableOf<tagRPFContractRecord>();
template <>
const RecordTable& TableOf<tagAdditionalMarginInfo>();
template <>
const RecordTable& TableOf<tagProductTypeScripBasket>();
template <>
const RecordTable& TableOf<tagTokenPriceRecord>();
template <>
const RecordTable& TableOf<tagCompulsoryDeliverySeries>();
template <>
const RecordTable& TableOf<tagBcastMBOOrMBPTouchline>();
template <>
const RecordTable& TableOf<BKSurveillanceLimitDefTag>();
template <>
const RecordTable& TableOf<BKExposureTag>();
template <>
const RecordTable& TableOf<tagDPHolding>();
template <>
const RecordTable& TableOf<tagDPUpload>();
template <>
const RecordTable& TableOf<tagSarRow>();
template <>
const RecordTable& TableOf<tagSecurityIsinRow>();
template <>
const RecordTable& TableOf<tagRMSFundAllocationRequest>();
template <>
const RecordTable& TableOf<tagClientRiskPreferenceInfoForSurv>();

std::span<const RecordTable* const> AllTables();

}  // namespace survhost
