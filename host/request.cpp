#include "request.h"

#include <fmt/format.h>

#include <array>
#include <cstring>

#include "surveillance/codes.h"

namespace survhost {
namespace {

constexpr std::uint8_t kStoredOrderFollows = 0x80;  ///< levelMarginFlags
constexpr std::uint8_t kTradeFollows = 0x01;        ///< requestFlags

/// How the first record of the variable part is called in a script, and what it is.
struct PrimaryForm {
    surv::PrimaryRecord kind;
    std::string_view argument;
    const RecordTable& (*table)();
};

constexpr std::array kPrimaryForms{
    PrimaryForm{surv::PrimaryRecord::kOrderRequest, "order", &TableOf<tagOrderRequest>},
    PrimaryForm{surv::PrimaryRecord::kTradeCorrection, "tradeCorrection", &TableOf<tagTradeCorrectionRequest>},
    PrimaryForm{surv::PrimaryRecord::kTradeInfo, "trade", &TableOf<tagTradeInfo>},
};

/// The primary record of the line. An unknown code may come with any, since nothing of it is read.
const PrimaryForm* FindPrimary(std::int16_t code, const Arguments& arguments) {
    const surv::MessageCodeRow* row = surv::FindMessageCode(code);
    for (const PrimaryForm& form : kPrimaryForms) {
        const bool trailing = form.kind == surv::PrimaryRecord::kTradeInfo;
        if (row ? row->primary == form.kind : !trailing && arguments.Has(form.argument)) return &form;
    }
    return nullptr;
}

/// A code without a primary record may still be told with the order or correction that it is about: it takes no room
/// in the request. Where the code has a primary record, another one is a mistake.
void RefuseOtherPrimaries(const PrimaryForm& primary, std::int16_t code, const Arguments& arguments) {
    for (const std::string_view other : {"order", "tradeCorrection"}) {
        if (other != primary.argument && arguments.Has(other)) {
            throw ScriptError(fmt::format("message code {} takes no \"{}\"", code, other));
        }
    }
}

}  // namespace

Request::Request(const Arguments& arguments) {
    Append(arguments, TableOf<tagSurveillanceInfo>(), "request");
    AppendPrimary(arguments);
    AppendStoredOrder(arguments);
    AppendTrailingTrade(arguments);
}

const tagOrderRequest* Request::Order() const {
    return hasOrder_ ? reinterpret_cast<const tagOrderRequest*>(bytes_.data() + sizeof(tagSurveillanceInfo)) : nullptr;
}

/// A fresh buffer each time: a vector that grew would own bytes behind the last record.
std::size_t Request::Append(const Arguments& arguments, const RecordTable& table, std::string_view name) {
    const std::size_t place = bytes_.size();
    std::vector<char> longer(place + table.size);
    std::copy(bytes_.begin(), bytes_.end(), longer.begin());
    bytes_ = std::move(longer);
    arguments.RecordInto(table, name, bytes_.data() + place);
    return place;
}

/// REQUIRES: the head stands, since it holds the message code.
void Request::AppendPrimary(const Arguments& arguments) {
    const std::int16_t code = Head()->messageCode;
    const PrimaryForm* primary = FindPrimary(code, arguments);
    if (!primary) return;
    if (!arguments.Has(primary->argument)) {
        throw ScriptError(fmt::format("message code {} needs \"{}\"", code, primary->argument));
    }
    RefuseOtherPrimaries(*primary, code, arguments);
    hasOrder_ = primary->kind == surv::PrimaryRecord::kOrderRequest;
    tradeIsPrimary_ = primary->kind == surv::PrimaryRecord::kTradeInfo;
    const std::size_t record = Append(arguments, primary->table(), primary->argument);
    TakeExchangeMask(arguments, primary->table(), record);
}

/// The library reads the mask of the head in some tests and that of the record in others; they differ only if the
/// script says so.
void Request::TakeExchangeMask(const Arguments& arguments, const RecordTable& table, std::size_t record) {
    if (arguments.Need("request").contains("exchangeMask")) return;
    const std::size_t offset = table.Find("exchangeMask")->offset;
    std::memcpy(bytes_.data() + offsetof(tagSurveillanceInfo, exchangeMask), bytes_.data() + record + offset,
                sizeof(std::int16_t));
}

/// A flag without its record would make the library read beyond the request.
void Request::AppendStoredOrder(const Arguments& arguments) {
    if (arguments.Has("orderInfo")) {
        Append(arguments, TableOf<tagOrderInfo>(), "orderInfo");
        Head()->levelMarginFlags = static_cast<std::uint8_t>(Head()->levelMarginFlags | kStoredOrderFollows);
    } else if ((Head()->levelMarginFlags & kStoredOrderFollows) != 0) {
        throw ScriptError("bit 7 of \"levelMarginFlags\" is set, but \"orderInfo\" is missing");
    }
}

void Request::AppendTrailingTrade(const Arguments& arguments) {
    if (arguments.Has("trade") && !tradeIsPrimary_) {
        Append(arguments, TableOf<tagTradeInfo>(), "trade");
        Head()->requestFlags = static_cast<std::uint8_t>(Head()->requestFlags | kTradeFollows);
    } else if ((Head()->requestFlags & kTradeFollows) != 0) {
        throw ScriptError("bit 0 of \"requestFlags\" is set, but no \"trade\" follows");
    }
}

}  // namespace survhost
