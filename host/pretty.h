#pragma once

#include <optional>
#include <ostream>
#include <string>

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
    void OnCall(const Played& /*played*/) override {}
    void OnProgress(std::size_t bytes) override;

 private:
    std::ostream& out_;
    std::size_t total_;
    std::size_t shown_ = 0;  ///< percent
};

}  // namespace survhost
