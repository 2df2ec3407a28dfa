#include "json_record.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "script_error.h"

namespace survhost {
namespace {

std::string Written(const Json& value) {
    std::string text;
    WriteJson(value, text);
    return text;
}

/// A value at the edge of what the field takes; no default of any field.
Json EdgeValue(const Field& field, bool high) {
    switch (field.kind) {
        case FieldKind::kByte: return high ? 255 : 1;
        case FieldKind::kShort: return high ? std::numeric_limits<std::int16_t>::max() : -32768;
        case FieldKind::kLong: return high ? std::numeric_limits<std::int32_t>::max() : -2147483648LL;
        case FieldKind::kFloat: return high ? 3.5e38 / 2 : -0.1;
        case FieldKind::kDouble: return high ? std::numeric_limits<double>::max() : -5e-324;
        case FieldKind::kText: return std::string(high ? field.room : 1, 'Z');
    }
    return nullptr;
}

TEST(JsonRecord, EveryFieldOfEveryRecordComesBackAtItsEdges) {
    for (const RecordTable* table : AllTables()) {
        for (const bool high : {false, true}) {
            SCOPED_TRACE(table->name);
            Json object = Json::object();
            for (const Field& field : table->fields) {
                if (field.neverWritten) continue;
                const Json value = EdgeValue(field, high);
                object[std::string(field.name)] = field.count == 1 ? value : Json(std::vector(field.count, value));
            }
            std::vector<char> record(table->size);
            EncodeRecord(*table, object, record.data());
            EXPECT_EQ(Written(DecodeRecord(*table, record.data())), Written(object));
        }
    }
}

TEST(JsonRecord, NothingIsShownOfDefaultsAndTimeStamps) {
    for (const RecordTable* table : AllTables()) {
        std::vector<char> record(table->size);
        EncodeRecord(*table, Json::object(), record.data());
        EXPECT_EQ(Written(DecodeRecord(*table, record.data())), "{}") << table->name;
    }
    tagAdminErrMessage error{};
    error.timeStamp = 1763695800;
    EXPECT_EQ(Written(DecodeRecord(error)), "{}");
    BKSurveillanceLimitDefTag row{};
    EncodeRecord(Json{{"turnoverLimit", 0}, {"marginLimit", -1.0}}, row);
    EXPECT_EQ(Written(DecodeRecord(row)), R"({"turnoverLimit":0})");
}

TEST(JsonRecord, BytesFromTheLibraryNeverBreakAnAnswer) {
    BKExposureTag row{};
    row.mtmValue = std::nan("");
    row.openPositionValue = -std::numeric_limits<double>::infinity();
    row.contract.symbol[0] = '\xC3';  // the first half of a character
    std::fill(std::begin(row.levelCode), std::end(row.levelCode), 'L');
    EXPECT_EQ(Written(DecodeRecord(row)),
              "{\"levelCode\":\"LLLLLL\",\"symbol\":\"\xEF\xBF\xBD\",\"openPositionValue\":null,\"mtmValue\":null}");
}

TEST(JsonRecord, RefusesWhatAFieldCannotHold) {
    const std::tuple<const char*, const char*> cases[]{
        {R"({"prise":1})", "tagOrderRequest has no field \"prise\"; do you mean \"price\"?"},
        {R"({"price":2147483648})", "\"price\": 2147483648 is not between -2147483648 and 2147483647"},
        {R"({"price":18446744073709551615})",
         "\"price\": 18446744073709551615 is not between -2147483648 and 2147483647"},
        {R"({"price":1.0})", "\"price\" must be a whole number"},
        {R"({"symbol":7})", "\"symbol\" must be a text"},
        {R"({"symbol":"ÀÀÀÀÀÀÀ"})", "\"symbol\": a text of 14 bytes does not fit in 12"},
        {R"({"clientCategory":"NR"})", "\"clientCategory\": a text of 2 bytes does not fit in 1"},
        {R"({"symbol":"A\u0000B"})", "\"symbol\" holds a zero character"},
    };
    for (const auto& [object, complaint] : cases) {
        tagOrderRequest order{};
        try {
            EncodeRecord(ParseLine(object), order);
            ADD_FAILURE() << object << " was taken";
        } catch (const ScriptError& error) {
            EXPECT_STREQ(error.what(), complaint);
        }
    }
    tagRPFContractRecord contract{};
    std::vector<double> values(16, 1.5);
    EncodeRecord(Json{{"riskArray", values}}, contract);
    values[15] = 1e39;
    EXPECT_THROW(EncodeRecord(Json{{"riskArray", values}}, contract), ScriptError) << "no float holds it";
    EXPECT_THROW(EncodeRecord(Json{{"riskArray", {1, 2}}}, contract), ScriptError);
}

}  // namespace
}  // namespace survhost
