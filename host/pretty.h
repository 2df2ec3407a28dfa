#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "order_view.h"
#include "replay.h"
#include "text_format.h"

namespace survhost {

/// A call as one line for people: an order in aligned columns with its verdict, any other call in short.
std::string PrettyLine(const Played& played, const Painter& painter);
/// The line of an order.
std::string PrettyOrder(const OrderView& order, std::optional<std::int64_t> now, const Painter& painter);

/// Writes a line for each call.
class PrettyPrinter : public Observer {
 public:
    PrettyPrinter(std::ostream& out, Painter painter) : out_(out), painter_(painter) {}
    void OnCall(const Played& played) override { out_ << PrettyLine(played, painter_) << '\n'; }

 private:
    std::ostream& out_;
    Painter painter_;
};

/// Shows on a terminal's last line how much of the scripts has been played, and removes itself at the end.
class ProgressBar : public Observer {
 public:
    /// total: bytes of all scripts.
    ProgressBar(std::ostream& out, std::size_t total) : out_(out), total_(total) {}
    ~ProgressBar() override;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    /// Of a start with many rows it tells how many, since that one call may take long.
    void BeforeCall(const Json& line) override;
    void OnCall(const Played& /*played*/) override {}
    void OnProgress(std::size_t bytes) override;

 private:
    void Draw(std::string_view note);

    std::ostream& out_;
    std::size_t total_;
    std::size_t percent_ = 0;
    bool drawn_ = false;
};

}  // namespace survhost
