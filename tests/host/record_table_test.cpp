// Holds the host's tables against the header that declares the records: a field that is forgotten, misplaced or of
// another width in a table would be set, or shown, as something else than the library reads.

#include "record_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace survhost {
namespace {

struct Member {
    std::string type;
    std::string name;
    std::size_t count;
    std::size_t offset;
};
using Records = std::map<std::string, std::vector<Member>>;

/// "symbol[13];" as name and count.
Member Declared(const std::string& type, const std::string& declarator, std::size_t offset) {
    const auto bracket = declarator.find('[');
    const auto end = std::min(bracket, declarator.find(';'));
    return {type, declarator.substr(0, end),
            bracket == std::string::npos ? 1 : std::stoul(declarator.substr(bracket + 1)), offset};
}

/// The members of every record of the header, with the offsets of their notes. Bytes of the host's own have no note.
Records ReadHeader() {
    std::ifstream header(SURVEILLANCE_SOURCE_DIR "/include/surveillance/records.h");
    Records records;
    std::string record;
    for (std::string line; std::getline(header, line);) {
        std::istringstream words(line);
        std::string first;
        std::string second;
        std::string third;
        std::size_t offset = 0;
        words >> first >> second >> third;
        if (first == "struct") record = third;
        if (third == "//" && second.find(';') != std::string::npos && words >> offset) {
            records[record].push_back(Declared(first, second, offset));
        }
    }
    return records;
}

/// The record's members with those of its blocks in their place.
std::vector<Member> Flat(const Records& records, const std::string& record) {
    std::vector<Member> flat;
    for (const Member& member : records.at(record)) {
        if (!records.contains(member.type)) {
            flat.push_back(member);
            continue;
        }
        for (Member inner : records.at(member.type)) {
            inner.offset += member.offset;
            flat.push_back(inner);
        }
    }
    return flat;
}

FieldKind KindNamed(const std::string& type) {
    static const std::map<std::string, FieldKind> kKinds{
        {"std::uint8_t", FieldKind::kByte}, {"std::int16_t", FieldKind::kShort}, {"std::int32_t", FieldKind::kLong},
        {"float", FieldKind::kFloat},       {"double", FieldKind::kDouble},      {"char", FieldKind::kText}};
    return kKinds.at(type);
}

TEST(RecordTable, HoldsEveryFieldOfItsRecordInPlace) {
    const Records records = ReadHeader();
    for (const RecordTable* table : AllTables()) {
        SCOPED_TRACE(table->name);
        ASSERT_TRUE(records.contains(std::string(table->name)));
        std::size_t found = 0;
        for (const Member& member : Flat(records, std::string(table->name))) {
            if (member.name == "rowHead") continue;  // a copy of another row's head
            SCOPED_TRACE(member.name);
            const Field* field = table->Find(member.name);
            ASSERT_NE(field, nullptr);
            EXPECT_EQ(field->offset, member.offset);
            EXPECT_EQ(field->kind, KindNamed(member.type));
            const bool text = member.type == "char";
            EXPECT_EQ(text ? field->width : field->count, member.count);
            ++found;
        }
        EXPECT_EQ(table->fields.size(), found);
    }
}

TEST(RecordTable, FieldsFollowEachOtherWithinTheRecord) {
    for (const RecordTable* table : AllTables()) {
        SCOPED_TRACE(table->name);
        std::size_t end = 0;
        for (const Field& field : table->fields) {
            EXPECT_GE(field.offset, end) << field.name;
            end = field.End();
        }
        EXPECT_LE(end, table->size);
    }
}

TEST(RecordTable, TwentyOneFieldsOfALimitRowDefaultToNoLimit) {
    std::size_t none = 0;
    for (const Field& field : TableOf<BKSurveillanceLimitDefTag>().fields) {
        const bool limit = field.name.ends_with("Limit") || field.name.ends_with("Multiplier") ||
                           field.name.starts_with("maxSingle") || field.name.starts_with("minSingle");
        EXPECT_EQ(field.defaultValue, limit ? -1 : 0) << field.name;
        none += field.defaultValue == -1 ? 1 : 0;
    }
    EXPECT_EQ(none, 21u);
}

}  // namespace
}  // namespace survhost
