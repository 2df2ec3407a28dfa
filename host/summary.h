#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "order_view.h"
#include "replay.h"
#include "text_format.h"

namespace survhost {

/// How much of one limit of one row is used.
struct LimitUse {
    std::string entity;
    std::string scope;  ///< what the row's mask covers, and its token unless it is all securities
    std::string limit;  ///< "gross exposure"
    double usedPaise = 0;
    double limitPaise = 0;
    double share = 0;  ///< used / limit; infinite for a limit of 0 that is used
};

/// The limits of a row (as decoded) that are in use.
std::vector<LimitUse> LimitUses(const Json& row);

/// Counts what a run did, and tells it at the end.
class Summary : public Observer {
 public:
    void OnCall(const Played& played) override;
    /// Writes the counts and the most used limits as they stand now.
    void Print(std::ostream& out, Session& session, const Painter& painter) const;

 private:
    using Rule = std::pair<int, std::string>;  ///< error code, rule

    void PrintRefusals(std::ostream& out, const Painter& painter) const;
    static void PrintLimits(std::ostream& out, Session& session, const Painter& painter);

    std::array<std::size_t, 5> outcomes_{};  ///< by Outcome
    std::map<Rule, std::size_t> byRule_;
    std::map<std::string, std::size_t> byLevel_;
    std::size_t otherCalls_ = 0;
};

}  // namespace survhost
