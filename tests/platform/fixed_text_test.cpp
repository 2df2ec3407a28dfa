#include "platform/fixed_text.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace surv {
namespace {

TEST(FixedText, AFieldIsReadToItsFirstZeroAndWrittenToFit) {
    const struct {
        const char* name;
        std::string field, text, writtenBack;
    } cases[] = {
        {"terminated", {'A', 'B', '\0', 'x'}, "AB", {'A', 'B', '\0', '\0'}},
        {"full", "ABCD", "ABCD", {'A', 'B', 'C', '\0'}},
        {"empty", {'\0', 'x', 'x', 'x'}, "", std::string(4, '\0')},
        {"blanks count", {' ', 'A', ' ', '\0'}, " A ", {' ', 'A', ' ', '\0'}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        // On the heap, so that a read past the end is seen.
        const auto bytes = std::make_unique<char[]>(4);
        auto& field = *reinterpret_cast<char(*)[4]>(bytes.get());
        std::memcpy(field, c.field.data(), 4);
        EXPECT_EQ(FieldText(field), c.text);
        EXPECT_EQ(HostText(field, 4), c.text);
        WriteField(field, c.text);
        EXPECT_EQ(std::string(field, 4), c.writtenBack);
    }
    EXPECT_EQ(HostText(nullptr, 4), "");
}

TEST(FixedText, EqualTextsAreEqualWhateverStoodThereBefore) {
    FixedText<16> code = "ALONGERCODE";
    code = "D1";
    EXPECT_EQ(code, FixedText<16>{"D1"});
    EXPECT_EQ(code.Hash(), FixedText<16>{"D1"}.Hash());
    EXPECT_FALSE(code == FixedText<16>{"D1 "});
    EXPECT_FALSE(FixedText<16>{"ABCDEFGHIJ"} == FixedText<16>{"ABCDEFGHIK"}) << "in the second word";
    EXPECT_EQ(FixedText<8>{"LONGCODE9"}.View(), "LONGCODE") << "cut at its capacity";
    for (const auto& [text, trimmed] : {std::pair{"  A B ", "A B"}, {"   ", ""}, {"", ""}, {"A", "A"}}) {
        EXPECT_EQ(Trimmed(text), trimmed);
    }
}

}  // namespace
}  // namespace surv
