#pragma once

/// @file
/// The numbers that cross the boundary: segments, exchange masks, limit masks, products, event kinds, message
/// codes, answers. Values leave the process: add to them, never renumber.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The numbers of the boundary.
namespace surv {

// ---------------------------------------------------------------------------------------------------------------
// Markets

/// Market segments.
enum class Segment : std::int16_t {
    kNone = 0,          ///< no market
    kNseEquity = 1,     ///< NSE cash
    kNseFutures = 2,    ///< NSE futures
    kNseOptions = 3,    ///< NSE options
    kBseEquity = 4,     ///< BSE cash
    kBseFutures = 5,    ///< BSE futures
    kBseOptions = 6,    ///< BSE options
    kMcxFutures = 7,    ///< MCX futures
    kNcdexFutures = 8,  ///< NCDEX futures
};

// Exchange masks as the host sends them.
inline constexpr std::int16_t kMaskNseCash = 1;         ///< exchange mask
inline constexpr std::int16_t kMaskNseDerivatives = 2;  ///< exchange mask
inline constexpr std::int16_t kMaskBseDerivatives = 4;  ///< exchange mask
inline constexpr std::int16_t kMaskBseCash = 8;         ///< exchange mask
inline constexpr std::int16_t kMaskMcx = 0x10;          ///< exchange mask
inline constexpr std::int16_t kMaskNcdex = 0x40;        ///< exchange mask

/// What belongs to one segment.
struct SegmentRow {
    std::int16_t segment;       ///< its number
    std::int16_t exchangeMask;  ///< of the exchange that it is traded on
    std::int16_t segmentBit;    ///< its bit in limit masks
};

/// Segment, exchange mask and segment bit belong together; the bit of segment n is 1 << n.
inline constexpr std::array kSegments{
    SegmentRow{1, kMaskNseCash, 2},          // NSE equity
    SegmentRow{2, kMaskNseDerivatives, 4},   // NSE futures
    SegmentRow{3, kMaskNseDerivatives, 8},   // NSE options
    SegmentRow{4, kMaskBseCash, 16},         // BSE equity
    SegmentRow{5, kMaskBseDerivatives, 32},  // BSE futures
    SegmentRow{6, kMaskBseDerivatives, 64},  // BSE options
    SegmentRow{7, kMaskMcx, 128},            // MCX futures
    SegmentRow{8, kMaskNcdex, 256},          // NCDEX futures
};
/// Segments in use.
inline constexpr std::size_t kSegmentCount = kSegments.size();

/// Tests of the tables.
namespace detail {
/// Each segment stands at its number.
constexpr bool SegmentsAreDense() {
    for (std::size_t i = 0; i < kSegments.size(); ++i) {
        const auto number = static_cast<std::int16_t>(i + 1);
        if (kSegments[i].segment != number || kSegments[i].segmentBit != (1 << number)) return false;
    }
    return true;
}
}  // namespace detail
static_assert(detail::SegmentsAreDense(), "one row per segment, in order, with its own bit");

/// 1 to 8.
constexpr bool IsSegment(std::int16_t segment) {
    return segment >= 1 && segment <= static_cast<std::int16_t>(kSegmentCount);
}

/// 0 gives 0; an unknown segment gives -1.
constexpr std::int16_t SegmentToExchangeMask(std::int16_t segment) {
    if (IsSegment(segment)) return kSegments[static_cast<std::size_t>(segment - 1)].exchangeMask;
    return segment == 0 ? std::int16_t{0} : std::int16_t{-1};
}

/// An unknown segment gives 0.
constexpr std::int16_t SegmentToBit(std::int16_t segment) {
    return IsSegment(segment) ? kSegments[static_cast<std::size_t>(segment - 1)].segmentBit : std::int16_t{0};
}

/// Market segment of a contract: an option has a strike (in paise) of 1 or more. A mask that names no market, and
/// an option on a commodity exchange, give 0.
constexpr std::int16_t SegmentOfContract(std::int16_t exchangeMask, std::int32_t strikePrice) {
    const bool option = strikePrice >= 1;
    switch (exchangeMask) {
        case kMaskNseCash: return 1;
        case kMaskBseCash: return 4;
        case kMaskNseDerivatives: return option ? 3 : 2;
        case kMaskBseDerivatives: return option ? 6 : 5;
        case kMaskMcx: return option ? 0 : 7;
        case kMaskNcdex: return option ? 0 : 8;
        default: return 0;
    }
}

/// NSE or BSE cash.
constexpr bool IsCashExchange(std::int16_t exchangeMask) {
    return exchangeMask == kMaskNseCash || exchangeMask == kMaskBseCash;
}
/// The same by segment.
constexpr bool IsCashSegment(std::int16_t segment) { return segment == 1 || segment == 4; }

// ---------------------------------------------------------------------------------------------------------------
// Limit masks: a set of segment bits; bit 0 is clear for the daily period, set for expiry or settlement.

inline constexpr std::int16_t kSegmentBits = 0x1FE;  ///< the bits of all segments
inline constexpr std::int16_t kExpiryBit = 1;        ///< set: expiry or settlement; clear: daily

/// One limit mask.
struct LimitMaskRow {
    std::int16_t mask;       ///< segment bits and the expiry bit
    std::string_view label;  ///< what a refusal at a row of this mask ends in; blanks count
};

/// The limit masks in use.
inline constexpr std::array kLimitMasks{
    LimitMaskRow{2, " of Equity ( NSE-Daily) "},         LimitMaskRow{3, " of Equity ( NSE-Settlement) "},
    LimitMaskRow{4, " of Futures ( NSE-Daily)"},         LimitMaskRow{5, " of Futures ( NSE-Expiry)"},
    LimitMaskRow{8, " of Options ( NSE-Daily)"},         LimitMaskRow{9, " of Options ( NSE-Expiry)"},
    LimitMaskRow{12, " of Derivatives ( NSE-Daily)"},    LimitMaskRow{13, " of Derivatives ( NSE-Expiry)"},
    LimitMaskRow{14, " of Combined  (NSE-Daily)"},       LimitMaskRow{15, " of Combined  (NSE-Expiry)"},
    LimitMaskRow{16, " of Equity ( BSE-Daily) "},        LimitMaskRow{17, " of Equity ( BSE-Settlement) "},
    LimitMaskRow{18, " of Combined Equity (Daily)"},     LimitMaskRow{19, " of Combined Equity (Settlement)"},
    LimitMaskRow{32, " of Futures ( BSE-Daily)"},        LimitMaskRow{33, " of Futures ( BSE-Expiry)"},
    LimitMaskRow{64, " of Options ( BSE-Daily)"},        LimitMaskRow{65, " of Options ( BSE-Expiry)"},
    LimitMaskRow{96, " of Derivatives ( BSE-Daily)"},    LimitMaskRow{97, " of Derivatives ( BSE-Expiry)"},
    LimitMaskRow{126, " of Combined (Daily)"},           LimitMaskRow{127, " of Combined (Expiry)"},
    LimitMaskRow{128, " of Futures ( MCX-Daily)"},       LimitMaskRow{129, " of Futures ( MCX-Expiry)"},
    LimitMaskRow{256, " of Futures ( NDX-Daily)"},       LimitMaskRow{257, " of Futures ( NDX-Expiry)"},
    LimitMaskRow{384, " of Combined Commodity (Daily)"}, LimitMaskRow{385, " of Combined Commodity (Expiry)"},
    LimitMaskRow{510, " of Combined ALL (Daily)"},       LimitMaskRow{511, " of Combined ALL (Expiry)"},
};

/// The scopes, narrowest first: the order in which the limit rows of an order are asked. Each scope stands for its
/// daily mask (as printed) and its expiry mask (plus 1).
inline constexpr std::array<std::int16_t, 15> kScopeOrder{2,    0x10, 4,    8,    0xC,   0x20,  0x40, 0x60,
                                                          0x12, 0xE,  0x7E, 0x80, 0x100, 0x180, 0x1FE};

/// Empty for a mask that is not in use.
constexpr std::string_view LimitMaskLabel(std::int16_t mask) {
    for (const LimitMaskRow& row : kLimitMasks) {
        if (row.mask == mask) return row.label;
    }
    return {};
}

/// The segment bits of the mask are none or one.
constexpr bool IsSingleSegment(std::int16_t mask) {
    const int bits = mask & kSegmentBits;
    return (bits & (bits - 1)) == 0;
}

/// All segment bits of `mask` lie in `set`.
constexpr bool MaskWithin(std::int16_t mask, std::int32_t set) { return (mask & kSegmentBits & ~set) == 0; }

/// A single-segment mask gives its segment, anything else 0.
constexpr std::int16_t LimitMaskToSegment(std::int16_t mask) {
    for (const SegmentRow& row : kSegments) {
        if ((mask & ~kExpiryBit) == row.segmentBit) return row.segment;
    }
    return 0;
}

/// A single-segment mask gives its exchange mask, anything else -1.
constexpr std::int16_t LimitMaskToExchangeMask(std::int16_t mask) {
    const std::int16_t segment = LimitMaskToSegment(mask);
    return segment == 0 ? std::int16_t{-1} : SegmentToExchangeMask(segment);
}

/// As LimitMaskToExchangeMask, and the expiry masks of the combined scopes. The daily combined masks have no
/// exchange of their own.
constexpr std::int16_t CombinedMaskToExchangeMask(std::int16_t mask) {
    switch (mask) {
        case 0xD:
        case 0xF:
        case 0x7F:
        case 0x1FF: return kMaskNseDerivatives;
        case 0x61: return kMaskBseDerivatives;
        case 0x181: return kMaskNcdex;
        default: return LimitMaskToExchangeMask(mask);
    }
}

/// The two periods that positions and limits are kept for.
enum class Period : std::int16_t {
    kExpiry = 1,  ///< until expiry or settlement
    kDaily = 2,   ///< of the day
};

/// The single-segment limit mask of a segment and a period.
constexpr std::int16_t PeriodicityOf(std::int16_t segment, Period period) {
    const int bit = SegmentToBit(segment);
    return static_cast<std::int16_t>(period == Period::kDaily ? bit : bit + kExpiryBit);
}

// ---------------------------------------------------------------------------------------------------------------
// Orders

inline constexpr std::int16_t kBuy = 1;   ///< buySell
inline constexpr std::int16_t kSell = 2;  ///< buySell

inline constexpr std::int16_t kProClientOwn = 2;  ///< proClient: 1 client, 2 own account

/// productType. 0: the record named no product.
namespace product {
inline constexpr std::int16_t kNone = 0;                  ///< the record names none
inline constexpr std::int16_t kMargin = 1;                ///< on margin
inline constexpr std::int16_t kDelivery = 2;              ///< paid and delivered
inline constexpr std::int16_t kMarginPlus = 4;            ///< two-leg bracket order
inline constexpr std::int16_t kMtf = 8;                   ///< margin funding
inline constexpr std::int16_t kAmoMargin = 9;             ///< after-market
inline constexpr std::int16_t kAmoDelivery = 10;          ///< after-market
inline constexpr std::int16_t kConvertToDelivery = 0x10;  ///< a margin position becomes a delivery
inline constexpr std::int16_t kConvertToMargin = 0x20;    ///< a delivery becomes a margin position
}  // namespace product

/// orderEventKind
namespace event {
inline constexpr std::int16_t kOrder = 1;             ///< an order enters, changes or ends
inline constexpr std::int16_t kTrade = 2;             ///< an order is traded
inline constexpr std::int16_t kCorrection = 3;        ///< a trade is corrected
inline constexpr std::int16_t kMarginPlusChange = 8;  ///< a leg of a two-leg order changes
inline constexpr std::int16_t kMarginPlusEnd = 9;     ///< a leg of a two-leg order ends
}  // namespace event

/// Level type bytes that the order path tests.
namespace level {
inline constexpr int kClientsDealer = 0;  ///< dealerType: the order belongs to a client of the dealer
inline constexpr int kFamily = 8;         ///< fixed value of the family level
inline constexpr int kNone = 255;         ///< clientType, subClientType: no such level
}  // namespace level

/// What a message carries as its first record in the variable part.
enum class PrimaryRecord : std::uint8_t {
    kNone,             ///< nothing; a tagOrderInfo may follow
    kOrderRequest,     ///< a tagOrderRequest
    kTradeInfo,        ///< a tagTradeInfo
    kTradeCorrection,  ///< a tagTradeCorrectionRequest
};

/// One message code of a request.
struct MessageCodeRow {
    std::int16_t code;      ///< messageCode of tagSurveillanceInfo
    bool inCheck;           ///< CheckSurveillance accepts it
    bool inUpdate;          ///< UpdateSurveillance accepts it
    PrimaryRecord primary;  ///< what stands first in the variable part
};

/// Every message code that the library knows.
inline constexpr std::array kMessageCodes{
    MessageCodeRow{2000, true, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2012, false, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2040, true, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2042, false, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2070, true, true, PrimaryRecord::kNone},
    MessageCodeRow{2072, false, true, PrimaryRecord::kNone},
    MessageCodeRow{2073, false, true, PrimaryRecord::kNone},
    MessageCodeRow{2074, false, true, PrimaryRecord::kNone},
    MessageCodeRow{2075, false, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2076, false, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2150, true, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2154, false, true, PrimaryRecord::kNone},
    MessageCodeRow{2155, false, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2156, false, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2212, false, true, PrimaryRecord::kNone},
    MessageCodeRow{2222, false, true, PrimaryRecord::kTradeInfo},
    MessageCodeRow{2223, false, true, PrimaryRecord::kTradeCorrection},
    MessageCodeRow{2231, false, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{2282, false, true, PrimaryRecord::kNone},
    MessageCodeRow{2286, false, true, PrimaryRecord::kTradeInfo},
    MessageCodeRow{2287, false, true, PrimaryRecord::kNone},
    MessageCodeRow{2288, false, true, PrimaryRecord::kTradeInfo},
    MessageCodeRow{5440, true, true, PrimaryRecord::kTradeCorrection},
    MessageCodeRow{5445, true, true, PrimaryRecord::kTradeCorrection},
    MessageCodeRow{9002, false, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{30160, true, true, PrimaryRecord::kOrderRequest},
    MessageCodeRow{31000, false, true, PrimaryRecord::kNone},
};

/// Null for a code that the library does not know.
constexpr const MessageCodeRow* FindMessageCode(std::int16_t code) {
    for (const MessageCodeRow& row : kMessageCodes) {
        if (row.code == code) return &row;
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------------------------------
// Answers

/// The status that CheckSurveillance gives.
namespace status {
inline constexpr std::int16_t kPass = 1;                 ///< the order may stand
inline constexpr std::int16_t kRefusedAtLevel = 2;       ///< inside the walk only; the host sees kRefused
inline constexpr std::int16_t kNoLimits = -306;          ///< a code of the hierarchy has no limits
inline constexpr std::int16_t kRefused = -312;           ///< by a product rule or a limit
inline constexpr std::int16_t kNoMarket = -314;          ///< no market price for an order at market
inline constexpr std::int16_t kNoRiskParameters = -317;  ///< a derivative without risk parameters
}  // namespace status

/// errorCode of the error records.
namespace code {
inline constexpr std::int16_t kNetPosition = -201;       ///< limit rule
inline constexpr std::int16_t kGrossExposure = -202;     ///< limit rule
inline constexpr std::int16_t kNetExposure = -203;       ///< limit rule
inline constexpr std::int16_t kTurnover = -204;          ///< limit rule
inline constexpr std::int16_t kOrderValue = -205;        ///< limit rules, largest and smallest
inline constexpr std::int16_t kOrderQuantity = -206;     ///< limit rules, largest and smallest
inline constexpr std::int16_t kNoLimits = -208;          ///< of status kNoLimits
inline constexpr std::int16_t kPendingOrder = -220;      ///< limit rule
inline constexpr std::int16_t kNetSaleExposure = -221;   ///< limit rule
inline constexpr std::int16_t kMtmLoss = -222;           ///< and every square-off mode
inline constexpr std::int16_t kRefused = -227;           ///< product rules, margin, NRI, ISIN, delivery sell quantity
inline constexpr std::int16_t kNetQuantity = -229;       ///< limit rule
inline constexpr std::int16_t kNoRiskParameters = -317;  ///< of status kNoRiskParameters
inline constexpr std::int16_t kStore = -100;             ///< a limit store could not do what it was asked
inline constexpr std::int16_t kNoRow = -313;             ///< inside the library: the token has no limit row
}  // namespace code

inline constexpr std::int16_t kDone = 0;      ///< what a function returns
inline constexpr std::int16_t kNotDone = -1;  ///< what a function returns that couldn't do its work

/// A row of token -9 stands for all securities.
inline constexpr std::int32_t kAllSecurities = -9;
/// Tokens are below this; a position key is key segment * kTokenSpan + token.
inline constexpr std::int32_t kTokenSpan = 10'000'000;

/// -1 (in a field of 32 bits or a double) says: no such limit. Every other value, 0 included, is a limit.
inline constexpr double kNoLimit = -1.0;
inline constexpr std::int32_t kNoLimitQuantity = -1;  ///< the same in a field of quantities

}  // namespace surv
