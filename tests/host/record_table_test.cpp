// Holds the host's tables against the header that declares the records: a field that is forgotten or misplaced in a
// table would be set, or shown, as something else than the library reads. Kinds and widths follow from the members.

#include "record_table.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace survhost {
namespace {

struct Member {
    std::string type, name;
    std::size_t offset;
};

/// The members of every record of the header, with the offsets of their notes. Bytes of the host's own have no note.
std::map<std::string, std::vector<Member>> ReadHeader() {
    std::ifstream header(SURVEILLANCE_SOURCE_DIR "/include/surveillance/records.h");
    std::map<std::string, std::vector<Member>> records;
    std::string record;
    for (std::string line; std::getline(header, line);) {
        std::istringstream words(line);
        std::string first, second, third;
        std::size_t offset = 0;
        words >> first >> second >> third;
        if (first == "struct") record = third;
        if (third != "///<" || second.find(';') == std::string::npos || !(words >> offset)) continue;
        records[record].push_back({first, second.substr(0, second.find_first_of("[;")), offset});
    }
    return records;
}

TEST(RecordTable, HoldsEveryFieldOfItsRecordInPlace) {
    const auto records = ReadHeader();
    const auto note = [](const auto& name, std::size_t at) { return std::string(name) + " " + std::to_string(at); };
    for (const RecordTable* table : AllTables()) {
        SCOPED_TRACE(table->name);
        std::vector<std::string> declared, held;
        for (const Member& member : records.at(std::string(table->name))) {
            if (member.name == "rowHead") continue;  // a copy of another row's head
            const bool block = records.contains(member.type);
            if (!block) declared.push_back(note(member.name, member.offset));
            for (const Member& inner : block ? records.at(member.type) : std::vector<Member>{}) {
                declared.push_back(note(inner.name, member.offset + inner.offset));
            }
        }
        for (const Field& field : table->fields) held.push_back(note(field.name, field.offset));
        EXPECT_EQ(held, declared);
    }
}

TEST(RecordTable, TheLimitsOfALimitRowDefaultToNoLimit) {
    for (const Field& field : TableOf<BKSurveillanceLimitDefTag>().fields) {
        const bool limit = field.name.ends_with("Limit") || field.name.ends_with("Multiplier") ||
                           field.name.starts_with("maxSingle") || field.name.starts_with("minSingle");
        EXPECT_EQ(field.defaultValue, limit ? -1 : 0) << field.name;
    }
}

}  // namespace
}  // namespace survhost
