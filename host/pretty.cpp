#include "pretty.h"

#include <fmt/format.h>

#include <algorithm>

#include "surveillance/codes.h"

namespace survhost {
namespace {

/// Words as they follow a verdict.
std::string Behind(const std::string& words) { return words.empty() ? "" : "  " + words; }

/// Empty for a message that comes without a record.
std::string QuantityAtPrice(const OrderView& order) {
    if (order.side.empty() && order.quantity == 0) return {};
    const std::string price = order.price == 0 ? "market" : Rupees(order.price);
    return fmt::format("{:>9} @ {:>12}", Grouped(order.quantity), price);
}

std::string Verdict(const OrderView& order, const Painter& painter) {
    switch (order.outcome) {
        case Outcome::kAccepted: return painter.Paint(Colour::kGreen, "ACCEPTED");
        case Outcome::kTaken: return painter.Paint(Colour::kDim, "taken in");
        case Outcome::kNotDone: return painter.Paint(Colour::kYellow, "NOT DONE") + Behind(order.words);
        case Outcome::kProbed: return painter.Paint(Colour::kYellow, "PROBED") + Behind(order.words);
        case Outcome::kRefused: break;
    }
    const std::string level = Squeezed(order.level + " " + order.levelCode);
    const std::string where = fmt::format(" [{}, {}]", order.errorCode, level);
    return painter.Paint(Colour::kRed, "REFUSED") + where + Behind(order.words);
}

/// A plain value without quotes.
std::string Plain(const Json& value) {
    std::string text;
    if (value.is_string()) return value.get<std::string>();
    WriteJson(value, text);
    return text;
}

/// "name=value" of the first few plain fields, to tell one record from another.
std::string Brief(const Json& object) {
    std::string text;
    for (int left = 3; const auto& [name, value] : object.items()) {
        if (value.is_structured() || left-- <= 0) continue;
        text += fmt::format("{}{}={}", text.empty() ? "" : " ", name, Plain(value));
    }
    return text;
}

std::string Described(const std::string& name, const Json& value) {
    if (value.is_array()) return fmt::format("{}[{}]", name, value.size());
    if (value.is_object()) return fmt::format("{}({})", name, Brief(value));
    return fmt::format("{}={}", name, Plain(value));
}

/// "done", or what came back instead.
std::string Result(const Json& answer, const Painter& painter) {
    const auto result = answer.find("result");
    if (result == answer.end() || *result == surv::kDone) return painter.Paint(Colour::kDim, "done");
    if (*result == surv::kNotDone) return painter.Paint(Colour::kYellow, "NOT DONE");
    return result->dump();
}

/// The call with its arguments, what it returned, what it gave out and what it said.
std::string PrettyCall(const Played& played, const Painter& painter) {
    std::string text = fmt::format("{}  {}", TimeOfDay(played.now), TextAt(played.line, "call"));
    for (const auto& [name, value] : played.line.items()) {
        if (name != "call") text += " " + Described(name, value);
    }
    text += "  " + Result(played.answer, painter);
    for (const auto& [name, value] : played.answer.items()) {
        if (name != "call" && name != "result" && name != "notifications") text += "  " + Described(name, value);
    }
    if (const auto said = played.answer.find("notifications"); said != played.answer.end()) {
        for (const Json& line : *said) text += fmt::format("  \"{}\"", line.get<std::string>());
    }
    return text;
}

}  // namespace

std::string PrettyOrder(const OrderView& order, std::optional<std::int64_t> now, const Painter& painter) {
    return fmt::format("{}  {:<12} {:<12} {:<4} {:>24}  {:<24} {:<22} {}", TimeOfDay(now), order.action, order.product,
                       order.side, QuantityAtPrice(order), order.symbol, order.path, Verdict(order, painter));
}

std::string PrettyLine(const Played& played, const Painter& painter) {
    const auto order = ViewOrder(played);
    return order ? PrettyOrder(*order, played.now, painter) : PrettyCall(played, painter);
}

ProgressBar::~ProgressBar() {
    if (drawn_) out_ << "\r\x1b[K" << std::flush;
}

void ProgressBar::BeforeCall(const Json& line) {
    constexpr std::size_t kMany = 10'000;
    std::size_t rows = 0;
    for (const char* list : {"limitList", "exposureList"}) {
        if (const auto found = line.find(list); found != line.end()) rows += found->size();
    }
    if (rows >= kMany) Draw(fmt::format("starting with {} rows", Grouped(static_cast<std::int64_t>(rows))));
}

void ProgressBar::OnProgress(std::size_t bytes) {
    const std::size_t percent = total_ == 0 ? 0 : std::min<std::size_t>(bytes * 100 / total_, 100);
    if (percent == percent_) return;
    percent_ = percent;
    Draw("");
}

void ProgressBar::Draw(std::string_view note) {
    constexpr std::size_t kWidth = 40;
    const std::size_t filled = kWidth * percent_ / 100;
    out_ << fmt::format("\r[{}{}] {:>3} %  {}\x1b[K", std::string(filled, '#'), std::string(kWidth - filled, ' '),
                        percent_, note)
         << std::flush;
    drawn_ = true;
}

}  // namespace survhost
