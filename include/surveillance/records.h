#pragma once

/// @file
/// The packed records that cross the boundary. Little-endian, no gaps; behind each field stand its offset in bytes and
/// what it is.
///
/// Money is a double in paise, prices are 32-bit paise, quantities plain counts; each field of money says its unit. A
/// text field of width n holds n-1 characters and a zero unless its note says otherwise; the library reads no text past
/// its width and writes every text to fit. Bytes named host… belong to the host: the library neither reads nor
/// writes them, but carries them where a record is carried whole. Carried: kept and shown, and read by nothing.
///
/// The header is C as well as C++ (a C host reads it through surveillance_c.h), and both compilers hold sizes and
/// offsets.

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#include <type_traits>
/// Of a record: without gaps between its fields.
#define SURVEILLANCE_PACKED [[gnu::packed]]
/// Behind a record: its size.
#define SURVEILLANCE_RECORD(record, bytes)                                             \
    static_assert(sizeof(record) == (bytes) && std::is_trivially_copyable_v<record> && \
                  std::is_standard_layout_v<record>)
/// Behind a record: where a field of it stands.
#define SURVEILLANCE_FIELD(record, field, offset) static_assert(offsetof(record, field) == (offset))
#else
#define SURVEILLANCE_PACKED __attribute__((packed))
#define SURVEILLANCE_RECORD(record, bytes) \
    typedef struct record record;          \
    __extension__ _Static_assert(sizeof(record) == (bytes), #record)
#define SURVEILLANCE_FIELD(record, field, offset) \
    __extension__ _Static_assert(offsetof(record, field) == (offset), #record "." #field)
#endif

// The offsets stand in a column.
// clang-format off

// ---------------------------------------------------------------------------------------------------------------
// Blocks inside records

/// The contract that an order, a trade or a position row is about.
struct SURVEILLANCE_PACKED tagContractDescriptor {  // 36 bytes
    char instrumentName[7];                 ///<   0  kind of instrument
    char symbol[13];                        ///<   7  of the scrip
    char series[3];                         ///<  20  of an equity
    int32_t expiryDate;                     ///<  23  exchange seconds (from 1980-01-01 00:00, UTC+5:30); 0 for cash
    int32_t strikePrice;                    ///<  27  paise; below 1 when not an option
    char optionType[3];                     ///<  31  CA, CE, PA, PE for options; product code in cash position rows
    int16_t caLevel;                        ///<  34  corporate action level; for commodities a number of days
};
SURVEILLANCE_RECORD(tagContractDescriptor, 36);
SURVEILLANCE_FIELD(tagContractDescriptor, instrumentName, 0);
SURVEILLANCE_FIELD(tagContractDescriptor, symbol, 7);
SURVEILLANCE_FIELD(tagContractDescriptor, series, 20);
SURVEILLANCE_FIELD(tagContractDescriptor, expiryDate, 23);
SURVEILLANCE_FIELD(tagContractDescriptor, strikePrice, 27);
SURVEILLANCE_FIELD(tagContractDescriptor, optionType, 31);
SURVEILLANCE_FIELD(tagContractDescriptor, caLevel, 34);

/// Contract size factors; they weight MCX quantities by lot.
struct SURVEILLANCE_PACKED tagMarginRateBlock {  // 20 bytes
    int32_t priceNumerator;                 ///<   0  of a price to money
    int32_t priceDenominator;               ///<   4  a ratio with a 0 here counts as 1
    int32_t generalNumerator;               ///<   8  of a lot to units
    int32_t generalDenominator;             ///<  12  a ratio with a 0 here counts as 1
    int32_t lotMultiplier;                  ///<  16  multiplies both
};
SURVEILLANCE_RECORD(tagMarginRateBlock, 20);
SURVEILLANCE_FIELD(tagMarginRateBlock, priceNumerator, 0);
SURVEILLANCE_FIELD(tagMarginRateBlock, priceDenominator, 4);
SURVEILLANCE_FIELD(tagMarginRateBlock, generalNumerator, 8);
SURVEILLANCE_FIELD(tagMarginRateBlock, generalDenominator, 12);
SURVEILLANCE_FIELD(tagMarginRateBlock, lotMultiplier, 16);

/// The margin rate of a scrip.
struct SURVEILLANCE_PACKED tagScripRateBlock {  // 14 bytes
    int32_t scripRate;                      ///<   0  carried
    int16_t marginBasis;                    ///<   4  0, 1 percentage of value; 2 amount per unit
    double marginRate;                      ///<   6  hundredths of a percent, or paise per unit
};
SURVEILLANCE_RECORD(tagScripRateBlock, 14);
SURVEILLANCE_FIELD(tagScripRateBlock, scripRate, 0);
SURVEILLANCE_FIELD(tagScripRateBlock, marginBasis, 4);
SURVEILLANCE_FIELD(tagScripRateBlock, marginRate, 6);

// ---------------------------------------------------------------------------------------------------------------
// Requests

/// Head of a request. The variable part follows without a gap: the primary record that the message code names, then
/// a tagOrderInfo if bit 7 of levelMarginFlags is set, then a tagTradeInfo if bit 0 of requestFlags is set.
struct SURVEILLANCE_PACKED tagSurveillanceInfo {  // 154 bytes
    char host0[22];
    int16_t exchangeMask;                   ///<  22  in the request head
    char host24[6];
    char groupCode[6];                      ///<  30  code of the group
    char dealerCode[6];                     ///<  36  code of the dealer
    char familyCode[6];                     ///<  42  empty or blank: no family
    char clientCode[6];                     ///<  48  code of the client
    char subClientCode[6];                  ///<  54  code of the sub client
    char userId[23];                        ///<  60  at most 15 characters are used
    uint8_t groupType;                      ///<  83  level type
    uint8_t dealerType;                     ///<  84  level type; 0 the order is a client's, 4 and 45 the dealer is its own client
    uint8_t clientType;                     ///<  85  255 no client level
    uint8_t subClientType;                  ///<  86  255 no sub client level
    char host87[1];
    uint8_t levelCheckFlags;                ///<  88  bit 1 group, 2 dealer, 3 family, 4 client, 5 sub client: 1 checked, 0 only updated
    uint8_t levelMarginFlags;               ///<  89  bit 0 group, 1 dealer, 2 family, 3 client, 4 sub client; bit 7 tagOrderInfo follows
    uint8_t requestFlags;                   ///<  90  bit 0 tagTradeInfo follows; bit 5 no new positions in this scrip
    int32_t token;                          ///<  91  of the scrip
    int32_t underlyingToken;                ///<  95  of a derivative: its underlying
    tagScripRateBlock scripRates;           ///<  99  of the scrip: the first that the library is told stands for the day
    char failedLevelCode[6];                ///< 113  out
    int16_t failedLevelType;                ///< 119  out; -1 after a pass
    char host121[1];
    int16_t messageCode;                    ///< 122  what the request is about: kMessageCodes in codes.h
    char host124[2];
    int32_t scripGroupNumber;               ///< 126  -101 to -91: a BSE scrip group
    int32_t priceMultiplier;                ///< 130  NCDEX: 10000 = 1.0. NSE equity: multiplies exposures as it stands, so 1
    tagMarginRateBlock marginRates;         ///< 134  contract size factors
};
SURVEILLANCE_RECORD(tagSurveillanceInfo, 154);
SURVEILLANCE_FIELD(tagSurveillanceInfo, exchangeMask, 22);
SURVEILLANCE_FIELD(tagSurveillanceInfo, groupCode, 30);
SURVEILLANCE_FIELD(tagSurveillanceInfo, dealerCode, 36);
SURVEILLANCE_FIELD(tagSurveillanceInfo, familyCode, 42);
SURVEILLANCE_FIELD(tagSurveillanceInfo, clientCode, 48);
SURVEILLANCE_FIELD(tagSurveillanceInfo, subClientCode, 54);
SURVEILLANCE_FIELD(tagSurveillanceInfo, userId, 60);
SURVEILLANCE_FIELD(tagSurveillanceInfo, groupType, 83);
SURVEILLANCE_FIELD(tagSurveillanceInfo, dealerType, 84);
SURVEILLANCE_FIELD(tagSurveillanceInfo, clientType, 85);
SURVEILLANCE_FIELD(tagSurveillanceInfo, subClientType, 86);
SURVEILLANCE_FIELD(tagSurveillanceInfo, levelCheckFlags, 88);
SURVEILLANCE_FIELD(tagSurveillanceInfo, levelMarginFlags, 89);
SURVEILLANCE_FIELD(tagSurveillanceInfo, requestFlags, 90);
SURVEILLANCE_FIELD(tagSurveillanceInfo, token, 91);
SURVEILLANCE_FIELD(tagSurveillanceInfo, underlyingToken, 95);
SURVEILLANCE_FIELD(tagSurveillanceInfo, scripRates, 99);
SURVEILLANCE_FIELD(tagSurveillanceInfo, failedLevelCode, 113);
SURVEILLANCE_FIELD(tagSurveillanceInfo, failedLevelType, 119);
SURVEILLANCE_FIELD(tagSurveillanceInfo, messageCode, 122);
SURVEILLANCE_FIELD(tagSurveillanceInfo, scripGroupNumber, 126);
SURVEILLANCE_FIELD(tagSurveillanceInfo, priceMultiplier, 130);
SURVEILLANCE_FIELD(tagSurveillanceInfo, marginRates, 134);

/// An order as the host forms it.
struct SURVEILLANCE_PACKED tagOrderRequest {  // 492 bytes
    char host0[7];
    int16_t messageCode;                    ///<   7  the library reads it in GetClientCode1 alone
    char host9[13];
    int16_t exchangeMask;                   ///<  22  the exchange of the order
    char clientCategory[1];                 ///<  24  "N" an NRI client
    char host25[18];
    tagContractDescriptor contract;         ///<  43  what is traded
    char host79[25];
    char clientAccount[12];                 ///< 104  12 characters, not terminated when full
    char host116[3];
    int16_t buySell;                        ///< 119  1 buy, 2 sell
    char host121[8];
    int32_t quantityRemaining;              ///< 129  still open
    int32_t quantity;                       ///< 133  of the whole order
    int32_t quantityFilled;                 ///< 137  traded so far
    int32_t price;                          ///< 141  paise; 0 at market
    int32_t triggerPrice;                   ///< 145  paise
    char host149[8];
    int32_t cancelledQuantity;              ///< 157  read of BSE cash at code 2075
    char host161[4];
    uint8_t orderFlags;                     ///< 165  bit 6 market order
    char host166[13];
    char accountText[16];                   ///< 179  ten characters, a gap of two, up to four more
    char host195[24];
    int16_t proClient;                      ///< 219  1 client, 2 own account
    char host221[63];
    char rejectionText[163];                ///< 284  out: why a position conversion was refused
    int32_t productType;                    ///< 447  see surv::product
    char host451[27];
    int16_t marginPlusLeg;                  ///< 478  0, 1 or 2
    int32_t firstLegPrice;                  ///< 480  paise
    int32_t secondLegPrice;                 ///< 484  paise
    char host488[4];
};
SURVEILLANCE_RECORD(tagOrderRequest, 492);
SURVEILLANCE_FIELD(tagOrderRequest, messageCode, 7);
SURVEILLANCE_FIELD(tagOrderRequest, exchangeMask, 22);
SURVEILLANCE_FIELD(tagOrderRequest, clientCategory, 24);
SURVEILLANCE_FIELD(tagOrderRequest, contract, 43);
SURVEILLANCE_FIELD(tagOrderRequest, clientAccount, 104);
SURVEILLANCE_FIELD(tagOrderRequest, buySell, 119);
SURVEILLANCE_FIELD(tagOrderRequest, quantityRemaining, 129);
SURVEILLANCE_FIELD(tagOrderRequest, quantity, 133);
SURVEILLANCE_FIELD(tagOrderRequest, quantityFilled, 137);
SURVEILLANCE_FIELD(tagOrderRequest, price, 141);
SURVEILLANCE_FIELD(tagOrderRequest, triggerPrice, 145);
SURVEILLANCE_FIELD(tagOrderRequest, cancelledQuantity, 157);
SURVEILLANCE_FIELD(tagOrderRequest, orderFlags, 165);
SURVEILLANCE_FIELD(tagOrderRequest, accountText, 179);
SURVEILLANCE_FIELD(tagOrderRequest, proClient, 219);
SURVEILLANCE_FIELD(tagOrderRequest, rejectionText, 284);
SURVEILLANCE_FIELD(tagOrderRequest, productType, 447);
SURVEILLANCE_FIELD(tagOrderRequest, marginPlusLeg, 478);
SURVEILLANCE_FIELD(tagOrderRequest, firstLegPrice, 480);
SURVEILLANCE_FIELD(tagOrderRequest, secondLegPrice, 484);

/// The host's stored state of an order: a tagOrderRequest whose fields from offset 24 on lie 24 bytes later.
struct SURVEILLANCE_PACKED tagOrderInfo {  // 782 bytes
    char host0[7];
    int16_t messageCode;                    ///<   7  the host's
    char host9[13];
    int16_t exchangeMask;                   ///<  22  the exchange of the order
    char host24[24];
    char clientCategory[1];                 ///<  48  "N" an NRI client
    char host49[18];
    tagContractDescriptor contract;         ///<  67  what is traded
    char host103[25];
    char clientAccount[12];                 ///< 128  12 characters, not terminated when full
    char host140[3];
    int16_t buySell;                        ///< 143  1 buy, 2 sell
    char host145[8];
    int32_t quantityRemaining;              ///< 153  still open
    int32_t quantity;                       ///< 157  of the whole order
    int32_t quantityFilled;                 ///< 161  traded so far
    int32_t price;                          ///< 165  paise; 0 at market
    int32_t triggerPrice;                   ///< 169  paise
    char host173[8];
    int32_t cancelledQuantity;              ///< 181  read of BSE cash at code 2075
    char host185[4];
    uint8_t orderFlags;                     ///< 189  bit 6 market order
    char host190[13];
    char accountText[16];                   ///< 203  ten characters, a gap of two, up to four more
    char host219[24];
    int16_t proClient;                      ///< 243  1 client, 2 own account
    char host245[63];
    char rejectionText[163];                ///< 308  out: why a position conversion was refused
    int32_t productType;                    ///< 471  see surv::product
    char host475[27];
    int16_t marginPlusLeg;                  ///< 502  0, 1 or 2
    int32_t firstLegPrice;                  ///< 504  paise
    int32_t secondLegPrice;                 ///< 508  paise
    char host512[8];
    int16_t orderStatus;                    ///< 520  bit set of the order's state, the host's own code
    char host522[260];
};
SURVEILLANCE_RECORD(tagOrderInfo, 782);
SURVEILLANCE_FIELD(tagOrderInfo, messageCode, 7);
SURVEILLANCE_FIELD(tagOrderInfo, exchangeMask, 22);
SURVEILLANCE_FIELD(tagOrderInfo, clientCategory, 48);
SURVEILLANCE_FIELD(tagOrderInfo, contract, 67);
SURVEILLANCE_FIELD(tagOrderInfo, clientAccount, 128);
SURVEILLANCE_FIELD(tagOrderInfo, buySell, 143);
SURVEILLANCE_FIELD(tagOrderInfo, quantityRemaining, 153);
SURVEILLANCE_FIELD(tagOrderInfo, quantity, 157);
SURVEILLANCE_FIELD(tagOrderInfo, quantityFilled, 161);
SURVEILLANCE_FIELD(tagOrderInfo, price, 165);
SURVEILLANCE_FIELD(tagOrderInfo, triggerPrice, 169);
SURVEILLANCE_FIELD(tagOrderInfo, cancelledQuantity, 181);
SURVEILLANCE_FIELD(tagOrderInfo, orderFlags, 189);
SURVEILLANCE_FIELD(tagOrderInfo, accountText, 203);
SURVEILLANCE_FIELD(tagOrderInfo, proClient, 243);
SURVEILLANCE_FIELD(tagOrderInfo, rejectionText, 308);
SURVEILLANCE_FIELD(tagOrderInfo, productType, 471);
SURVEILLANCE_FIELD(tagOrderInfo, marginPlusLeg, 502);
SURVEILLANCE_FIELD(tagOrderInfo, firstLegPrice, 504);
SURVEILLANCE_FIELD(tagOrderInfo, secondLegPrice, 508);
SURVEILLANCE_FIELD(tagOrderInfo, orderStatus, 520);

/// A trade that is cancelled or modified.
struct SURVEILLANCE_PACKED tagTradeCorrectionRequest {  // 188 bytes
    char host0[22];
    int16_t exchangeMask;                   ///<  22  the exchange of the trade
    char host24[4];
    tagContractDescriptor contract;         ///<  28  what is traded
    char host64[4];
    int32_t tradedQuantity;                 ///<  68  as it was traded
    int32_t tradePrice;                     ///<  72  paise
    char host76[4];
    int32_t newQuantity;                    ///<  80  as corrected
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
SURVEILLANCE_RECORD(tagTradeCorrectionRequest, 188);
SURVEILLANCE_FIELD(tagTradeCorrectionRequest, exchangeMask, 22);
SURVEILLANCE_FIELD(tagTradeCorrectionRequest, contract, 28);
SURVEILLANCE_FIELD(tagTradeCorrectionRequest, tradedQuantity, 68);
SURVEILLANCE_FIELD(tagTradeCorrectionRequest, tradePrice, 72);
SURVEILLANCE_FIELD(tagTradeCorrectionRequest, newQuantity, 80);
SURVEILLANCE_FIELD(tagTradeCorrectionRequest, buySellCharacter, 100);
SURVEILLANCE_FIELD(tagTradeCorrectionRequest, sellClientAccount, 102);
SURVEILLANCE_FIELD(tagTradeCorrectionRequest, buyClientAccount, 115);
SURVEILLANCE_FIELD(tagTradeCorrectionRequest, accountText, 162);

/// A trade.
struct SURVEILLANCE_PACKED tagTradeInfo {  // 402 bytes
    char host0[22];
    int16_t exchangeMask;                   ///<  22  the exchange of the trade
    char host24[19];
    char clientAccount[12];                 ///<  43  12 characters, not terminated when full
    char host55[1];
    int16_t buySell;                        ///<  56  1 buy, 2 sell
    char host58[30];
    int32_t tradedQuantity;                 ///<  88  of the trade
    int32_t tradePrice;                     ///<  92  paise
    char host96[29];
    tagContractDescriptor contract;         ///< 125  what is traded
    char host161[192];
    int32_t productType;                    ///< 353  see surv::product
    char host357[27];
    int16_t marginPlusLeg;                  ///< 384  0, 1 or 2
    int32_t firstLegPrice;                  ///< 386  paise
    int32_t secondLegPrice;                 ///< 390  paise
    char host394[8];
};
SURVEILLANCE_RECORD(tagTradeInfo, 402);
SURVEILLANCE_FIELD(tagTradeInfo, exchangeMask, 22);
SURVEILLANCE_FIELD(tagTradeInfo, clientAccount, 43);
SURVEILLANCE_FIELD(tagTradeInfo, buySell, 56);
SURVEILLANCE_FIELD(tagTradeInfo, tradedQuantity, 88);
SURVEILLANCE_FIELD(tagTradeInfo, tradePrice, 92);
SURVEILLANCE_FIELD(tagTradeInfo, contract, 125);
SURVEILLANCE_FIELD(tagTradeInfo, productType, 353);
SURVEILLANCE_FIELD(tagTradeInfo, marginPlusLeg, 384);
SURVEILLANCE_FIELD(tagTradeInfo, firstLegPrice, 386);
SURVEILLANCE_FIELD(tagTradeInfo, secondLegPrice, 390);

// ---------------------------------------------------------------------------------------------------------------
// Error records

/// Why an administrative call was not done.
struct SURVEILLANCE_PACKED tagAdminErrMessage {  // 2076 bytes
    int32_t timeStamp;                      ///<   0  calendar seconds of the refusal
    char host4[5];
    int16_t headCode;                       ///<   9  errorCode again, at a refusal by a limit or a fund operation
    char host11[13];
    int16_t errorCode;                      ///<  24  see surv::code
    char host26[2];
    char errorText[2048];                   ///<  28  why
};
SURVEILLANCE_RECORD(tagAdminErrMessage, 2076);
SURVEILLANCE_FIELD(tagAdminErrMessage, timeStamp, 0);
SURVEILLANCE_FIELD(tagAdminErrMessage, headCode, 9);
SURVEILLANCE_FIELD(tagAdminErrMessage, errorCode, 24);
SURVEILLANCE_FIELD(tagAdminErrMessage, errorText, 28);

/// Why an order was refused. An accepted order leaves it untouched.
struct SURVEILLANCE_PACKED tagOrdErrMessage {  // 2076 bytes
    int32_t timeStamp;                      ///<   0  calendar seconds of the refusal
    char host4[5];
    int16_t headCode;                       ///<   9  errorCode again, at a refusal by a limit or a fund operation
    char host11[13];
    int16_t errorCode;                      ///<  24  see surv::code
    char host26[2];
    char errorText[2048];                   ///<  28  why
};
SURVEILLANCE_RECORD(tagOrdErrMessage, 2076);
SURVEILLANCE_FIELD(tagOrdErrMessage, timeStamp, 0);
SURVEILLANCE_FIELD(tagOrdErrMessage, headCode, 9);
SURVEILLANCE_FIELD(tagOrdErrMessage, errorCode, 24);
SURVEILLANCE_FIELD(tagOrdErrMessage, errorText, 28);

// ---------------------------------------------------------------------------------------------------------------
// Rows

/// A limit row: for one entity, one limit mask and one token, what may be used and what is used. Money in paise unless
/// noted; a limit of -1 is none.
struct SURVEILLANCE_PACKED BKSurveillanceLimitDefTag {  // 487 bytes
    char host0[7];
    int16_t messageCode;                    ///<   7  in the message head; shown in the log of a failed load
    int16_t messageKind;                    ///<   9  in the message head; 13 on a change of the limit values alone
    char host11[13];
    int32_t rowStamp;                       ///<  24  carried
    char entityCode[8];                     ///<  28  "-" the house; 8 characters are not terminated
    int16_t entityLevel;                    ///<  36  level type of the entity
    int16_t subLevel;                       ///<  38  -1 counts as 0
    int32_t token;                          ///<  40  a scrip, a scrip group, or -9 for all securities
    int16_t limitMask;                      ///<  44  kLimitMasks in codes.h
    double grossExposureLimit;              ///<  46  paise
    double netExposureLimit;                ///<  54  paise
    double netSaleExposureLimit;            ///<  62  paise
    double netPositionLimit;                ///<  70  paise
    double turnoverLimit;                   ///<  78  paise
    double pendingOrderLimit;               ///<  86  paise
    double mtmLossLimit;                    ///<  94  paise
    double maxSingleOrderValue;             ///< 102  paise
    int32_t maxSingleOrderQty;              ///< 110  shares or units of one order
    double marginLimit;                     ///< 114  paise; compared, divided by 100, with margins in rupees
    double baseFund;                        ///< 122  paise; the fund allocated to the entity
    int32_t netQuantityLimit;               ///< 130  shares or units of one scrip
    int32_t grossExposureMultiplier;        ///< 134  ten-thousandths of the fund: 10000 = one times it; -1 = none
    int32_t netExposureMultiplier;          ///< 138  ten-thousandths of the fund, as above
    int32_t netSaleExposureMultiplier;      ///< 142  ten-thousandths of the fund, as above
    int32_t netPositionMultiplier;          ///< 146  ten-thousandths of the fund, as above
    int32_t turnoverMultiplier;             ///< 150  ten-thousandths of the fund, as above
    int32_t pendingOrderMultiplier;         ///< 154  stored, applied by no rebuild
    int32_t mtmLossMultiplier;              ///< 158  ten-thousandths of the fund, as above
    int32_t marginMultiplier;               ///< 162  ten-thousandths of the fund, as above
    int32_t rowOption;                      ///< 166  carried
    uint8_t limitOptions;                   ///< 170  bits: 0 retainMultiplier, 1 carried, 2 premiumInMargin, 3 grossBasis, 4 exposureMarginInLimit, 5 collateralInFund, 6 saleCreditInFund
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
    int32_t minSingleOrderQty;              ///< 475  shares or units of one order
    char host479[8];
};
SURVEILLANCE_RECORD(BKSurveillanceLimitDefTag, 487);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, messageCode, 7);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, messageKind, 9);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, rowStamp, 24);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, entityCode, 28);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, entityLevel, 36);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, subLevel, 38);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, token, 40);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, limitMask, 44);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossExposureLimit, 46);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, netExposureLimit, 54);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, netSaleExposureLimit, 62);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, netPositionLimit, 70);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, turnoverLimit, 78);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, pendingOrderLimit, 86);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, mtmLossLimit, 94);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, maxSingleOrderValue, 102);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, maxSingleOrderQty, 110);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, marginLimit, 114);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, baseFund, 122);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, netQuantityLimit, 130);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossExposureMultiplier, 134);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, netExposureMultiplier, 138);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, netSaleExposureMultiplier, 142);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, netPositionMultiplier, 146);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, turnoverMultiplier, 150);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, pendingOrderMultiplier, 154);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, mtmLossMultiplier, 158);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, marginMultiplier, 162);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, rowOption, 166);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, limitOptions, 170);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedGrossOrder, 171);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedNetOrder, 179);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedNetSaleOrder, 187);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedNetPositionOrder, 195);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedTurnoverOrder, 203);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedGrossTraded, 211);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedNetTraded, 219);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedNetSaleTraded, 227);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedNetPositionTraded, 235);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedTurnoverTraded, 243);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedPendingOrder, 251);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMtm, 259);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMaxGross, 267);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMaxNet, 275);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMaxNetSale, 283);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMaxNetPosition, 291);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMaxTurnover, 299);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMarginOrder, 307);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMarginTraded, 315);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMarginMax, 323);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossUsedGrossOrder, 331);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossUsedNetOrder, 339);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossUsedNetSaleOrder, 347);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossUsedGrossTraded, 355);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossUsedNetTraded, 363);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossUsedNetSaleTraded, 371);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossUsedMaxGross, 387);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossUsedMaxNet, 395);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, grossUsedMaxNetSale, 403);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedMtmFull, 411);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedBookedPnl, 427);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, collateralFund, 435);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, saleCreditFund, 443);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, definedFund, 451);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, usedExposureMargin, 459);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, minSingleOrderValue, 467);
SURVEILLANCE_FIELD(BKSurveillanceLimitDefTag, minSingleOrderQty, 475);

/// A position row: what one holder has done in one scrip and one period.
struct SURVEILLANCE_PACKED BKExposureTag {  // 260 bytes
    char host0[9];
    int16_t messageKind;                    ///<   9  8 marks a row of the MTF product
    char host11[13];
    int32_t rowStamp;                       ///<  24  carried
    char levelCode[6];                      ///<  28  "-" for the root
    char groupCode[6];                      ///<  34  code of the group
    char host40[6];
    char accountCode[32];                   ///<  46  of the holder
    char familyCode[6];                     ///<  78  of the holder; read by a start
    char userId[16];                        ///<  84  of the holder
    int16_t marketSegment;                  ///< 100  surv::Segment
    int16_t limitMask;                      ///< 102  a single-segment mask
    int32_t token;                          ///< 104  -9 in a total row
    int32_t underlyingToken;                ///< 108  of a derivative
    tagContractDescriptor contract;         ///< 112  optionType in rows of masks 3 and 17: "DD" delivery, "MP" and "MD" the legs of a two-leg order
    int32_t lastPrice;                      ///< 148  paise
    int32_t orderBuyQty;                    ///< 152  orders and trades
    double orderBuyValue;                   ///< 156  paise
    int32_t orderSellQty;                   ///< 164  orders and trades
    double orderSellValue;                  ///< 168  paise
    int32_t tradedBuyQty;                   ///< 176  trades alone
    double tradedBuyValue;                  ///< 180  paise
    int32_t tradedSellQty;                  ///< 188  trades alone
    double tradedSellValue;                 ///< 192  paise
    double openPositionValue;               ///< 200  paise; at the last price
    double mtmValue;                        ///< 208  paise; a loss is negative
    int16_t clientLevelType;                ///< 216  level type of the holder
    int16_t subClientLevelType;             ///< 218  -1 or 255 none
    int16_t groupLevelType;                 ///< 220  level type
    int32_t priceMultiplier;                ///< 222  as in tagSurveillanceInfo
    tagMarginRateBlock marginRates;         ///< 226  contract size factors
    tagScripRateBlock scripRates;           ///< 246  margin rate of the scrip
};
SURVEILLANCE_RECORD(BKExposureTag, 260);
SURVEILLANCE_FIELD(BKExposureTag, messageKind, 9);
SURVEILLANCE_FIELD(BKExposureTag, rowStamp, 24);
SURVEILLANCE_FIELD(BKExposureTag, levelCode, 28);
SURVEILLANCE_FIELD(BKExposureTag, groupCode, 34);
SURVEILLANCE_FIELD(BKExposureTag, accountCode, 46);
SURVEILLANCE_FIELD(BKExposureTag, familyCode, 78);
SURVEILLANCE_FIELD(BKExposureTag, userId, 84);
SURVEILLANCE_FIELD(BKExposureTag, marketSegment, 100);
SURVEILLANCE_FIELD(BKExposureTag, limitMask, 102);
SURVEILLANCE_FIELD(BKExposureTag, token, 104);
SURVEILLANCE_FIELD(BKExposureTag, underlyingToken, 108);
SURVEILLANCE_FIELD(BKExposureTag, contract, 112);
SURVEILLANCE_FIELD(BKExposureTag, lastPrice, 148);
SURVEILLANCE_FIELD(BKExposureTag, orderBuyQty, 152);
SURVEILLANCE_FIELD(BKExposureTag, orderBuyValue, 156);
SURVEILLANCE_FIELD(BKExposureTag, orderSellQty, 164);
SURVEILLANCE_FIELD(BKExposureTag, orderSellValue, 168);
SURVEILLANCE_FIELD(BKExposureTag, tradedBuyQty, 176);
SURVEILLANCE_FIELD(BKExposureTag, tradedBuyValue, 180);
SURVEILLANCE_FIELD(BKExposureTag, tradedSellQty, 188);
SURVEILLANCE_FIELD(BKExposureTag, tradedSellValue, 192);
SURVEILLANCE_FIELD(BKExposureTag, openPositionValue, 200);
SURVEILLANCE_FIELD(BKExposureTag, mtmValue, 208);
SURVEILLANCE_FIELD(BKExposureTag, clientLevelType, 216);
SURVEILLANCE_FIELD(BKExposureTag, subClientLevelType, 218);
SURVEILLANCE_FIELD(BKExposureTag, groupLevelType, 220);
SURVEILLANCE_FIELD(BKExposureTag, priceMultiplier, 222);
SURVEILLANCE_FIELD(BKExposureTag, marginRates, 226);
SURVEILLANCE_FIELD(BKExposureTag, scripRates, 246);

/// What a probe reports of a limit row.
struct SURVEILLANCE_PACKED tagBreachRow {  // 38 bytes
    char rowHead[24];                       ///<   0  first 24 bytes of the limit row
    int32_t token;                          ///<  24  of the limit row
    char entityCode[6];                     ///<  28  of the limit row
    int16_t limitMask;                      ///<  34  of the limit row
    uint8_t breachBitsA;                    ///<  36  1 gross, 2 net, 4 net sale, 8 net position, 0x10 turnover, 0x20 margin, 0x40 pending order
    uint8_t breachBitsB;                    ///<  37  1 order value, 2 order quantity, 4 net quantity
};
SURVEILLANCE_RECORD(tagBreachRow, 38);
SURVEILLANCE_FIELD(tagBreachRow, rowHead, 0);
SURVEILLANCE_FIELD(tagBreachRow, token, 24);
SURVEILLANCE_FIELD(tagBreachRow, entityCode, 28);
SURVEILLANCE_FIELD(tagBreachRow, limitMask, 34);
SURVEILLANCE_FIELD(tagBreachRow, breachBitsA, 36);
SURVEILLANCE_FIELD(tagBreachRow, breachBitsB, 37);

// ---------------------------------------------------------------------------------------------------------------
// Risk parameters and margin rates

/// Head of each risk parameter message.
struct SURVEILLANCE_PACKED tagRPFHeader {  // 24 bytes
    char host0[7];
    int16_t messageCode;                    ///<   7  28001 to 28009
    char host9[11];
    int16_t messageLength;                  ///<  20  of the whole message, this head included
    int16_t segment;                        ///<  22  exchange mask that the file belongs to: 2, 4, 0x10 or 0x40
};
SURVEILLANCE_RECORD(tagRPFHeader, 24);
SURVEILLANCE_FIELD(tagRPFHeader, messageCode, 7);
SURVEILLANCE_FIELD(tagRPFHeader, messageLength, 20);
SURVEILLANCE_FIELD(tagRPFHeader, segment, 22);

/// What a risk parameter file says of itself. Carried; the library reads nothing in it.
struct SURVEILLANCE_PACKED tagRPFFileDetails {  // 66 bytes
    char host0[66];
};
SURVEILLANCE_RECORD(tagRPFFileDetails, 66);

/// Charges of one underlying.
struct SURVEILLANCE_PACKED tagRPFUnderlyingRecord {  // 82 bytes
    int32_t underlyingToken;                ///<   0  of the underlying
    float calendarSpreadCharge;             ///<   4  rupees per unit of spread position
    float shortOptionMinimumCharge;         ///<   8  rupees per unit of short option quantity
    char host12[70];
};
SURVEILLANCE_RECORD(tagRPFUnderlyingRecord, 82);
SURVEILLANCE_FIELD(tagRPFUnderlyingRecord, underlyingToken, 0);
SURVEILLANCE_FIELD(tagRPFUnderlyingRecord, calendarSpreadCharge, 4);
SURVEILLANCE_FIELD(tagRPFUnderlyingRecord, shortOptionMinimumCharge, 8);

/// Risk parameters of one contract.
struct SURVEILLANCE_PACKED tagRPFContractRecord {  // 122 bytes
    tagContractDescriptor contract;         ///<   0  the third character of optionType is not read
    int32_t token;                          ///<  36  of the contract
    int32_t underlyingToken;                ///<  40  of the underlying
    float contractPrice;                    ///<  44  paise; 0: the contract carries no price
    char host48[6];
    float riskArray[16];                    ///<  54  rupees lost per unit of long position in each scenario; a gain is negative
    float compositeDelta;                   ///< 118  per unit of position
};
SURVEILLANCE_RECORD(tagRPFContractRecord, 122);
SURVEILLANCE_FIELD(tagRPFContractRecord, contract, 0);
SURVEILLANCE_FIELD(tagRPFContractRecord, token, 36);
SURVEILLANCE_FIELD(tagRPFContractRecord, underlyingToken, 40);
SURVEILLANCE_FIELD(tagRPFContractRecord, contractPrice, 44);
SURVEILLANCE_FIELD(tagRPFContractRecord, riskArray, 54);
SURVEILLANCE_FIELD(tagRPFContractRecord, compositeDelta, 118);

/// Exposure margin rates of one derivative token.
struct SURVEILLANCE_PACKED tagAdditionalMarginInfo {  // 68 bytes
    int32_t exchange;                       ///<   0  exchange mask: 2, 0x10 or 0x40
    int32_t token;                          ///<   4  of the contract
    int32_t additionalMarginRate;           ///<   8  millionths of value; NCDEX ten-thousandths
    char host12[20];
    int32_t longMarginRate;                 ///<  32  MCX, long positions: millionths of value
    char host36[8];
    int32_t shortMarginRate;                ///<  44  MCX, short positions: millionths of value
    char host48[8];
    int32_t sellExposureRate;               ///<  56  on net sale exposure: ten-thousandths of value; MCX millionths
    int32_t buyExposureRate;                ///<  60  on net exposure, as sellExposureRate
    char host64[4];
};
SURVEILLANCE_RECORD(tagAdditionalMarginInfo, 68);
SURVEILLANCE_FIELD(tagAdditionalMarginInfo, exchange, 0);
SURVEILLANCE_FIELD(tagAdditionalMarginInfo, token, 4);
SURVEILLANCE_FIELD(tagAdditionalMarginInfo, additionalMarginRate, 8);
SURVEILLANCE_FIELD(tagAdditionalMarginInfo, longMarginRate, 32);
SURVEILLANCE_FIELD(tagAdditionalMarginInfo, shortMarginRate, 44);
SURVEILLANCE_FIELD(tagAdditionalMarginInfo, sellExposureRate, 56);
SURVEILLANCE_FIELD(tagAdditionalMarginInfo, buyExposureRate, 60);

/// The VaR rate of one cash token.
struct SURVEILLANCE_PACKED tagMarginInfo {  // 16 bytes
    int32_t token;                          ///<   0  of the scrip
    int16_t marginBasis;                    ///<   4  0, 1: hundredths of a percent of value; 2: paise per unit
    double marginRate;                      ///<   6  as marginBasis says; 0 by percent charges the whole value
    int16_t exchange;                       ///<  14  exchange mask: 1 or 8
};
SURVEILLANCE_RECORD(tagMarginInfo, 16);
SURVEILLANCE_FIELD(tagMarginInfo, token, 0);
SURVEILLANCE_FIELD(tagMarginInfo, marginBasis, 4);
SURVEILLANCE_FIELD(tagMarginInfo, marginRate, 6);
SURVEILLANCE_FIELD(tagMarginInfo, exchange, 14);

/// The margin rate of one MCX token.
struct SURVEILLANCE_PACKED tagMcxMarginRecord {  // 44 bytes
    int32_t token;                          ///<   0  of the contract
    char symbol[13];                        ///<   4  carried
    char series[3];                         ///<  17  carried
    char host20[12];
    int16_t marginBasis;                    ///<  32  1: percent of value; 2: paise per unit
    double marginRate;                      ///<  34  as marginBasis says
    int16_t exchange;                       ///<  42  exchange mask; only 0x10 is kept
};
SURVEILLANCE_RECORD(tagMcxMarginRecord, 44);
SURVEILLANCE_FIELD(tagMcxMarginRecord, token, 0);
SURVEILLANCE_FIELD(tagMcxMarginRecord, symbol, 4);
SURVEILLANCE_FIELD(tagMcxMarginRecord, series, 17);
SURVEILLANCE_FIELD(tagMcxMarginRecord, marginBasis, 32);
SURVEILLANCE_FIELD(tagMcxMarginRecord, marginRate, 34);
SURVEILLANCE_FIELD(tagMcxMarginRecord, exchange, 42);

/// The exposure margin rate of one NCDEX token. Kept until the clean-up; no margin is formed from it.
struct SURVEILLANCE_PACKED tagNcdexExposureMarginRecord {  // 48 bytes
    int32_t token;                          ///<   0  of the contract
    char symbol[13];                        ///<   4  carried
    char series[3];                         ///<  17  carried
    char host20[12];
    int16_t marginBasis;                    ///<  32  carried
    double marginRate;                      ///<  34  carried
    char host42[4];
    int16_t exchange;                       ///<  46  exchange mask; only 0x40 is kept
};
SURVEILLANCE_RECORD(tagNcdexExposureMarginRecord, 48);
SURVEILLANCE_FIELD(tagNcdexExposureMarginRecord, token, 0);
SURVEILLANCE_FIELD(tagNcdexExposureMarginRecord, symbol, 4);
SURVEILLANCE_FIELD(tagNcdexExposureMarginRecord, series, 17);
SURVEILLANCE_FIELD(tagNcdexExposureMarginRecord, marginBasis, 32);
SURVEILLANCE_FIELD(tagNcdexExposureMarginRecord, marginRate, 34);
SURVEILLANCE_FIELD(tagNcdexExposureMarginRecord, exchange, 46);

// ---------------------------------------------------------------------------------------------------------------
// Product and security reference data

/// Which products a scrip allows, and its price bands.
struct SURVEILLANCE_PACKED tagProductTypeScripBasket {  // 81 bytes
    char host0[24];
    char host24[17];
    int32_t token;                          ///<  41  of the scrip
    int16_t productFlags;                   ///<  45  1 margin, 2 delivery, 4 Margin+, 8 MTF
    int32_t firstLegBand;                   ///<  47  ten-thousandths of a price
    int32_t secondLegBand;                  ///<  51  ten-thousandths of a price
    int32_t dailyBand;                      ///<  55  ten-thousandths of a price
    int32_t basePrice;                      ///<  59  paise
    char host63[18];
};
SURVEILLANCE_RECORD(tagProductTypeScripBasket, 81);
SURVEILLANCE_FIELD(tagProductTypeScripBasket, token, 41);
SURVEILLANCE_FIELD(tagProductTypeScripBasket, productFlags, 45);
SURVEILLANCE_FIELD(tagProductTypeScripBasket, firstLegBand, 47);
SURVEILLANCE_FIELD(tagProductTypeScripBasket, secondLegBand, 51);
SURVEILLANCE_FIELD(tagProductTypeScripBasket, dailyBand, 55);
SURVEILLANCE_FIELD(tagProductTypeScripBasket, basePrice, 59);

/// A cash token and its last prices.
struct SURVEILLANCE_PACKED tagTokenPriceRecord {  // 42 bytes
    int32_t token;                          ///<   0  of the scrip
    int16_t exchange;                       ///<   4  exchange mask; only 1 is kept
    char symbol[13];                        ///<   6  of the scrip
    char series[3];                         ///<  19  of the scrip
    int32_t priceA;                         ///<  22  paise; written by the broadcast, read by nothing
    int32_t priceB;                         ///<  26  paise; as priceA
    int32_t priceC;                         ///<  30  paise; as priceA
    int32_t closePrice;                     ///<  34  paise
    int32_t lastTradedPrice;                ///<  38  paise
};
SURVEILLANCE_RECORD(tagTokenPriceRecord, 42);
SURVEILLANCE_FIELD(tagTokenPriceRecord, token, 0);
SURVEILLANCE_FIELD(tagTokenPriceRecord, exchange, 4);
SURVEILLANCE_FIELD(tagTokenPriceRecord, symbol, 6);
SURVEILLANCE_FIELD(tagTokenPriceRecord, series, 19);
SURVEILLANCE_FIELD(tagTokenPriceRecord, priceA, 22);
SURVEILLANCE_FIELD(tagTokenPriceRecord, priceB, 26);
SURVEILLANCE_FIELD(tagTokenPriceRecord, priceC, 30);
SURVEILLANCE_FIELD(tagTokenPriceRecord, closePrice, 34);
SURVEILLANCE_FIELD(tagTokenPriceRecord, lastTradedPrice, 38);

/// The market of one scrip, as an exchange broadcasts it.
struct SURVEILLANCE_PACKED tagBcastMBOOrMBPTouchline {  // 141 bytes
    char host0[22];
    int16_t exchange;                       ///<  22  exchange mask
    int32_t token;                          ///<  24  0: the record is ignored
    char host28[8];
    int32_t lastTradedPrice;                ///<  36  paise; 0 when there was no trade
    char host40[43];
    int32_t bestBuyPrice;                   ///<  83  paise; inside the 12 bytes of the best bid
    char host87[8];
    int32_t bestSellPrice;                  ///<  95  paise; inside the 12 bytes of the best offer
    char host99[26];
    int32_t closePrice;                     ///< 125  paise
    int32_t priceA;                         ///< 129  paise; stored, and passed on to the token's price record
    int32_t priceB;                         ///< 133  paise; as priceA
    int32_t priceC;                         ///< 137  paise; as priceA
};
SURVEILLANCE_RECORD(tagBcastMBOOrMBPTouchline, 141);
SURVEILLANCE_FIELD(tagBcastMBOOrMBPTouchline, exchange, 22);
SURVEILLANCE_FIELD(tagBcastMBOOrMBPTouchline, token, 24);
SURVEILLANCE_FIELD(tagBcastMBOOrMBPTouchline, lastTradedPrice, 36);
SURVEILLANCE_FIELD(tagBcastMBOOrMBPTouchline, bestBuyPrice, 83);
SURVEILLANCE_FIELD(tagBcastMBOOrMBPTouchline, bestSellPrice, 95);
SURVEILLANCE_FIELD(tagBcastMBOOrMBPTouchline, closePrice, 125);
SURVEILLANCE_FIELD(tagBcastMBOOrMBPTouchline, priceA, 129);
SURVEILLANCE_FIELD(tagBcastMBOOrMBPTouchline, priceB, 133);
SURVEILLANCE_FIELD(tagBcastMBOOrMBPTouchline, priceC, 137);

/// A series whose scrips are delivered whatever the order says.
struct SURVEILLANCE_PACKED tagCompulsoryDeliverySeries {  // 5 bytes
    char series[3];                         ///<   0  its name
    int16_t exchange;                       ///<   3  exchange mask: 1 or 8
};
SURVEILLANCE_RECORD(tagCompulsoryDeliverySeries, 5);
SURVEILLANCE_FIELD(tagCompulsoryDeliverySeries, series, 0);
SURVEILLANCE_FIELD(tagCompulsoryDeliverySeries, exchange, 3);

// ---------------------------------------------------------------------------------------------------------------
// Depository

/// Shares of one ISIN that one entity holds at the depository. Of a row of a start the head down to holdingQty,
/// carriedText4, collateralPrice and haircutRate are read. Carried: passed through as it came.
struct SURVEILLANCE_PACKED tagDPHolding {  // 303 bytes
    char categoryCode[6];                   ///<   0  of the entity
    char carriedText1[16];                  ///<   6  carried
    char carriedText2[16];                  ///<  22  carried
    int32_t carriedLong1;                   ///<  38  carried
    int32_t carriedLong2;                   ///<  42  carried
    char carriedText3[36];                  ///<  46  carried
    char isinCode[14];                      ///<  82  of the equity
    int32_t holdingQty;                     ///<  96  shares held
    int32_t nseBlockedQty;                  ///< 100  used up by today's sales
    int32_t bseBlockedQty;                  ///< 104  the same of BSE
    int32_t nseSarQty;                      ///< 108  on the sale-against-receipt account
    int32_t nseSarBlockedQty;               ///< 112  the part of it that is used up
    int32_t bseSarQty;                      ///< 116  as nseSarQty
    int32_t bseSarBlockedQty;               ///< 120  as nseSarBlockedQty
    int32_t nseOrderBuyQty;                 ///< 124  today's deliveries of NSE: orders and trades
    int32_t nseOrderSellQty;                ///< 128  the same
    int32_t nseTradedBuyQty;                ///< 132  trades alone
    int32_t nseTradedSellQty;               ///< 136  the same
    double nseOrderBuyValue;                ///< 140  paise; orders and trades
    double nseOrderSellValue;               ///< 148  paise
    double nseTradedBuyValue;               ///< 156  paise; trades alone
    double nseTradedSellValue;              ///< 164  paise
    int32_t bseOrderBuyQty;                 ///< 172  the eight of BSE
    int32_t bseOrderSellQty;                ///< 176  as of NSE
    int32_t bseTradedBuyQty;                ///< 180  as of NSE
    int32_t bseTradedSellQty;               ///< 184  as of NSE
    double bseOrderBuyValue;                ///< 188  paise
    double bseOrderSellValue;               ///< 196  paise
    double bseTradedBuyValue;               ///< 204  paise
    double bseTradedSellValue;              ///< 212  paise
    char carriedText4[51];                  ///< 220  carried
    int32_t collateralQty;                  ///< 271  that counts as collateral
    double collateralPrice;                 ///< 275  paise a share
    double collateralValue;                 ///< 283  paise; after the haircut
    double saleCredit;                      ///< 291  paise
    int32_t haircutRate;                    ///< 299  ten-thousandths: 2500 is 25 percent
};
SURVEILLANCE_RECORD(tagDPHolding, 303);
SURVEILLANCE_FIELD(tagDPHolding, categoryCode, 0);
SURVEILLANCE_FIELD(tagDPHolding, carriedText1, 6);
SURVEILLANCE_FIELD(tagDPHolding, carriedText2, 22);
SURVEILLANCE_FIELD(tagDPHolding, carriedLong1, 38);
SURVEILLANCE_FIELD(tagDPHolding, carriedLong2, 42);
SURVEILLANCE_FIELD(tagDPHolding, carriedText3, 46);
SURVEILLANCE_FIELD(tagDPHolding, isinCode, 82);
SURVEILLANCE_FIELD(tagDPHolding, holdingQty, 96);
SURVEILLANCE_FIELD(tagDPHolding, nseBlockedQty, 100);
SURVEILLANCE_FIELD(tagDPHolding, bseBlockedQty, 104);
SURVEILLANCE_FIELD(tagDPHolding, nseSarQty, 108);
SURVEILLANCE_FIELD(tagDPHolding, nseSarBlockedQty, 112);
SURVEILLANCE_FIELD(tagDPHolding, bseSarQty, 116);
SURVEILLANCE_FIELD(tagDPHolding, bseSarBlockedQty, 120);
SURVEILLANCE_FIELD(tagDPHolding, nseOrderBuyQty, 124);
SURVEILLANCE_FIELD(tagDPHolding, nseOrderSellQty, 128);
SURVEILLANCE_FIELD(tagDPHolding, nseTradedBuyQty, 132);
SURVEILLANCE_FIELD(tagDPHolding, nseTradedSellQty, 136);
SURVEILLANCE_FIELD(tagDPHolding, nseOrderBuyValue, 140);
SURVEILLANCE_FIELD(tagDPHolding, nseOrderSellValue, 148);
SURVEILLANCE_FIELD(tagDPHolding, nseTradedBuyValue, 156);
SURVEILLANCE_FIELD(tagDPHolding, nseTradedSellValue, 164);
SURVEILLANCE_FIELD(tagDPHolding, bseOrderBuyQty, 172);
SURVEILLANCE_FIELD(tagDPHolding, bseOrderSellQty, 176);
SURVEILLANCE_FIELD(tagDPHolding, bseTradedBuyQty, 180);
SURVEILLANCE_FIELD(tagDPHolding, bseTradedSellQty, 184);
SURVEILLANCE_FIELD(tagDPHolding, bseOrderBuyValue, 188);
SURVEILLANCE_FIELD(tagDPHolding, bseOrderSellValue, 196);
SURVEILLANCE_FIELD(tagDPHolding, bseTradedBuyValue, 204);
SURVEILLANCE_FIELD(tagDPHolding, bseTradedSellValue, 212);
SURVEILLANCE_FIELD(tagDPHolding, carriedText4, 220);
SURVEILLANCE_FIELD(tagDPHolding, collateralQty, 271);
SURVEILLANCE_FIELD(tagDPHolding, collateralPrice, 275);
SURVEILLANCE_FIELD(tagDPHolding, collateralValue, 283);
SURVEILLANCE_FIELD(tagDPHolding, saleCredit, 291);
SURVEILLANCE_FIELD(tagDPHolding, haircutRate, 299);

/// Shares that came to an entity during the day.
struct SURVEILLANCE_PACKED tagDPUpload {  // 105 bytes
    char host0[24];
    char categoryCode[6];                   ///<  24  of the entity
    char carriedText1[16];                  ///<  30  carried
    char carriedText2[16];                  ///<  46  carried
    char isinCode[14];                      ///<  62  of the equity
    char carriedText3[9];                   ///<  76  carried
    int32_t quantity;                       ///<  85  joins the shares held; below 0 takes off
    char host89[4];
    double collateralPrice;                 ///<  93  paise a share
    int32_t haircutRate;                    ///< 101  ten-thousandths
};
SURVEILLANCE_RECORD(tagDPUpload, 105);
SURVEILLANCE_FIELD(tagDPUpload, categoryCode, 24);
SURVEILLANCE_FIELD(tagDPUpload, carriedText1, 30);
SURVEILLANCE_FIELD(tagDPUpload, carriedText2, 46);
SURVEILLANCE_FIELD(tagDPUpload, isinCode, 62);
SURVEILLANCE_FIELD(tagDPUpload, carriedText3, 76);
SURVEILLANCE_FIELD(tagDPUpload, quantity, 85);
SURVEILLANCE_FIELD(tagDPUpload, collateralPrice, 93);
SURVEILLANCE_FIELD(tagDPUpload, haircutRate, 101);

/// Shares of one ISIN on an entity's sale-against-receipt account. The host's record may be longer.
struct SURVEILLANCE_PACKED tagSarRow {  // 206 bytes
    char host0[24];
    char categoryCode[6];                   ///<  24  of the entity
    char host30[32];
    char carriedText1[16];                  ///<  62  carried
    char carriedText2[16];                  ///<  78  carried
    char host94[40];
    int16_t limitMask;                      ///< 134  3 NSE, 0x11 BSE; another brings no shares
    char host136[40];
    int32_t quantity;                       ///< 176  shares
    char host180[12];
    char isinCode[14];                      ///< 192  of the equity
};
SURVEILLANCE_RECORD(tagSarRow, 206);
SURVEILLANCE_FIELD(tagSarRow, categoryCode, 24);
SURVEILLANCE_FIELD(tagSarRow, carriedText1, 62);
SURVEILLANCE_FIELD(tagSarRow, carriedText2, 78);
SURVEILLANCE_FIELD(tagSarRow, limitMask, 134);
SURVEILLANCE_FIELD(tagSarRow, quantity, 176);
SURVEILLANCE_FIELD(tagSarRow, isinCode, 192);

/// The ISIN of an equity.
struct SURVEILLANCE_PACKED tagSecurityIsinRow {  // 36 bytes
    int32_t token;                          ///<   0  of the equity
    char isinCode[14];                      ///<   4  of the equity
    char symbol[13];                        ///<  18  carried
    char series[3];                         ///<  31  carried
    int16_t exchange;                       ///<  34  exchange mask; 1 and 8 are kept
};
SURVEILLANCE_RECORD(tagSecurityIsinRow, 36);
SURVEILLANCE_FIELD(tagSecurityIsinRow, token, 0);
SURVEILLANCE_FIELD(tagSecurityIsinRow, isinCode, 4);
SURVEILLANCE_FIELD(tagSecurityIsinRow, symbol, 18);
SURVEILLANCE_FIELD(tagSecurityIsinRow, series, 31);
SURVEILLANCE_FIELD(tagSecurityIsinRow, exchange, 34);

// ---------------------------------------------------------------------------------------------------------------
// Funds

/// Money that joins or leaves the fund of an entity, and the answer.
struct SURVEILLANCE_PACKED tagRMSFundAllocationRequest {  // 388 bytes
    int32_t timeStamp;                      ///<   0  out: calendar seconds of the answer
    char host4[3];
    int16_t messageCode;                    ///<   7  out: 13002
    int16_t headCode;                       ///<   9  out: 0 done; -100 no such entity, or none with limits over all exchanges; -1 refused
    char host11[13];
    char entityName[32];                    ///<  24  shown in a refusal
    char entityKey[60];                     ///<  56  code of the entity
    double requestedFund;                   ///< 116  paise; above 0 a deposit, else a withdrawal
    double usedMargin;                      ///< 124  out: rupees; usedMarginMax of the row, where the request was done
    char errorText[256];                    ///< 132  out: why it was refused
};
SURVEILLANCE_RECORD(tagRMSFundAllocationRequest, 388);
SURVEILLANCE_FIELD(tagRMSFundAllocationRequest, timeStamp, 0);
SURVEILLANCE_FIELD(tagRMSFundAllocationRequest, messageCode, 7);
SURVEILLANCE_FIELD(tagRMSFundAllocationRequest, headCode, 9);
SURVEILLANCE_FIELD(tagRMSFundAllocationRequest, entityName, 24);
SURVEILLANCE_FIELD(tagRMSFundAllocationRequest, entityKey, 56);
SURVEILLANCE_FIELD(tagRMSFundAllocationRequest, requestedFund, 116);
SURVEILLANCE_FIELD(tagRMSFundAllocationRequest, usedMargin, 124);
SURVEILLANCE_FIELD(tagRMSFundAllocationRequest, errorText, 132);

// ---------------------------------------------------------------------------------------------------------------
// Preferences

/// How one entity is margined at one exchange. The bytes from exchange on travel into the order record.
struct SURVEILLANCE_PACKED tagClientRiskPreferenceInfoForSurv {  // 102 bytes
    char host0[24];
    char preferenceCode[6];                 ///<  24  client or family; "*****" the default record
    char familyCode[6];                     ///<  30  family of a client
    char parentCode[6];                     ///<  36  carried
    char accountCode[16];                   ///<  42  carried
    int32_t exchange;                       ///<  58  exchange mask, or -1 for the overall record
    int32_t token;                          ///<  62  -9 = all securities
    int32_t prefMarginRate;                 ///<  66  the entity's own rate, millionths of value; on cash and loaded MCX rows whole percents (10000) alone. 0: none
    int32_t marginAddOnFactor;              ///<  70  millionths
    int32_t prefExtraMarginRate;            ///<  74  millionths of value
    int32_t carried;                        ///<  78  carried
    int32_t preAutoSquareOffPart;           ///<  82  millionths of mtmLossLimit
    int32_t autoSquareOffPart;              ///<  86  millionths of mtmLossLimit
    int16_t prefMarginMode;                 ///<  90  0 exchange rate, 1 own rate, 2 the larger
    int32_t allowedProducts;                ///<  92  1 margin, 2 delivery, 4 Margin+, 8 MTF
    char host96[2];
    uint8_t marginFlags;                    ///<  98  bits: 0 exposure margin counts, 1 MTM profit, 2 MTM loss, 3 booked profit, 4 booked loss, 5 premium, 6 square-off by time, 7 by session
    uint8_t fundFlags;                      ///<  99  bits: 0 square-off alone, 1 and 2 the two MTM square-off modes, 3 after-market orders are checked, 5 collateral and 6 sale credit in the fund
    char host100[2];
};
SURVEILLANCE_RECORD(tagClientRiskPreferenceInfoForSurv, 102);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, preferenceCode, 24);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, familyCode, 30);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, parentCode, 36);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, accountCode, 42);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, exchange, 58);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, token, 62);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, prefMarginRate, 66);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, marginAddOnFactor, 70);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, prefExtraMarginRate, 74);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, carried, 78);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, preAutoSquareOffPart, 82);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, autoSquareOffPart, 86);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, prefMarginMode, 90);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, allowedProducts, 92);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, marginFlags, 98);
SURVEILLANCE_FIELD(tagClientRiskPreferenceInfoForSurv, fundFlags, 99);
