#pragma once

/// @file
/// The packed records that cross the boundary. Little-endian, no gaps; behind each field stand its offset in bytes and
/// what it is.
///
/// Money is a double in paise, prices are 32-bit paise, quantities plain counts; each field of money says its unit. A
/// text field of width n holds n-1 characters and a zero unless its note says otherwise; the library reads no text past
/// its width and writes every text to fit. Bytes named host… belong to the host: the library neither reads nor
/// writes them, but carries them where a record is carried whole. Carried: kept and shown, and read by nothing.

#include <cstddef>
#include <cstdint>
#include <type_traits>

// The offsets stand in a column.
// clang-format off

// ---------------------------------------------------------------------------------------------------------------
// Blocks inside records


/// The contract that an order, a trade or a position row is about.
struct [[gnu::packed]] tagContractDescriptor {  // 36 bytes
    char instrumentName[7];                 ///<   0  kind of instrument
    char symbol[13];                        ///<   7  of the scrip
    char series[3];                         ///<  20  of an equity
    std::int32_t expiryDate;                ///<  23  exchange seconds (from 1980-01-01 00:00, UTC+5:30); 0 for cash
    std::int32_t strikePrice;               ///<  27  paise; below 1 when not an option
    char optionType[3];                     ///<  31  CA, CE, PA, PE for options; product code in cash position rows
    std::int16_t caLevel;                   ///<  34  corporate action level; for commodities a number of days
};
static_assert(sizeof(tagContractDescriptor) == 36 && std::is_trivially_copyable_v<tagContractDescriptor> &&
              std::is_standard_layout_v<tagContractDescriptor>);
static_assert(offsetof(tagContractDescriptor, instrumentName) == 0);
static_assert(offsetof(tagContractDescriptor, symbol) == 7);
static_assert(offsetof(tagContractDescriptor, series) == 20);
static_assert(offsetof(tagContractDescriptor, expiryDate) == 23);
static_assert(offsetof(tagContractDescriptor, strikePrice) == 27);
static_assert(offsetof(tagContractDescriptor, optionType) == 31);
static_assert(offsetof(tagContractDescriptor, caLevel) == 34);

/// Contract size factors; they weight MCX quantities by lot.
struct [[gnu::packed]] tagMarginRateBlock {  // 20 bytes
    std::int32_t priceNumerator;            ///<   0  of a price to money
    std::int32_t priceDenominator;          ///<   4  a ratio with a 0 here counts as 1
    std::int32_t generalNumerator;          ///<   8  of a lot to units
    std::int32_t generalDenominator;        ///<  12  a ratio with a 0 here counts as 1
    std::int32_t lotMultiplier;             ///<  16  multiplies both
};
static_assert(sizeof(tagMarginRateBlock) == 20 && std::is_trivially_copyable_v<tagMarginRateBlock> &&
              std::is_standard_layout_v<tagMarginRateBlock>);
static_assert(offsetof(tagMarginRateBlock, priceNumerator) == 0);
static_assert(offsetof(tagMarginRateBlock, priceDenominator) == 4);
static_assert(offsetof(tagMarginRateBlock, generalNumerator) == 8);
static_assert(offsetof(tagMarginRateBlock, generalDenominator) == 12);
static_assert(offsetof(tagMarginRateBlock, lotMultiplier) == 16);

/// The margin rate of a scrip.
struct [[gnu::packed]] tagScripRateBlock {  // 14 bytes
    std::int32_t scripRate;                 ///<   0  carried
    std::int16_t marginBasis;               ///<   4  0, 1 percentage of value; 2 amount per unit
    double marginRate;                      ///<   6  hundredths of a percent, or paise per unit
};
static_assert(sizeof(tagScripRateBlock) == 14 && std::is_trivially_copyable_v<tagScripRateBlock> &&
              std::is_standard_layout_v<tagScripRateBlock>);
static_assert(offsetof(tagScripRateBlock, scripRate) == 0);
static_assert(offsetof(tagScripRateBlock, marginBasis) == 4);
static_assert(offsetof(tagScripRateBlock, marginRate) == 6);

// ---------------------------------------------------------------------------------------------------------------
// Requests

/// Head of a request. The variable part follows without a gap: the primary record that the message code names, then
/// a tagOrderInfo if bit 7 of levelMarginFlags is set, then a tagTradeInfo if bit 0 of requestFlags is set.
struct [[gnu::packed]] tagSurveillanceInfo {  // 154 bytes
    char host0[22];
    std::int16_t exchangeMask;              ///<  22  in the request head
    char host24[6];
    char groupCode[6];                      ///<  30  code of the group
    char dealerCode[6];                     ///<  36  code of the dealer
    char familyCode[6];                     ///<  42  empty or blank: no family
    char clientCode[6];                     ///<  48  code of the client
    char subClientCode[6];                  ///<  54  code of the sub client
    char userId[23];                        ///<  60  at most 15 characters are used
    std::uint8_t groupType;                 ///<  83  level type
    std::uint8_t dealerType;                ///<  84  level type; 0 the order is a client's, 4 and 45 the dealer is its own client
    std::uint8_t clientType;                ///<  85  255 no client level
    std::uint8_t subClientType;             ///<  86  255 no sub client level
    char host87[1];
    std::uint8_t levelCheckFlags;           ///<  88  bit 1 group, 2 dealer, 3 family, 4 client, 5 sub client: 1 checked, 0 only updated
    std::uint8_t levelMarginFlags;          ///<  89  bit 0 group, 1 dealer, 2 family, 3 client, 4 sub client; bit 7 tagOrderInfo follows
    std::uint8_t requestFlags;              ///<  90  bit 0 tagTradeInfo follows; bit 5 no new positions in this scrip
    std::int32_t token;                     ///<  91  of the scrip
    std::int32_t underlyingToken;           ///<  95  of a derivative: its underlying
    tagScripRateBlock scripRates;           ///<  99  of the scrip: the first that the library is told stands for the day
    char failedLevelCode[6];                ///< 113  out
    std::int16_t failedLevelType;           ///< 119  out; -1 after a pass
    char host121[1];
    std::int16_t messageCode;               ///< 122  what the request is about: kMessageCodes in codes.h
    char host124[2];
    std::int32_t scripGroupNumber;          ///< 126  -101 to -91: a BSE scrip group
    std::int32_t priceMultiplier;           ///< 130  NCDEX: 10000 = 1.0. NSE equity: multiplies exposures as it stands, so 1
    tagMarginRateBlock marginRates;         ///< 134  contract size factors
};
static_assert(sizeof(tagSurveillanceInfo) == 154 && std::is_trivially_copyable_v<tagSurveillanceInfo> &&
              std::is_standard_layout_v<tagSurveillanceInfo>);
static_assert(offsetof(tagSurveillanceInfo, exchangeMask) == 22);
static_assert(offsetof(tagSurveillanceInfo, groupCode) == 30);
static_assert(offsetof(tagSurveillanceInfo, dealerCode) == 36);
static_assert(offsetof(tagSurveillanceInfo, familyCode) == 42);
static_assert(offsetof(tagSurveillanceInfo, clientCode) == 48);
static_assert(offsetof(tagSurveillanceInfo, subClientCode) == 54);
static_assert(offsetof(tagSurveillanceInfo, userId) == 60);
static_assert(offsetof(tagSurveillanceInfo, groupType) == 83);
static_assert(offsetof(tagSurveillanceInfo, dealerType) == 84);
static_assert(offsetof(tagSurveillanceInfo, clientType) == 85);
static_assert(offsetof(tagSurveillanceInfo, subClientType) == 86);
static_assert(offsetof(tagSurveillanceInfo, levelCheckFlags) == 88);
static_assert(offsetof(tagSurveillanceInfo, levelMarginFlags) == 89);
static_assert(offsetof(tagSurveillanceInfo, requestFlags) == 90);
static_assert(offsetof(tagSurveillanceInfo, token) == 91);
static_assert(offsetof(tagSurveillanceInfo, underlyingToken) == 95);
static_assert(offsetof(tagSurveillanceInfo, scripRates) == 99);
static_assert(offsetof(tagSurveillanceInfo, failedLevelCode) == 113);
static_assert(offsetof(tagSurveillanceInfo, failedLevelType) == 119);
static_assert(offsetof(tagSurveillanceInfo, messageCode) == 122);
static_assert(offsetof(tagSurveillanceInfo, scripGroupNumber) == 126);
static_assert(offsetof(tagSurveillanceInfo, priceMultiplier) == 130);
static_assert(offsetof(tagSurveillanceInfo, marginRates) == 134);

/// An order as the host forms it.
struct [[gnu::packed]] tagOrderRequest {  // 492 bytes
    char host0[7];
    std::int16_t messageCode;               ///<   7  the library reads it in GetClientCode1 alone
    char host9[13];
    std::int16_t exchangeMask;              ///<  22  the exchange of the order
    char clientCategory[1];                 ///<  24  "N" an NRI client
    char host25[18];
    tagContractDescriptor contract;         ///<  43  what is traded
    char host79[25];
    char clientAccount[12];                 ///< 104  12 characters, not terminated when full
    char host116[3];
    std::int16_t buySell;                   ///< 119  1 buy, 2 sell
    char host121[8];
    std::int32_t quantityRemaining;         ///< 129  still open
    std::int32_t quantity;                  ///< 133  of the whole order
    std::int32_t quantityFilled;            ///< 137  traded so far
    std::int32_t price;                     ///< 141  paise; 0 at market
    std::int32_t triggerPrice;              ///< 145  paise
    char host149[8];
    std::int32_t cancelledQuantity;         ///< 157  read of BSE cash at code 2075
    char host161[4];
    std::uint8_t orderFlags;                ///< 165  bit 6 market order
    char host166[13];
    char accountText[16];                   ///< 179  ten characters, a gap of two, up to four more
    char host195[24];
    std::int16_t proClient;                 ///< 219  1 client, 2 own account
    char host221[63];
    char rejectionText[163];                ///< 284  out: why a position conversion was refused
    std::int32_t productType;               ///< 447  see surv::product
    char host451[27];
    std::int16_t marginPlusLeg;             ///< 478  0, 1 or 2
    std::int32_t firstLegPrice;             ///< 480  paise
    std::int32_t secondLegPrice;            ///< 484  paise
    char host488[4];
};
static_assert(sizeof(tagOrderRequest) == 492 && std::is_trivially_copyable_v<tagOrderRequest> &&
              std::is_standard_layout_v<tagOrderRequest>);
static_assert(offsetof(tagOrderRequest, messageCode) == 7);
static_assert(offsetof(tagOrderRequest, exchangeMask) == 22);
static_assert(offsetof(tagOrderRequest, clientCategory) == 24);
static_assert(offsetof(tagOrderRequest, contract) == 43);
static_assert(offsetof(tagOrderRequest, clientAccount) == 104);
static_assert(offsetof(tagOrderRequest, buySell) == 119);
static_assert(offsetof(tagOrderRequest, quantityRemaining) == 129);
static_assert(offsetof(tagOrderRequest, quantity) == 133);
static_assert(offsetof(tagOrderRequest, quantityFilled) == 137);
static_assert(offsetof(tagOrderRequest, price) == 141);
static_assert(offsetof(tagOrderRequest, triggerPrice) == 145);
static_assert(offsetof(tagOrderRequest, cancelledQuantity) == 157);
static_assert(offsetof(tagOrderRequest, orderFlags) == 165);
static_assert(offsetof(tagOrderRequest, accountText) == 179);
static_assert(offsetof(tagOrderRequest, proClient) == 219);
static_assert(offsetof(tagOrderRequest, rejectionText) == 284);
static_assert(offsetof(tagOrderRequest, productType) == 447);
static_assert(offsetof(tagOrderRequest, marginPlusLeg) == 478);
static_assert(offsetof(tagOrderRequest, firstLegPrice) == 480);
static_assert(offsetof(tagOrderRequest, secondLegPrice) == 484);

/// The host's stored state of an order: a tagOrderRequest whose fields from offset 24 on lie 24 bytes later.
struct [[gnu::packed]] tagOrderInfo {  // 782 bytes
    char host0[7];
    std::int16_t messageCode;               ///<   7  the host's
    char host9[13];
    std::int16_t exchangeMask;              ///<  22  the exchange of the order
    char host24[24];
    char clientCategory[1];                 ///<  48  "N" an NRI client
    char host49[18];
    tagContractDescriptor contract;         ///<  67  what is traded
    char host103[25];
    char clientAccount[12];                 ///< 128  12 characters, not terminated when full
    char host140[3];
    std::int16_t buySell;                   ///< 143  1 buy, 2 sell
    char host145[8];
    std::int32_t quantityRemaining;         ///< 153  still open
    std::int32_t quantity;                  ///< 157  of the whole order
    std::int32_t quantityFilled;            ///< 161  traded so far
    std::int32_t price;                     ///< 165  paise; 0 at market
    std::int32_t triggerPrice;              ///< 169  paise
    char host173[8];
    std::int32_t cancelledQuantity;         ///< 181  read of BSE cash at code 2075
    char host185[4];
    std::uint8_t orderFlags;                ///< 189  bit 6 market order
    char host190[13];
    char accountText[16];                   ///< 203  ten characters, a gap of two, up to four more
    char host219[24];
    std::int16_t proClient;                 ///< 243  1 client, 2 own account
    char host245[63];
    char rejectionText[163];                ///< 308  out: why a position conversion was refused
    std::int32_t productType;               ///< 471  see surv::product
    char host475[27];
    std::int16_t marginPlusLeg;             ///< 502  0, 1 or 2
    std::int32_t firstLegPrice;             ///< 504  paise
    std::int32_t secondLegPrice;            ///< 508  paise
    char host512[8];
    std::int16_t orderStatus;               ///< 520  bit set of the order's state, the host's own code
    char host522[260];
};
static_assert(sizeof(tagOrderInfo) == 782 && std::is_trivially_copyable_v<tagOrderInfo> &&
              std::is_standard_layout_v<tagOrderInfo>);
static_assert(offsetof(tagOrderInfo, messageCode) == 7);
static_assert(offsetof(tagOrderInfo, exchangeMask) == 22);
static_assert(offsetof(tagOrderInfo, clientCategory) == 48);
static_assert(offsetof(tagOrderInfo, contract) == 67);
static_assert(offsetof(tagOrderInfo, clientAccount) == 128);
static_assert(offsetof(tagOrderInfo, buySell) == 143);
static_assert(offsetof(tagOrderInfo, quantityRemaining) == 153);
static_assert(offsetof(tagOrderInfo, quantity) == 157);
static_assert(offsetof(tagOrderInfo, quantityFilled) == 161);
static_assert(offsetof(tagOrderInfo, price) == 165);
static_assert(offsetof(tagOrderInfo, triggerPrice) == 169);
static_assert(offsetof(tagOrderInfo, cancelledQuantity) == 181);
static_assert(offsetof(tagOrderInfo, orderFlags) == 189);
static_assert(offsetof(tagOrderInfo, accountText) == 203);
static_assert(offsetof(tagOrderInfo, proClient) == 243);
static_assert(offsetof(tagOrderInfo, rejectionText) == 308);
static_assert(offsetof(tagOrderInfo, productType) == 471);
static_assert(offsetof(tagOrderInfo, marginPlusLeg) == 502);
static_assert(offsetof(tagOrderInfo, firstLegPrice) == 504);
static_assert(offsetof(tagOrderInfo, secondLegPrice) == 508);
static_assert(offsetof(tagOrderInfo, orderStatus) == 520);

/// A trade that is cancelled or modified.
struct [[gnu::packed]] tagTradeCorrectionRequest {  // 188 bytes
    char host0[22];
    std::int16_t exchangeMask;              ///<  22  the exchange of the trade
    char host24[4];
    tagContractDescriptor contract;         ///<  28  what is traded
    char host64[4];
    std::int32_t tradedQuantity;            ///<  68  as it was traded
    std::int32_t tradePrice;                ///<  72  paise
    char host76[4];
    std::int32_t newQuantity;               ///<  80  as corrected
    char host84[16];
    char buySellCharacter[1];               ///< 100  "1" buy, "2" sell
    char host101[1];
    char sellClientAccount[12];             ///< 102  taken when the character is "2"
    char host114[1];
    char buyClientAccount[12];              ///< 115  taken when the character is "1"
    char host127[35];
    char accountText[16];                   ///< 162  as in tagOrderRequest
    char host178[10];
};
static_assert(sizeof(tagTradeCorrectionRequest) == 188 && std::is_trivially_copyable_v<tagTradeCorrectionRequest> &&
              std::is_standard_layout_v<tagTradeCorrectionRequest>);
static_assert(offsetof(tagTradeCorrectionRequest, exchangeMask) == 22);
static_assert(offsetof(tagTradeCorrectionRequest, contract) == 28);
static_assert(offsetof(tagTradeCorrectionRequest, tradedQuantity) == 68);
static_assert(offsetof(tagTradeCorrectionRequest, tradePrice) == 72);
static_assert(offsetof(tagTradeCorrectionRequest, newQuantity) == 80);
static_assert(offsetof(tagTradeCorrectionRequest, buySellCharacter) == 100);
static_assert(offsetof(tagTradeCorrectionRequest, sellClientAccount) == 102);
static_assert(offsetof(tagTradeCorrectionRequest, buyClientAccount) == 115);
static_assert(offsetof(tagTradeCorrectionRequest, accountText) == 162);

/// A trade.
struct [[gnu::packed]] tagTradeInfo {  // 402 bytes
    char host0[22];
    std::int16_t exchangeMask;              ///<  22  the exchange of the trade
    char host24[19];
    char clientAccount[12];                 ///<  43  12 characters, not terminated when full
    char host55[1];
    std::int16_t buySell;                   ///<  56  1 buy, 2 sell
    char host58[30];
    std::int32_t tradedQuantity;            ///<  88  of the trade
    std::int32_t tradePrice;                ///<  92  paise
    char host96[29];
    tagContractDescriptor contract;         ///< 125  what is traded
    char host161[192];
    std::int32_t productType;               ///< 353  see surv::product
    char host357[27];
    std::int16_t marginPlusLeg;             ///< 384  0, 1 or 2
    std::int32_t firstLegPrice;             ///< 386  paise
    std::int32_t secondLegPrice;            ///< 390  paise
    char host394[8];
};
static_assert(sizeof(tagTradeInfo) == 402 && std::is_trivially_copyable_v<tagTradeInfo> &&
              std::is_standard_layout_v<tagTradeInfo>);
static_assert(offsetof(tagTradeInfo, exchangeMask) == 22);
static_assert(offsetof(tagTradeInfo, clientAccount) == 43);
static_assert(offsetof(tagTradeInfo, buySell) == 56);
static_assert(offsetof(tagTradeInfo, tradedQuantity) == 88);
static_assert(offsetof(tagTradeInfo, tradePrice) == 92);
static_assert(offsetof(tagTradeInfo, contract) == 125);
static_assert(offsetof(tagTradeInfo, productType) == 353);
static_assert(offsetof(tagTradeInfo, marginPlusLeg) == 384);
static_assert(offsetof(tagTradeInfo, firstLegPrice) == 386);
static_assert(offsetof(tagTradeInfo, secondLegPrice) == 390);

// ---------------------------------------------------------------------------------------------------------------
// Error records

/// Why an administrative call was not done.
struct [[gnu::packed]] tagAdminErrMessage {  // 2076 bytes
    std::int32_t timeStamp;                 ///<   0  calendar seconds of the refusal
    char host4[5];
    std::int16_t headCode;                  ///<   9  errorCode again, at a refusal by a limit or a fund operation
    char host11[13];
    std::int16_t errorCode;                 ///<  24  see surv::code
    char host26[2];
    char errorText[2048];                   ///<  28  why
};
static_assert(sizeof(tagAdminErrMessage) == 2076 && std::is_trivially_copyable_v<tagAdminErrMessage> &&
              std::is_standard_layout_v<tagAdminErrMessage>);
static_assert(offsetof(tagAdminErrMessage, timeStamp) == 0);
static_assert(offsetof(tagAdminErrMessage, headCode) == 9);
static_assert(offsetof(tagAdminErrMessage, errorCode) == 24);
static_assert(offsetof(tagAdminErrMessage, errorText) == 28);

/// Why an order was refused. An accepted order leaves it untouched.
struct [[gnu::packed]] tagOrdErrMessage {  // 2076 bytes
    std::int32_t timeStamp;                 ///<   0  calendar seconds of the refusal
    char host4[5];
    std::int16_t headCode;                  ///<   9  errorCode again, at a refusal by a limit or a fund operation
    char host11[13];
    std::int16_t errorCode;                 ///<  24  see surv::code
    char host26[2];
    char errorText[2048];                   ///<  28  why
};
static_assert(sizeof(tagOrdErrMessage) == 2076 && std::is_trivially_copyable_v<tagOrdErrMessage> &&
              std::is_standard_layout_v<tagOrdErrMessage>);
static_assert(offsetof(tagOrdErrMessage, timeStamp) == 0);
static_assert(offsetof(tagOrdErrMessage, headCode) == 9);
static_assert(offsetof(tagOrdErrMessage, errorCode) == 24);
static_assert(offsetof(tagOrdErrMessage, errorText) == 28);

// ---------------------------------------------------------------------------------------------------------------
// Rows

/// A limit row: for one entity, one limit mask and one token, what may be used and what is used. Money in paise unless
/// noted; a limit of -1 is none.
struct [[gnu::packed]] BKSurveillanceLimitDefTag {  // 487 bytes
    char host0[7];
    std::int16_t messageCode;               ///<   7  in the message head; shown in the log of a failed load
    std::int16_t messageKind;               ///<   9  in the message head; 13 on a change of the limit values alone
    char host11[13];
    std::int32_t rowStamp;                  ///<  24  carried
    char entityCode[8];                     ///<  28  "-" the house; 8 characters are not terminated
    std::int16_t entityLevel;               ///<  36  level type of the entity
    std::int16_t subLevel;                  ///<  38  -1 counts as 0
    std::int32_t token;                     ///<  40  a scrip, a scrip group, or -9 for all securities
    std::int16_t limitMask;                 ///<  44  kLimitMasks in codes.h
    double grossExposureLimit;              ///<  46  paise
    double netExposureLimit;                ///<  54  paise
    double netSaleExposureLimit;            ///<  62  paise
    double netPositionLimit;                ///<  70  paise
    double turnoverLimit;                   ///<  78  paise
    double pendingOrderLimit;               ///<  86  paise
    double mtmLossLimit;                    ///<  94  paise
    double maxSingleOrderValue;             ///< 102  paise
    std::int32_t maxSingleOrderQty;         ///< 110  shares or units of one order
    double marginLimit;                     ///< 114  paise; compared, divided by 100, with margins in rupees
    double baseFund;                        ///< 122  paise; the fund allocated to the entity
    std::int32_t netQuantityLimit;          ///< 130  shares or units of one scrip
    std::int32_t grossExposureMultiplier;   ///< 134  ten-thousandths of the fund: 10000 = one times it; -1 = none
    std::int32_t netExposureMultiplier;     ///< 138  ten-thousandths of the fund, as above
    std::int32_t netSaleExposureMultiplier; ///< 142  ten-thousandths of the fund, as above
    std::int32_t netPositionMultiplier;     ///< 146  ten-thousandths of the fund, as above
    std::int32_t turnoverMultiplier;        ///< 150  ten-thousandths of the fund, as above
    std::int32_t pendingOrderMultiplier;    ///< 154  stored, applied by no rebuild
    std::int32_t mtmLossMultiplier;         ///< 158  ten-thousandths of the fund, as above
    std::int32_t marginMultiplier;          ///< 162  ten-thousandths of the fund, as above
    std::int32_t rowOption;                 ///< 166  carried
    std::uint8_t limitOptions;              ///< 170  bits: 0 retainMultiplier, 1 carried, 2 premiumInMargin, 3 grossBasis, 4 exposureMarginInLimit, 5 collateralInFund, 6 saleCreditInFund
    double usedGrossOrder;                  ///< 171  paise; orders and trades, like all four below
    double usedNetOrder;                    ///< 179  paise
    double usedNetSaleOrder;                ///< 187  paise
    double usedNetPositionOrder;            ///< 195  paise
    double usedTurnoverOrder;               ///< 203  paise
    double usedGrossTraded;                 ///< 211  paise; trades alone, like all four below
    double usedNetTraded;                   ///< 219  paise
    double usedNetSaleTraded;               ///< 227  paise
    double usedNetPositionTraded;           ///< 235  paise
    double usedTurnoverTraded;              ///< 243  paise
    double usedPendingOrder;                ///< 251  paise; open orders
    double usedMtm;                         ///< 259  paise; losses (negative), and profits where the preference counts them
    double usedMaxGross;                    ///< 267  paise; the worst case of open orders, like all four below
    double usedMaxNet;                      ///< 275  paise
    double usedMaxNetSale;                  ///< 283  paise
    double usedMaxNetPosition;              ///< 291  paise
    double usedMaxTurnover;                 ///< 299  paise
    double usedMarginOrder;                 ///< 307  rupees; orders and trades
    double usedMarginTraded;                ///< 315  rupees; trades alone
    double usedMarginMax;                   ///< 323  rupees; the worst case
    double grossUsedGrossOrder;             ///< 331  paise; summed over accounts, like all grossUsed figures
    double grossUsedNetOrder;               ///< 339  paise
    double grossUsedNetSaleOrder;           ///< 347  paise
    double grossUsedGrossTraded;            ///< 355  paise
    double grossUsedNetTraded;              ///< 363  paise
    double grossUsedNetSaleTraded;          ///< 371  paise
    char host379[8];
    double grossUsedMaxGross;               ///< 387  paise
    double grossUsedMaxNet;                 ///< 395  paise
    double grossUsedMaxNetSale;             ///< 403  paise
    double usedMtmFull;                     ///< 411  paise; MTM, profit and loss
    char host419[8];
    double usedBookedPnl;                   ///< 427  paise; booked losses (negative), and profits where the preference counts them
    double collateralFund;                  ///< 435  paise; of the depository holdings
    double saleCreditFund;                  ///< 443  paise; of sold holdings
    double definedFund;                     ///< 451  paise; the fund that the definition gives
    double usedExposureMargin;              ///< 459  rupees
    double minSingleOrderValue;             ///< 467  paise
    std::int32_t minSingleOrderQty;         ///< 475  shares or units of one order
    char host479[8];
};
static_assert(sizeof(BKSurveillanceLimitDefTag) == 487 && std::is_trivially_copyable_v<BKSurveillanceLimitDefTag> &&
              std::is_standard_layout_v<BKSurveillanceLimitDefTag>);
static_assert(offsetof(BKSurveillanceLimitDefTag, messageCode) == 7);
static_assert(offsetof(BKSurveillanceLimitDefTag, messageKind) == 9);
static_assert(offsetof(BKSurveillanceLimitDefTag, rowStamp) == 24);
static_assert(offsetof(BKSurveillanceLimitDefTag, entityCode) == 28);
static_assert(offsetof(BKSurveillanceLimitDefTag, entityLevel) == 36);
static_assert(offsetof(BKSurveillanceLimitDefTag, subLevel) == 38);
static_assert(offsetof(BKSurveillanceLimitDefTag, token) == 40);
static_assert(offsetof(BKSurveillanceLimitDefTag, limitMask) == 44);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossExposureLimit) == 46);
static_assert(offsetof(BKSurveillanceLimitDefTag, netExposureLimit) == 54);
static_assert(offsetof(BKSurveillanceLimitDefTag, netSaleExposureLimit) == 62);
static_assert(offsetof(BKSurveillanceLimitDefTag, netPositionLimit) == 70);
static_assert(offsetof(BKSurveillanceLimitDefTag, turnoverLimit) == 78);
static_assert(offsetof(BKSurveillanceLimitDefTag, pendingOrderLimit) == 86);
static_assert(offsetof(BKSurveillanceLimitDefTag, mtmLossLimit) == 94);
static_assert(offsetof(BKSurveillanceLimitDefTag, maxSingleOrderValue) == 102);
static_assert(offsetof(BKSurveillanceLimitDefTag, maxSingleOrderQty) == 110);
static_assert(offsetof(BKSurveillanceLimitDefTag, marginLimit) == 114);
static_assert(offsetof(BKSurveillanceLimitDefTag, baseFund) == 122);
static_assert(offsetof(BKSurveillanceLimitDefTag, netQuantityLimit) == 130);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossExposureMultiplier) == 134);
static_assert(offsetof(BKSurveillanceLimitDefTag, netExposureMultiplier) == 138);
static_assert(offsetof(BKSurveillanceLimitDefTag, netSaleExposureMultiplier) == 142);
static_assert(offsetof(BKSurveillanceLimitDefTag, netPositionMultiplier) == 146);
static_assert(offsetof(BKSurveillanceLimitDefTag, turnoverMultiplier) == 150);
static_assert(offsetof(BKSurveillanceLimitDefTag, pendingOrderMultiplier) == 154);
static_assert(offsetof(BKSurveillanceLimitDefTag, mtmLossMultiplier) == 158);
static_assert(offsetof(BKSurveillanceLimitDefTag, marginMultiplier) == 162);
static_assert(offsetof(BKSurveillanceLimitDefTag, rowOption) == 166);
static_assert(offsetof(BKSurveillanceLimitDefTag, limitOptions) == 170);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedGrossOrder) == 171);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedNetOrder) == 179);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedNetSaleOrder) == 187);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedNetPositionOrder) == 195);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedTurnoverOrder) == 203);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedGrossTraded) == 211);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedNetTraded) == 219);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedNetSaleTraded) == 227);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedNetPositionTraded) == 235);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedTurnoverTraded) == 243);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedPendingOrder) == 251);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMtm) == 259);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMaxGross) == 267);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMaxNet) == 275);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMaxNetSale) == 283);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMaxNetPosition) == 291);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMaxTurnover) == 299);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMarginOrder) == 307);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMarginTraded) == 315);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMarginMax) == 323);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossUsedGrossOrder) == 331);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossUsedNetOrder) == 339);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossUsedNetSaleOrder) == 347);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossUsedGrossTraded) == 355);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossUsedNetTraded) == 363);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossUsedNetSaleTraded) == 371);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossUsedMaxGross) == 387);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossUsedMaxNet) == 395);
static_assert(offsetof(BKSurveillanceLimitDefTag, grossUsedMaxNetSale) == 403);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedMtmFull) == 411);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedBookedPnl) == 427);
static_assert(offsetof(BKSurveillanceLimitDefTag, collateralFund) == 435);
static_assert(offsetof(BKSurveillanceLimitDefTag, saleCreditFund) == 443);
static_assert(offsetof(BKSurveillanceLimitDefTag, definedFund) == 451);
static_assert(offsetof(BKSurveillanceLimitDefTag, usedExposureMargin) == 459);
static_assert(offsetof(BKSurveillanceLimitDefTag, minSingleOrderValue) == 467);
static_assert(offsetof(BKSurveillanceLimitDefTag, minSingleOrderQty) == 475);

/// A position row: what one holder has done in one scrip and one period.
struct [[gnu::packed]] BKExposureTag {  // 260 bytes
    char host0[9];
    std::int16_t messageKind;               ///<   9  8 marks a row of the MTF product
    char host11[13];
    std::int32_t rowStamp;                  ///<  24  carried
    char levelCode[6];                      ///<  28  "-" for the root
    char groupCode[6];                      ///<  34  code of the group
    char host40[6];
    char accountCode[32];                   ///<  46  of the holder
    char familyCode[6];                     ///<  78  of the holder; read by a start
    char userId[16];                        ///<  84  of the holder
    std::int16_t marketSegment;             ///< 100  surv::Segment
    std::int16_t limitMask;                 ///< 102  a single-segment mask
    std::int32_t token;                     ///< 104  -9 in a total row
    std::int32_t underlyingToken;           ///< 108  of a derivative
    tagContractDescriptor contract;         ///< 112  optionType in rows of masks 3 and 17: "DD" delivery, "MP" and "MD" the legs of a two-leg order
    std::int32_t lastPrice;                 ///< 148  paise
    std::int32_t orderBuyQty;               ///< 152  orders and trades
    double orderBuyValue;                   ///< 156  paise
    std::int32_t orderSellQty;              ///< 164  orders and trades
    double orderSellValue;                  ///< 168  paise
    std::int32_t tradedBuyQty;              ///< 176  trades alone
    double tradedBuyValue;                  ///< 180  paise
    std::int32_t tradedSellQty;             ///< 188  trades alone
    double tradedSellValue;                 ///< 192  paise
    double openPositionValue;               ///< 200  paise; at the last price
    double mtmValue;                        ///< 208  paise; a loss is negative
    std::int16_t clientLevelType;           ///< 216  level type of the holder
    std::int16_t subClientLevelType;        ///< 218  -1 or 255 none
    std::int16_t groupLevelType;            ///< 220  level type
    std::int32_t priceMultiplier;           ///< 222  as in tagSurveillanceInfo
    tagMarginRateBlock marginRates;         ///< 226  contract size factors
    tagScripRateBlock scripRates;           ///< 246  margin rate of the scrip
};
static_assert(sizeof(BKExposureTag) == 260 && std::is_trivially_copyable_v<BKExposureTag> &&
              std::is_standard_layout_v<BKExposureTag>);
static_assert(offsetof(BKExposureTag, messageKind) == 9);
static_assert(offsetof(BKExposureTag, rowStamp) == 24);
static_assert(offsetof(BKExposureTag, levelCode) == 28);
static_assert(offsetof(BKExposureTag, groupCode) == 34);
static_assert(offsetof(BKExposureTag, accountCode) == 46);
static_assert(offsetof(BKExposureTag, familyCode) == 78);
static_assert(offsetof(BKExposureTag, userId) == 84);
static_assert(offsetof(BKExposureTag, marketSegment) == 100);
static_assert(offsetof(BKExposureTag, limitMask) == 102);
static_assert(offsetof(BKExposureTag, token) == 104);
static_assert(offsetof(BKExposureTag, underlyingToken) == 108);
static_assert(offsetof(BKExposureTag, contract) == 112);
static_assert(offsetof(BKExposureTag, lastPrice) == 148);
static_assert(offsetof(BKExposureTag, orderBuyQty) == 152);
static_assert(offsetof(BKExposureTag, orderBuyValue) == 156);
static_assert(offsetof(BKExposureTag, orderSellQty) == 164);
static_assert(offsetof(BKExposureTag, orderSellValue) == 168);
static_assert(offsetof(BKExposureTag, tradedBuyQty) == 176);
static_assert(offsetof(BKExposureTag, tradedBuyValue) == 180);
static_assert(offsetof(BKExposureTag, tradedSellQty) == 188);
static_assert(offsetof(BKExposureTag, tradedSellValue) == 192);
static_assert(offsetof(BKExposureTag, openPositionValue) == 200);
static_assert(offsetof(BKExposureTag, mtmValue) == 208);
static_assert(offsetof(BKExposureTag, clientLevelType) == 216);
static_assert(offsetof(BKExposureTag, subClientLevelType) == 218);
static_assert(offsetof(BKExposureTag, groupLevelType) == 220);
static_assert(offsetof(BKExposureTag, priceMultiplier) == 222);
static_assert(offsetof(BKExposureTag, marginRates) == 226);
static_assert(offsetof(BKExposureTag, scripRates) == 246);

/// What a probe reports of a limit row.
struct [[gnu::packed]] tagBreachRow {  // 38 bytes
    char rowHead[24];                       ///<   0  first 24 bytes of the limit row
    std::int32_t token;                     ///<  24  of the limit row
    char entityCode[6];                     ///<  28  of the limit row
    std::int16_t limitMask;                 ///<  34  of the limit row
    std::uint8_t breachBitsA;               ///<  36  1 gross, 2 net, 4 net sale, 8 net position, 0x10 turnover, 0x20 margin, 0x40 pending order
    std::uint8_t breachBitsB;               ///<  37  1 order value, 2 order quantity, 4 net quantity
};
static_assert(sizeof(tagBreachRow) == 38 && std::is_trivially_copyable_v<tagBreachRow> &&
              std::is_standard_layout_v<tagBreachRow>);
static_assert(offsetof(tagBreachRow, rowHead) == 0);
static_assert(offsetof(tagBreachRow, token) == 24);
static_assert(offsetof(tagBreachRow, entityCode) == 28);
static_assert(offsetof(tagBreachRow, limitMask) == 34);
static_assert(offsetof(tagBreachRow, breachBitsA) == 36);
static_assert(offsetof(tagBreachRow, breachBitsB) == 37);

// ---------------------------------------------------------------------------------------------------------------
// Risk parameters and margin rates

/// Head of each risk parameter message.
struct [[gnu::packed]] tagRPFHeader {  // 24 bytes
    char host0[7];
    std::int16_t messageCode;               ///<   7  28001 to 28009
    char host9[11];
    std::int16_t messageLength;             ///<  20  of the whole message, this head included
    std::int16_t segment;                   ///<  22  exchange mask that the file belongs to: 2, 4, 0x10 or 0x40
};
static_assert(sizeof(tagRPFHeader) == 24 && std::is_trivially_copyable_v<tagRPFHeader> &&
              std::is_standard_layout_v<tagRPFHeader>);
static_assert(offsetof(tagRPFHeader, messageCode) == 7);
static_assert(offsetof(tagRPFHeader, messageLength) == 20);
static_assert(offsetof(tagRPFHeader, segment) == 22);

/// What a risk parameter file says of itself. Carried; the library reads nothing in it.
struct [[gnu::packed]] tagRPFFileDetails {  // 66 bytes
    char host0[66];
};
static_assert(sizeof(tagRPFFileDetails) == 66);

/// Charges of one underlying.
struct [[gnu::packed]] tagRPFUnderlyingRecord {  // 82 bytes
    std::int32_t underlyingToken;           ///<   0  of the underlying
    float calendarSpreadCharge;             ///<   4  rupees per unit of spread position
    float shortOptionMinimumCharge;         ///<   8  rupees per unit of short option quantity
    char host12[70];
};
static_assert(sizeof(tagRPFUnderlyingRecord) == 82 && std::is_trivially_copyable_v<tagRPFUnderlyingRecord> &&
              std::is_standard_layout_v<tagRPFUnderlyingRecord>);
static_assert(offsetof(tagRPFUnderlyingRecord, underlyingToken) == 0);
static_assert(offsetof(tagRPFUnderlyingRecord, calendarSpreadCharge) == 4);
static_assert(offsetof(tagRPFUnderlyingRecord, shortOptionMinimumCharge) == 8);

/// Risk parameters of one contract.
struct [[gnu::packed]] tagRPFContractRecord {  // 122 bytes
    tagContractDescriptor contract;         ///<   0  the third character of optionType is not read
    std::int32_t token;                     ///<  36  of the contract
    std::int32_t underlyingToken;           ///<  40  of the underlying
    float contractPrice;                    ///<  44  paise; 0: the contract carries no price
    char host48[6];
    float riskArray[16];                    ///<  54  rupees lost per unit of long position in each scenario; a gain is negative
    float compositeDelta;                   ///< 118  per unit of position
};
static_assert(sizeof(tagRPFContractRecord) == 122 && std::is_trivially_copyable_v<tagRPFContractRecord> &&
              std::is_standard_layout_v<tagRPFContractRecord>);
static_assert(offsetof(tagRPFContractRecord, contract) == 0);
static_assert(offsetof(tagRPFContractRecord, token) == 36);
static_assert(offsetof(tagRPFContractRecord, underlyingToken) == 40);
static_assert(offsetof(tagRPFContractRecord, contractPrice) == 44);
static_assert(offsetof(tagRPFContractRecord, riskArray) == 54);
static_assert(offsetof(tagRPFContractRecord, compositeDelta) == 118);

/// Exposure margin rates of one derivative token.
struct [[gnu::packed]] tagAdditionalMarginInfo {  // 68 bytes
    std::int32_t exchange;                  ///<   0  exchange mask: 2, 0x10 or 0x40
    std::int32_t token;                     ///<   4  of the contract
    std::int32_t additionalMarginRate;      ///<   8  millionths of value; NCDEX ten-thousandths
    char host12[20];
    std::int32_t longMarginRate;            ///<  32  MCX, long positions: millionths of value
    char host36[8];
    std::int32_t shortMarginRate;           ///<  44  MCX, short positions: millionths of value
    char host48[8];
    std::int32_t sellExposureRate;          ///<  56  on net sale exposure: ten-thousandths of value; MCX millionths
    std::int32_t buyExposureRate;           ///<  60  on net exposure, as sellExposureRate
    char host64[4];
};
static_assert(sizeof(tagAdditionalMarginInfo) == 68 && std::is_trivially_copyable_v<tagAdditionalMarginInfo> &&
              std::is_standard_layout_v<tagAdditionalMarginInfo>);
static_assert(offsetof(tagAdditionalMarginInfo, exchange) == 0);
static_assert(offsetof(tagAdditionalMarginInfo, token) == 4);
static_assert(offsetof(tagAdditionalMarginInfo, additionalMarginRate) == 8);
static_assert(offsetof(tagAdditionalMarginInfo, longMarginRate) == 32);
static_assert(offsetof(tagAdditionalMarginInfo, shortMarginRate) == 44);
static_assert(offsetof(tagAdditionalMarginInfo, sellExposureRate) == 56);
static_assert(offsetof(tagAdditionalMarginInfo, buyExposureRate) == 60);

/// The VaR rate of one cash token.
struct [[gnu::packed]] tagMarginInfo {  // 16 bytes
    std::int32_t token;                     ///<   0  of the scrip
    std::int16_t marginBasis;               ///<   4  0, 1: hundredths of a percent of value; 2: paise per unit
    double marginRate;                      ///<   6  as marginBasis says; 0 by percent charges the whole value
    std::int16_t exchange;                  ///<  14  exchange mask: 1 or 8
};
static_assert(sizeof(tagMarginInfo) == 16 && std::is_trivially_copyable_v<tagMarginInfo> &&
              std::is_standard_layout_v<tagMarginInfo>);
static_assert(offsetof(tagMarginInfo, token) == 0);
static_assert(offsetof(tagMarginInfo, marginBasis) == 4);
static_assert(offsetof(tagMarginInfo, marginRate) == 6);
static_assert(offsetof(tagMarginInfo, exchange) == 14);

/// The margin rate of one MCX token.
struct [[gnu::packed]] tagMcxMarginRecord {  // 44 bytes
    std::int32_t token;                     ///<   0  of the contract
    char symbol[13];                        ///<   4  carried
    char series[3];                         ///<  17  carried
    char host20[12];
    std::int16_t marginBasis;               ///<  32  1: percent of value; 2: paise per unit
    double marginRate;                      ///<  34  as marginBasis says
    std::int16_t exchange;                  ///<  42  exchange mask; only 0x10 is kept
};
static_assert(sizeof(tagMcxMarginRecord) == 44 && std::is_trivially_copyable_v<tagMcxMarginRecord> &&
              std::is_standard_layout_v<tagMcxMarginRecord>);
static_assert(offsetof(tagMcxMarginRecord, token) == 0);
static_assert(offsetof(tagMcxMarginRecord, symbol) == 4);
static_assert(offsetof(tagMcxMarginRecord, series) == 17);
static_assert(offsetof(tagMcxMarginRecord, marginBasis) == 32);
static_assert(offsetof(tagMcxMarginRecord, marginRate) == 34);
static_assert(offsetof(tagMcxMarginRecord, exchange) == 42);

/// The exposure margin rate of one NCDEX token. Kept until the clean-up; no margin is formed from it.
struct [[gnu::packed]] tagNcdexExposureMarginRecord {  // 48 bytes
    std::int32_t token;                     ///<   0  of the contract
    char symbol[13];                        ///<   4  carried
    char series[3];                         ///<  17  carried
    char host20[12];
    std::int16_t marginBasis;               ///<  32  carried
    double marginRate;                      ///<  34  carried
    char host42[4];
    std::int16_t exchange;                  ///<  46  exchange mask; only 0x40 is kept
};
static_assert(sizeof(tagNcdexExposureMarginRecord) == 48 &&
              std::is_trivially_copyable_v<tagNcdexExposureMarginRecord> &&
              std::is_standard_layout_v<tagNcdexExposureMarginRecord>);
static_assert(offsetof(tagNcdexExposureMarginRecord, token) == 0);
static_assert(offsetof(tagNcdexExposureMarginRecord, symbol) == 4);
static_assert(offsetof(tagNcdexExposureMarginRecord, series) == 17);
static_assert(offsetof(tagNcdexExposureMarginRecord, marginBasis) == 32);
static_assert(offsetof(tagNcdexExposureMarginRecord, marginRate) == 34);
static_assert(offsetof(tagNcdexExposureMarginRecord, exchange) == 46);

// ---------------------------------------------------------------------------------------------------------------
// Product and security reference data

/// Which products a scrip allows, and its price bands.
struct [[gnu::packed]] tagProductTypeScripBasket {  // 81 bytes
    char host0[24];
    char host24[17];
    std::int32_t token;                     ///<  41  of the scrip
    std::int16_t productFlags;              ///<  45  1 margin, 2 delivery, 4 Margin+, 8 MTF
    std::int32_t firstLegBand;              ///<  47  ten-thousandths of a price
    std::int32_t secondLegBand;             ///<  51  ten-thousandths of a price
    std::int32_t dailyBand;                 ///<  55  ten-thousandths of a price
    std::int32_t basePrice;                 ///<  59  paise
    char host63[18];
};
static_assert(sizeof(tagProductTypeScripBasket) == 81 && std::is_trivially_copyable_v<tagProductTypeScripBasket> &&
              std::is_standard_layout_v<tagProductTypeScripBasket>);
static_assert(offsetof(tagProductTypeScripBasket, token) == 41);
static_assert(offsetof(tagProductTypeScripBasket, productFlags) == 45);
static_assert(offsetof(tagProductTypeScripBasket, firstLegBand) == 47);
static_assert(offsetof(tagProductTypeScripBasket, secondLegBand) == 51);
static_assert(offsetof(tagProductTypeScripBasket, dailyBand) == 55);
static_assert(offsetof(tagProductTypeScripBasket, basePrice) == 59);

/// A cash token and its last prices.
struct [[gnu::packed]] tagTokenPriceRecord {  // 42 bytes
    std::int32_t token;                     ///<   0  of the scrip
    std::int16_t exchange;                  ///<   4  exchange mask; only 1 is kept
    char symbol[13];                        ///<   6  of the scrip
    char series[3];                         ///<  19  of the scrip
    std::int32_t priceA;                    ///<  22  paise; written by the broadcast, read by nothing
    std::int32_t priceB;                    ///<  26  paise; as priceA
    std::int32_t priceC;                    ///<  30  paise; as priceA
    std::int32_t closePrice;                ///<  34  paise
    std::int32_t lastTradedPrice;           ///<  38  paise
};
static_assert(sizeof(tagTokenPriceRecord) == 42 && std::is_trivially_copyable_v<tagTokenPriceRecord> &&
              std::is_standard_layout_v<tagTokenPriceRecord>);
static_assert(offsetof(tagTokenPriceRecord, token) == 0);
static_assert(offsetof(tagTokenPriceRecord, exchange) == 4);
static_assert(offsetof(tagTokenPriceRecord, symbol) == 6);
static_assert(offsetof(tagTokenPriceRecord, series) == 19);
static_assert(offsetof(tagTokenPriceRecord, priceA) == 22);
static_assert(offsetof(tagTokenPriceRecord, priceB) == 26);
static_assert(offsetof(tagTokenPriceRecord, priceC) == 30);
static_assert(offsetof(tagTokenPriceRecord, closePrice) == 34);
static_assert(offsetof(tagTokenPriceRecord, lastTradedPrice) == 38);

/// The market of one scrip, as an exchange broadcasts it.
struct [[gnu::packed]] tagBcastMBOOrMBPTouchline {  // 141 bytes
    char host0[22];
    std::int16_t exchange;                  ///<  22  exchange mask
    std::int32_t token;                     ///<  24  0: the record is ignored
    char host28[8];
    std::int32_t lastTradedPrice;           ///<  36  paise; 0 when there was no trade
    char host40[43];
    std::int32_t bestBuyPrice;              ///<  83  paise; inside the 12 bytes of the best bid
    char host87[8];
    std::int32_t bestSellPrice;             ///<  95  paise; inside the 12 bytes of the best offer
    char host99[26];
    std::int32_t closePrice;                ///< 125  paise
    std::int32_t priceA;                    ///< 129  paise; stored, and passed on to the token's price record
    std::int32_t priceB;                    ///< 133  paise; as priceA
    std::int32_t priceC;                    ///< 137  paise; as priceA
};
static_assert(sizeof(tagBcastMBOOrMBPTouchline) == 141 && std::is_trivially_copyable_v<tagBcastMBOOrMBPTouchline> &&
              std::is_standard_layout_v<tagBcastMBOOrMBPTouchline>);
static_assert(offsetof(tagBcastMBOOrMBPTouchline, exchange) == 22);
static_assert(offsetof(tagBcastMBOOrMBPTouchline, token) == 24);
static_assert(offsetof(tagBcastMBOOrMBPTouchline, lastTradedPrice) == 36);
static_assert(offsetof(tagBcastMBOOrMBPTouchline, bestBuyPrice) == 83);
static_assert(offsetof(tagBcastMBOOrMBPTouchline, bestSellPrice) == 95);
static_assert(offsetof(tagBcastMBOOrMBPTouchline, closePrice) == 125);
static_assert(offsetof(tagBcastMBOOrMBPTouchline, priceA) == 129);
static_assert(offsetof(tagBcastMBOOrMBPTouchline, priceB) == 133);
static_assert(offsetof(tagBcastMBOOrMBPTouchline, priceC) == 137);

/// A series whose scrips are delivered whatever the order says.
struct [[gnu::packed]] tagCompulsoryDeliverySeries {  // 5 bytes
    char series[3];                         ///<   0  its name
    std::int16_t exchange;                  ///<   3  exchange mask: 1 or 8
};
static_assert(sizeof(tagCompulsoryDeliverySeries) == 5 && std::is_trivially_copyable_v<tagCompulsoryDeliverySeries> &&
              std::is_standard_layout_v<tagCompulsoryDeliverySeries>);
static_assert(offsetof(tagCompulsoryDeliverySeries, series) == 0);
static_assert(offsetof(tagCompulsoryDeliverySeries, exchange) == 3);

// ---------------------------------------------------------------------------------------------------------------
// Depository

/// Shares of one ISIN that one entity holds at the depository. Of a row of a start the head down to holdingQty,
/// carriedText4, collateralPrice and haircutRate are read. Carried: passed through as it came.
struct [[gnu::packed]] tagDPHolding {  // 303 bytes
    char categoryCode[6];                   ///<   0  of the entity
    char carriedText1[16];                  ///<   6  carried
    char carriedText2[16];                  ///<  22  carried
    std::int32_t carriedLong1;              ///<  38  carried
    std::int32_t carriedLong2;              ///<  42  carried
    char carriedText3[36];                  ///<  46  carried
    char isinCode[14];                      ///<  82  of the equity
    std::int32_t holdingQty;                ///<  96  shares held
    std::int32_t nseBlockedQty;             ///< 100  used up by today's sales
    std::int32_t bseBlockedQty;             ///< 104  the same of BSE
    std::int32_t nseSarQty;                 ///< 108  on the sale-against-receipt account
    std::int32_t nseSarBlockedQty;          ///< 112  the part of it that is used up
    std::int32_t bseSarQty;                 ///< 116  as nseSarQty
    std::int32_t bseSarBlockedQty;          ///< 120  as nseSarBlockedQty
    std::int32_t nseOrderBuyQty;            ///< 124  today's deliveries of NSE: orders and trades
    std::int32_t nseOrderSellQty;           ///< 128  the same
    std::int32_t nseTradedBuyQty;           ///< 132  trades alone
    std::int32_t nseTradedSellQty;          ///< 136  the same
    double nseOrderBuyValue;                ///< 140  paise; orders and trades
    double nseOrderSellValue;               ///< 148  paise
    double nseTradedBuyValue;               ///< 156  paise; trades alone
    double nseTradedSellValue;              ///< 164  paise
    std::int32_t bseOrderBuyQty;            ///< 172  the eight of BSE
    std::int32_t bseOrderSellQty;           ///< 176  as of NSE
    std::int32_t bseTradedBuyQty;           ///< 180  as of NSE
    std::int32_t bseTradedSellQty;          ///< 184  as of NSE
    double bseOrderBuyValue;                ///< 188  paise
    double bseOrderSellValue;               ///< 196  paise
    double bseTradedBuyValue;               ///< 204  paise
    double bseTradedSellValue;              ///< 212  paise
    char carriedText4[51];                  ///< 220  carried
    std::int32_t collateralQty;             ///< 271  that counts as collateral
    double collateralPrice;                 ///< 275  paise a share
    double collateralValue;                 ///< 283  paise; after the haircut
    double saleCredit;                      ///< 291  paise
    std::int32_t haircutRate;               ///< 299  ten-thousandths: 2500 is 25 percent
};
static_assert(sizeof(tagDPHolding) == 303 && std::is_trivially_copyable_v<tagDPHolding> &&
              std::is_standard_layout_v<tagDPHolding>);
static_assert(offsetof(tagDPHolding, categoryCode) == 0);
static_assert(offsetof(tagDPHolding, carriedText1) == 6);
static_assert(offsetof(tagDPHolding, carriedText2) == 22);
static_assert(offsetof(tagDPHolding, carriedLong1) == 38);
static_assert(offsetof(tagDPHolding, carriedLong2) == 42);
static_assert(offsetof(tagDPHolding, carriedText3) == 46);
static_assert(offsetof(tagDPHolding, isinCode) == 82);
static_assert(offsetof(tagDPHolding, holdingQty) == 96);
static_assert(offsetof(tagDPHolding, nseBlockedQty) == 100);
static_assert(offsetof(tagDPHolding, bseBlockedQty) == 104);
static_assert(offsetof(tagDPHolding, nseSarQty) == 108);
static_assert(offsetof(tagDPHolding, nseSarBlockedQty) == 112);
static_assert(offsetof(tagDPHolding, bseSarQty) == 116);
static_assert(offsetof(tagDPHolding, bseSarBlockedQty) == 120);
static_assert(offsetof(tagDPHolding, nseOrderBuyQty) == 124);
static_assert(offsetof(tagDPHolding, nseOrderSellQty) == 128);
static_assert(offsetof(tagDPHolding, nseTradedBuyQty) == 132);
static_assert(offsetof(tagDPHolding, nseTradedSellQty) == 136);
static_assert(offsetof(tagDPHolding, nseOrderBuyValue) == 140);
static_assert(offsetof(tagDPHolding, nseOrderSellValue) == 148);
static_assert(offsetof(tagDPHolding, nseTradedBuyValue) == 156);
static_assert(offsetof(tagDPHolding, nseTradedSellValue) == 164);
static_assert(offsetof(tagDPHolding, bseOrderBuyQty) == 172);
static_assert(offsetof(tagDPHolding, bseOrderSellQty) == 176);
static_assert(offsetof(tagDPHolding, bseTradedBuyQty) == 180);
static_assert(offsetof(tagDPHolding, bseTradedSellQty) == 184);
static_assert(offsetof(tagDPHolding, bseOrderBuyValue) == 188);
static_assert(offsetof(tagDPHolding, bseOrderSellValue) == 196);
static_assert(offsetof(tagDPHolding, bseTradedBuyValue) == 204);
static_assert(offsetof(tagDPHolding, bseTradedSellValue) == 212);
static_assert(offsetof(tagDPHolding, carriedText4) == 220);
static_assert(offsetof(tagDPHolding, collateralQty) == 271);
static_assert(offsetof(tagDPHolding, collateralPrice) == 275);
static_assert(offsetof(tagDPHolding, collateralValue) == 283);
static_assert(offsetof(tagDPHolding, saleCredit) == 291);
static_assert(offsetof(tagDPHolding, haircutRate) == 299);

/// Shares that came to an entity during the day.
struct [[gnu::packed]] tagDPUpload {  // 105 bytes
    char host0[24];
    char categoryCode[6];                   ///<  24  of the entity
    char carriedText1[16];                  ///<  30  carried
    char carriedText2[16];                  ///<  46  carried
    char isinCode[14];                      ///<  62  of the equity
    char carriedText3[9];                   ///<  76  carried
    std::int32_t quantity;                  ///<  85  joins the shares held; below 0 takes off
    char host89[4];
    double collateralPrice;                 ///<  93  paise a share
    std::int32_t haircutRate;               ///< 101  ten-thousandths
};
static_assert(sizeof(tagDPUpload) == 105 && std::is_trivially_copyable_v<tagDPUpload> &&
              std::is_standard_layout_v<tagDPUpload>);
static_assert(offsetof(tagDPUpload, categoryCode) == 24);
static_assert(offsetof(tagDPUpload, carriedText1) == 30);
static_assert(offsetof(tagDPUpload, carriedText2) == 46);
static_assert(offsetof(tagDPUpload, isinCode) == 62);
static_assert(offsetof(tagDPUpload, carriedText3) == 76);
static_assert(offsetof(tagDPUpload, quantity) == 85);
static_assert(offsetof(tagDPUpload, collateralPrice) == 93);
static_assert(offsetof(tagDPUpload, haircutRate) == 101);

/// Shares of one ISIN on an entity's sale-against-receipt account. The host's record may be longer.
struct [[gnu::packed]] tagSarRow {  // 206 bytes
    char host0[24];
    char categoryCode[6];                   ///<  24  of the entity
    char host30[32];
    char carriedText1[16];                  ///<  62  carried
    char carriedText2[16];                  ///<  78  carried
    char host94[40];
    std::int16_t limitMask;                 ///< 134  3 NSE, 0x11 BSE; another brings no shares
    char host136[40];
    std::int32_t quantity;                  ///< 176  shares
    char host180[12];
    char isinCode[14];                      ///< 192  of the equity
};
static_assert(sizeof(tagSarRow) == 206 && std::is_trivially_copyable_v<tagSarRow> &&
              std::is_standard_layout_v<tagSarRow>);
static_assert(offsetof(tagSarRow, categoryCode) == 24);
static_assert(offsetof(tagSarRow, carriedText1) == 62);
static_assert(offsetof(tagSarRow, carriedText2) == 78);
static_assert(offsetof(tagSarRow, limitMask) == 134);
static_assert(offsetof(tagSarRow, quantity) == 176);
static_assert(offsetof(tagSarRow, isinCode) == 192);

/// The ISIN of an equity.
struct [[gnu::packed]] tagSecurityIsinRow {  // 36 bytes
    std::int32_t token;                     ///<   0  of the equity
    char isinCode[14];                      ///<   4  of the equity
    char symbol[13];                        ///<  18  carried
    char series[3];                         ///<  31  carried
    std::int16_t exchange;                  ///<  34  exchange mask; 1 and 8 are kept
};
static_assert(sizeof(tagSecurityIsinRow) == 36 && std::is_trivially_copyable_v<tagSecurityIsinRow> &&
              std::is_standard_layout_v<tagSecurityIsinRow>);
static_assert(offsetof(tagSecurityIsinRow, token) == 0);
static_assert(offsetof(tagSecurityIsinRow, isinCode) == 4);
static_assert(offsetof(tagSecurityIsinRow, symbol) == 18);
static_assert(offsetof(tagSecurityIsinRow, series) == 31);
static_assert(offsetof(tagSecurityIsinRow, exchange) == 34);

// ---------------------------------------------------------------------------------------------------------------
// Funds

/// Money that joins or leaves the fund of an entity, and the answer.
struct [[gnu::packed]] tagRMSFundAllocationRequest {  // 388 bytes
    std::int32_t timeStamp;                 ///<   0  out: calendar seconds of the answer
    char host4[3];
    std::int16_t messageCode;               ///<   7  out: 13002
    std::int16_t headCode;                  ///<   9  out: 0 done; -100 no such entity, or none with limits over all exchanges; -1 refused
    char host11[13];
    char entityName[32];                    ///<  24  shown in a refusal
    char entityKey[60];                     ///<  56  code of the entity
    double requestedFund;                   ///< 116  paise; above 0 a deposit, else a withdrawal
    double usedMargin;                      ///< 124  out: rupees; usedMarginMax of the row, where the request was done
    char errorText[256];                    ///< 132  out: why it was refused
};
static_assert(sizeof(tagRMSFundAllocationRequest) == 388 && std::is_trivially_copyable_v<tagRMSFundAllocationRequest> &&
              std::is_standard_layout_v<tagRMSFundAllocationRequest>);
static_assert(offsetof(tagRMSFundAllocationRequest, timeStamp) == 0);
static_assert(offsetof(tagRMSFundAllocationRequest, messageCode) == 7);
static_assert(offsetof(tagRMSFundAllocationRequest, headCode) == 9);
static_assert(offsetof(tagRMSFundAllocationRequest, entityName) == 24);
static_assert(offsetof(tagRMSFundAllocationRequest, entityKey) == 56);
static_assert(offsetof(tagRMSFundAllocationRequest, requestedFund) == 116);
static_assert(offsetof(tagRMSFundAllocationRequest, usedMargin) == 124);
static_assert(offsetof(tagRMSFundAllocationRequest, errorText) == 132);

// ---------------------------------------------------------------------------------------------------------------
// Preferences

/// How one entity is margined at one exchange. The bytes from exchange on travel into the order record.
struct [[gnu::packed]] tagClientRiskPreferenceInfoForSurv {  // 102 bytes
    char host0[24];
    char preferenceCode[6];                 ///<  24  client or family; "*****" the default record
    char familyCode[6];                     ///<  30  family of a client
    char parentCode[6];                     ///<  36  carried
    char accountCode[16];                   ///<  42  carried
    std::int32_t exchange;                  ///<  58  exchange mask, or -1 for the overall record
    std::int32_t token;                     ///<  62  -9 = all securities
    std::int32_t prefMarginRate;            ///<  66  the entity's own rate, millionths of value; on cash and loaded MCX rows whole percents (10000) alone. 0: none
    std::int32_t marginAddOnFactor;         ///<  70  millionths
    std::int32_t prefExtraMarginRate;       ///<  74  millionths of value
    std::int32_t carried;                   ///<  78  carried
    std::int32_t preAutoSquareOffPart;      ///<  82  millionths of mtmLossLimit
    std::int32_t autoSquareOffPart;         ///<  86  millionths of mtmLossLimit
    std::int16_t prefMarginMode;            ///<  90  0 exchange rate, 1 own rate, 2 the larger
    std::int32_t allowedProducts;           ///<  92  1 margin, 2 delivery, 4 Margin+, 8 MTF
    char host96[2];
    std::uint8_t marginFlags;               ///<  98  bits: 0 exposure margin counts, 1 MTM profit, 2 MTM loss, 3 booked profit, 4 booked loss, 5 premium, 6 square-off by time, 7 by session
    std::uint8_t fundFlags;                 ///<  99  bits: 0 square-off alone, 1 and 2 the two MTM square-off modes, 3 after-market orders are checked, 5 collateral and 6 sale credit in the fund
    char host100[2];
};
static_assert(sizeof(tagClientRiskPreferenceInfoForSurv) == 102 && std::is_trivially_copyable_v<tagClientRiskPreferenceInfoForSurv> &&
              std::is_standard_layout_v<tagClientRiskPreferenceInfoForSurv>);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, preferenceCode) == 24);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, familyCode) == 30);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, parentCode) == 36);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, accountCode) == 42);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, exchange) == 58);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, token) == 62);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, prefMarginRate) == 66);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, marginAddOnFactor) == 70);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, prefExtraMarginRate) == 74);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, carried) == 78);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, preAutoSquareOffPart) == 82);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, autoSquareOffPart) == 86);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, prefMarginMode) == 90);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, allowedProducts) == 92);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, marginFlags) == 98);
static_assert(offsetof(tagClientRiskPreferenceInfoForSurv, fundFlags) == 99);
