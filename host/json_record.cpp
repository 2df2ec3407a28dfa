#include "json_record.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>
#include <set>
#include <vector>

#include "script_error.h"
#include "text_format.h"

namespace survhost {
namespace {

/// Refuses a key that stands twice in its object: which of the two was meant can't be known.
class DuplicateKeys {
 public:
    bool operator()(int /*depth*/, Json::parse_event_t event, Json& parsed) {
        using Event = Json::parse_event_t;
        if (event == Event::object_start) {
            open_.emplace_back();
        } else if (event == Event::object_end) {
            open_.pop_back();
        } else if (event == Event::key && !open_.back().insert(parsed.get<std::string>()).second) {
            throw ScriptError(fmt::format("\"{}\" stands twice in one object", parsed.get<std::string>()));
        }
        return true;
    }

 private:
    std::vector<std::set<std::string>> open_;
};

/// "broken JSON at column N: what", from the parser's longer text.
std::string ParseComplaint(const Json::exception& error) {
    const std::string_view text = error.what();
    constexpr std::string_view kColumn = "column ";
    if (const auto at = text.find(kColumn); at != std::string_view::npos) {
        return fmt::format("broken JSON at {}", text.substr(at));
    }
    const auto end = text.find("] ");
    return fmt::format("broken JSON: {}", end == std::string_view::npos ? text : text.substr(end + 2));
}

// Fields lie where the record puts them, aligned or not: bytes go in and out by memcpy alone.

template <class Number>
void Store(char* place, Number number) {
    std::memcpy(place, &number, sizeof number);
}

template <class Number>
Number Load(const char* place) {
    Number number;
    std::memcpy(&number, place, sizeof number);
    return number;
}

/// A whole number will do where a fraction may stand.
double Fraction(const Json& value, std::string_view name) {
    if (!value.is_number()) throw ScriptError(fmt::format("\"{}\" must be a number", name));
    return value.get<double>();
}

float ShortFraction(const Json& value, std::string_view name) {
    const double number = Fraction(value, name);
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max())) {
        throw ScriptError(fmt::format("\"{}\": {} does not fit in a 32-bit fraction", name, number));
    }
    return static_cast<float>(number);
}

/// Writes one value at `place`. The rest of a text's field stays zero.
void EncodeElement(const Field& field, const Json& value, char* place) {
    switch (field.kind) {
        case FieldKind::kByte: return Store(place, WholeNumber<std::uint8_t>(value, field.name));
        case FieldKind::kShort: return Store(place, WholeNumber<std::int16_t>(value, field.name));
        case FieldKind::kLong: return Store(place, WholeNumber<std::int32_t>(value, field.name));
        case FieldKind::kFloat: return Store(place, ShortFraction(value, field.name));
        case FieldKind::kDouble: return Store(place, Fraction(value, field.name));
        case FieldKind::kText: {
            const std::string text = TextOf(value, field.name, field.room);
            text.copy(place, text.size());
            return;
        }
    }
}

/// An array is given whole or not at all.
void EncodeField(const Field& field, const Json& value, char* record) {
    if (field.count == 1) return EncodeElement(field, value, record + field.offset);
    if (!value.is_array() || value.size() != field.count) {
        throw ScriptError(fmt::format("\"{}\" must be an array of {}", field.name, field.count));
    }
    for (std::size_t i = 0; i < field.count; ++i) {
        EncodeElement(field, value[i], record + field.offset + i * field.width);
    }
}

void SetDefault(const Field& field, char* record) {
    if (field.defaultValue != 0) EncodeField(field, field.defaultValue, record);
}

/// A double whose shortest form is that of the 32-bit number.
double Widened(float number) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    double wide = number;
    std::from_chars(text.data(), end, wide);
    return wide;
}

/// JSON has no name for a figure that isn't finite; null says that there is none.
Json FractionJson(double number) { return std::isfinite(number) ? Json(number) : Json(nullptr); }

Json DecodeElement(const Field& field, const char* place) {
    switch (field.kind) {
        case FieldKind::kByte: return Load<std::uint8_t>(place);
        case FieldKind::kShort: return Load<std::int16_t>(place);
        case FieldKind::kLong: return Load<std::int32_t>(place);
        case FieldKind::kFloat: return FractionJson(Widened(Load<float>(place)));
        case FieldKind::kDouble: return FractionJson(Load<double>(place));
        case FieldKind::kText: return std::string(TextIn(place, field.width));
    }
    return nullptr;
}

/// What isn't finite is no default, so it shows.
bool IsDefault(const Field& field, const Json& value) {
    return field.kind == FieldKind::kText ? value.get_ref<const std::string&>().empty() : value == field.defaultValue;
}

/// Null when the field, or every element of an array, holds its default.
std::optional<Json> DecodeField(const Field& field, const char* record) {
    if (field.count == 1) {
        Json value = DecodeElement(field, record + field.offset);
        return IsDefault(field, value) ? std::nullopt : std::optional(std::move(value));
    }
    Json array = Json::array();
    bool differs = false;
    for (std::size_t i = 0; i < field.count; ++i) {
        array.push_back(DecodeElement(field, record + field.offset + i * field.width));
        differs = differs || !IsDefault(field, array.back());
    }
    return differs ? std::optional(std::move(array)) : std::nullopt;
}

/// The standard conversion gives the shortest text that reads back to the same number.
void WriteNumber(double number, std::string& out) {
    if (!std::isfinite(number)) {
        out += "null";
        return;
    }
    std::array<char, 32> text{};
    out.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
}

/// The one place where texts meet UTF-8 on the way out: a cut character must not stop an answer.
std::string Quoted(const std::string& text) { return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace); }

/// A word that is wrongly written is the likeliest.
ScriptError UnknownField(const RecordTable& table, std::string_view name) {
    std::vector<std::string_view> names;
    for (const Field& field : table.fields) names.push_back(field.name);
    return ScriptError(fmt::format("{} has no field \"{}\"{}", table.name, name, Suggestion(name, names)));
}

}  // namespace

Json ParseLine(std::string_view line) {
    Json parsed;
    try {
        parsed = Json::parse(line, DuplicateKeys{});
    } catch (const Json::exception& error) {
        throw ScriptError(ParseComplaint(error));
    }
    if (!parsed.is_object()) throw ScriptError("a line must hold one JSON object");
    return parsed;
}

void WriteJson(const Json& value, std::string& out) {
    // The opening bracket stands ahead of the first element as the comma does ahead of the others.
    char separator = value.is_object() ? '{' : '[';
    switch (value.type()) {
        case Json::value_t::object:
            if (value.empty()) out += separator;
            for (const auto& [key, element] : value.items()) {
                out += separator;
                out += Quoted(key) + ":";
                WriteJson(element, out);
                separator = ',';
            }
            out += '}';
            return;
        case Json::value_t::array:
            if (value.empty()) out += separator;
            for (const Json& element : value) {
                out += separator;
                WriteJson(element, out);
                separator = ',';
            }
            out += ']';
            return;
        case Json::value_t::number_float: return WriteNumber(value.get<double>(), out);
        case Json::value_t::string: out += Quoted(value.get_ref<const std::string&>()); return;
        default: out += value.dump(); return;
    }
}

std::int64_t WholeNumber(const Json& value, std::string_view name, std::int64_t least, std::int64_t most) {
    if (!value.is_number_integer()) throw ScriptError(fmt::format("\"{}\" must be a whole number", name));
    // A number above the signed range would come back negative below.
    const bool beyond = value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(most);
    if (beyond || value.get<std::int64_t>() < least || value.get<std::int64_t>() > most) {
        throw ScriptError(fmt::format("\"{}\": {} is not between {} and {}", name, value.dump(), least, most));
    }
    return value.get<std::int64_t>();
}

std::string TextOf(const Json& value, std::string_view name, std::size_t room) {
    if (!value.is_string()) throw ScriptError(fmt::format("\"{}\" must be a text", name));
    auto text = value.get<std::string>();
    if (text.find('\0') != std::string::npos) throw ScriptError(fmt::format("\"{}\" holds a zero character", name));
    if (text.size() > room) {
        throw ScriptError(fmt::format("\"{}\": a text of {} bytes does not fit in {}", name, text.size(), room));
    }
    return text;
}

void EncodeRecord(const RecordTable& table, const Json& object, char* record) {
    if (!object.is_object()) throw ScriptError(fmt::format("a {} must be an object", table.name));
    for (const Field& field : table.fields) SetDefault(field, record);
    for (const auto& [name, value] : object.items()) {
        const Field* field = table.Find(name);
        if (!field) throw UnknownField(table, name);
        EncodeField(*field, value, record);
    }
}

Json DecodeRecord(const RecordTable& table, const char* record) {
    Json object = Json::object();
    for (const Field& field : table.fields) {
        if (field.neverWritten) continue;
        if (auto value = DecodeField(field, record)) object[std::string(field.name)] = std::move(*value);
    }
    return object;
}

std::string_view TextIn(const char* text, std::size_t width) { return {text, strnlen(text, width)}; }

}  // namespace survhost
