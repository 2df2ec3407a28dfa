#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "call_table.h"
#include "surveillance/host.h"

namespace survhost {
namespace {

/// What stands behind the head of a message of a risk parameter file, and the argument that gives it.
struct MessageForm {
    std::int16_t code;
    std::size_t bodySize;
    std::string_view argument;                ///< empty: the body is none, or all zero
    const RecordTable& (*table)() = nullptr;  ///< null: the argument is a number
};

constexpr std::array kMessageForms{
    MessageForm{28003, sizeof(tagRPFFileDetails), ""},
    MessageForm{28005, sizeof(std::int32_t), "count"},
    MessageForm{28006, sizeof(tagRPFUnderlyingRecord), "underlying", &TableOf<tagRPFUnderlyingRecord>},
    MessageForm{28008, sizeof(std::int32_t), "count"},
    MessageForm{28009, sizeof(tagRPFContractRecord), "contract", &TableOf<tagRPFContractRecord>},
};

/// Every other code, known or not, is a head alone.
MessageForm FormOf(std::int16_t code) {
    const auto found =
        std::find_if(kMessageForms.begin(), kMessageForms.end(), [&](const MessageForm& f) { return f.code == code; });
    return found == kMessageForms.end() ? MessageForm{code, 0, ""} : *found;
}

void RefuseOtherBodies(const MessageForm& form, const Arguments& arguments) {
    for (const std::string_view other : {"underlying", "contract", "count"}) {
        if (other != form.argument && arguments.Has(other)) {
            throw ScriptError(fmt::format("message code {} takes no \"{}\"", form.code, other));
        }
    }
}

void WriteBody(const MessageForm& form, const Arguments& arguments, char* body) {
    if (form.table) {
        if (!arguments.Has(form.argument)) {
            throw ScriptError(fmt::format("message code {} needs \"{}\"", form.code, form.argument));
        }
        arguments.RecordInto(form.table(), form.argument, body);
    } else if (!form.argument.empty()) {
        const std::int32_t number = arguments.Long(form.argument);
        std::memcpy(body, &number, sizeof number);
    }
}

}  // namespace

/// The bytes are as many as the code asks for, whatever length the head claims: a library that trusted the claim
/// would read beyond them.
void CallProcessRpf(Session&, const Arguments& arguments, Json& answer) {
    const MessageForm form = FormOf(arguments.Short("messageCode"));
    RefuseOtherBodies(form, arguments);
    std::vector<char> message(sizeof(tagRPFHeader) + form.bodySize);
    WriteBody(form, arguments, message.data() + sizeof(tagRPFHeader));

    const auto length = static_cast<std::int32_t>(message.size());
    tagRPFHeader head{};
    head.messageCode = form.code;
    head.messageLength =
        arguments.Has("messageLength") ? arguments.Short("messageLength") : static_cast<std::int16_t>(length);
    head.segment = arguments.Short("segment");
    std::memcpy(message.data(), &head, sizeof head);
    answer["result"] = ::ProcessRPFInfo(message.data(), length, arguments.Short("toStaging"));
}

/// The library goes through the values and doesn't look at the keys, so any will do that differ.
void CallAdditionalMargin(Session&, const Arguments& arguments, Json& answer) {
    auto records = arguments.Records<tagAdditionalMarginInfo>("map");
    CMapStringToOb map;
    for (std::size_t i = 0; i < records.size(); ++i) PutRecord(map, std::to_string(i).c_str(), records[i]);
    answer["result"] = ::InitializeAllAdditionalMarginInfo(&map);
}

}  // namespace survhost
