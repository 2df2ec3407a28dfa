#pragma once

// The margin rules: what a row uses, in rupees, against its marginLimit. Every set has its own; all weigh the exposure
// margin, the MTM and the booked profit or loss as far as the client's preference counts them, but those of the report.
// The words of a rule are a form of its row in the table.

#include <string>

#include "limits/limit_rules.h"

namespace surv {

// The general set: the largest of the three views.
[[nodiscard]] bool MarginApplies(const RuleInput& in);
[[nodiscard]] RuleFigures GeneralMargin(const RuleInput& in);
[[nodiscard]] std::string GeneralMarginText(const RuleInput& in, const char* form);

// The report set judges the row as it stood before the order, with or without its exposure margin.
[[nodiscard]] bool InitialMarginApplies(const RuleInput& in);
[[nodiscard]] RuleFigures InitialMargin(const RuleInput& in);
[[nodiscard]] std::string InitialMarginText(const RuleInput& in, const char* form);
[[nodiscard]] bool SpanMarginApplies(const RuleInput& in);
[[nodiscard]] RuleFigures SpanMargin(const RuleInput& in);
[[nodiscard]] std::string SpanMarginText(const RuleInput& in, const char* form);

// Deliveries and margin funding: the worst case. Two-leg orders: the largest of the three views.
[[nodiscard]] RuleFigures DeliveryMargin(const RuleInput& in);
[[nodiscard]] std::string DeliveryMarginText(const RuleInput& in, const char* form);
[[nodiscard]] RuleFigures MarginPlusMargin(const RuleInput& in);
[[nodiscard]] std::string MarginPlusMarginText(const RuleInput& in, const char* form);
[[nodiscard]] RuleFigures MtfMargin(const RuleInput& in);
[[nodiscard]] std::string MtfMarginText(const RuleInput& in, const char* form);

}  // namespace surv
