#pragma once

// JSON on one side, packed records on the other. Reading is strict: whatever a record or a value can't take as it
// stands is a ScriptError.

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "record_table.h"

namespace survhost {

/// Keys keep their order: answers are written as they were put together.
using Json = nlohmann::ordered_json;

/// One line of a script. Broken JSON, a key that stands twice and anything but an object are refused.
Json ParseLine(std::string_view line);

/// Appends the value as JSON in one line: doubles in their shortest form, one that isn't finite as null, bytes that
/// are no UTF-8 as the replacement character.
void WriteJson(const Json& value, std::string& out);

/// The value as a whole number between the two bounds. `name` is for the complaint.
std::int64_t WholeNumber(const Json& value, std::string_view name, std::int64_t least, std::int64_t most);

template <class Number>
Number WholeNumber(const Json& value, std::string_view name) {
    using Limits = std::numeric_limits<Number>;
    return static_cast<Number>(WholeNumber(value, name, Limits::min(), Limits::max()));
}

/// The value as text of at most `room` bytes.
std::string TextOf(const Json& value, std::string_view name, std::size_t room);

/// Writes an object into the record's fields; the fields it leaves out take their defaults.
/// REQUIRES: record has table.size bytes, all zero.
void EncodeRecord(const RecordTable& table, const Json& object, char* record);

template <class Record>
void EncodeRecord(const Json& object, Record& record) {
    EncodeRecord(TableOf<Record>(), object, reinterpret_cast<char*>(&record));
}

/// The fields of the record that differ from their defaults.
Json DecodeRecord(const RecordTable& table, const char* record);

template <class Record>
Json DecodeRecord(const Record& record) {
    return DecodeRecord(TableOf<Record>(), reinterpret_cast<const char*>(&record));
}

/// A text field up to its first zero, which it may lack.
std::string_view TextIn(const char* text, std::size_t width);

}  // namespace survhost
