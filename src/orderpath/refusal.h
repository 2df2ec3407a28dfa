#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/clock.h"
#include "platform/fixed_text.h"
#include "shared/refusal_table.h"
#include "surveillance/codes.h"
#include "surveillance/records.h"

namespace surv {

/// Why an order is refused, as it goes to the host.
struct Refusal {
    std::int16_t status = status::kRefused;
    std::int16_t code = 0;
    CodeUse codeUse = CodeUse::kNone;
    std::string text;
};

/// A refusal of the table, in its own words or in those formed from them.
[[nodiscard]] inline Refusal MakeRefusal(const RefusalRow& row, std::string text) {
    return {row.status, row.code, row.codeUse, std::move(text)};
}
[[nodiscard]] inline Refusal MakeRefusal(const RefusalRow& row) { return MakeRefusal(row, row.text); }

/// Writes status and error record. The time is set on every refusal.
inline void WriteRefusal(const Refusal& refusal, const CClock& clock, tagOrdErrMessage& error, short& status) {
    status = refusal.status;
    error.timeStamp = clock.Stamp();
    if (refusal.codeUse != CodeUse::kNone) error.errorCode = refusal.code;
    if (refusal.codeUse == CodeUse::kErrorAndHeadCode) error.headCode = refusal.code;
    WriteField(error.errorText, refusal.text);
}

/// "client|text": how most refusals begin.
[[nodiscard]] inline std::string WithClientText(const FixedText<16>& clientText, std::string_view text) {
    return std::string{clientText.View()}.append("|").append(text);
}

}  // namespace surv
