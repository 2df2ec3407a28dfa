#pragma once

// The records inside a request: where they lie, and what each kind of record says about an order.

#include <cstdint>
#include <string_view>

#include "platform/fixed_text.h"
#include "surveillance/codes.h"
#include "surveillance/records.h"

namespace surv {

/// The records of a request's variable part; null for those that aren't there.
struct RequestView {
    const MessageCodeRow* message = nullptr;  ///< null: a code that the library does not know
    tagOrderRequest* order = nullptr;
    tagTradeCorrectionRequest* correction = nullptr;
    tagTradeInfo* primaryTrade = nullptr;
    tagOrderInfo* orderInfo = nullptr;
    tagTradeInfo* trade = nullptr;  ///< the trailing one
};

/// Finds the records behind the head: the primary record of the message code, then the stored order if bit 7 of
/// levelMarginFlags is set, then a trade if bit 0 of requestFlags is set.
[[nodiscard]] RequestView ViewRequest(tagSurveillanceInfo& request);

/// The account of a record: ten characters, a gap of two, up to four more; blanks taken off both ends.
[[nodiscard]] FixedText<32> AccountOf(const char (&accountText)[16]);

/// The client text of messages: the account as it stands, up to 12 characters.
[[nodiscard]] FixedText<16> ClientTextOf(const char (&clientAccount)[12]);

/// The product of a record: 0 unless the value is a product, and a conversion only at codes that convert.
[[nodiscard]] std::int16_t ProductTypeOf(std::int32_t value, std::int16_t messageCode);

}  // namespace surv
