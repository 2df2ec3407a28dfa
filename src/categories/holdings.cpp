// What a category holds at the depository: rows taken in, rows given out, and the worth of it in its limit rows.

#include "categories/holdings.h"

#include <cstring>

#include "categories/category.h"
#include "platform/host_list.h"
#include "platform/numeric.h"

namespace surv {
namespace {

constexpr std::string_view kEveryHolding = "ALL";

/// A text that is passed on byte for byte; what the wider field has more is zeroed.
template <std::size_t To, std::size_t From>
void Carry(char (&to)[To], const char (&from)[From]) {
    static_assert(From <= To);
    std::memset(to, 0, To);
    std::memcpy(to, from, From);
}

/// The holding that a row is about; `fresh`: the row has just made it.
struct RowHolding {
    Holding* holding = nullptr;  ///< null: the row names no ISIN
    bool fresh = false;
};

template <class Row>
RowHolding FindOrMake(Holdings& holdings, const Row& row) {
    const FixedText<16> isin = FieldText(row.isinCode);
    if (isin.Empty()) return {};
    Holding& holding = holdings.FindOrMake(isin);
    if (!holding.IsBlank()) return {&holding, false};
    holding = Holding{};
    holding.isinCode = isin;
    holding.categoryCode = FieldText(row.categoryCode);
    Carry(holding.carried.carriedText1, row.carriedText1);
    Carry(holding.carried.carriedText2, row.carriedText2);
    return {&holding, true};
}

void FormWorth(Holding& holding) {
    holding.collateralValue = holding.FormCollateralValue();
    holding.saleCredit = holding.FormSaleCredit();
}

/// Whatever is held counts as collateral.
void AddShares(Holding& holding, std::int32_t quantity, double collateralPrice, std::int32_t haircutRate) {
    holding.holdingQty += quantity;
    holding.collateralQty = holding.holdingQty;
    holding.collateralPrice = collateralPrice;
    holding.haircutRate = haircutRate;
    FormWorth(holding);
}

void FillSides(tagDPHolding& row, const HoldingSide& nse, const HoldingSide& bse) {
    row.nseBlockedQty = RowQuantity(nse.blockedQty);
    row.bseBlockedQty = RowQuantity(bse.blockedQty);
    row.nseSarQty = RowQuantity(nse.sarQty);
    row.nseSarBlockedQty = RowQuantity(nse.sarBlockedQty);
    row.bseSarQty = RowQuantity(bse.sarQty);
    row.bseSarBlockedQty = RowQuantity(bse.sarBlockedQty);

    row.nseOrderBuyQty = RowQuantity(nse.orderBuyQty);
    row.nseOrderSellQty = RowQuantity(nse.orderSellQty);
    row.nseTradedBuyQty = RowQuantity(nse.tradedBuyQty);
    row.nseTradedSellQty = RowQuantity(nse.tradedSellQty);
    row.nseOrderBuyValue = nse.orderBuyValue;
    row.nseOrderSellValue = nse.orderSellValue;
    row.nseTradedBuyValue = nse.tradedBuyValue;
    row.nseTradedSellValue = nse.tradedSellValue;

    row.bseOrderBuyQty = RowQuantity(bse.orderBuyQty);
    row.bseOrderSellQty = RowQuantity(bse.orderSellQty);
    row.bseTradedBuyQty = RowQuantity(bse.tradedBuyQty);
    row.bseTradedSellQty = RowQuantity(bse.tradedSellQty);
    row.bseOrderBuyValue = bse.orderBuyValue;
    row.bseOrderSellValue = bse.orderSellValue;
    row.bseTradedBuyValue = bse.tradedBuyValue;
    row.bseTradedSellValue = bse.tradedSellValue;
}

void FillCarried(tagDPHolding& row, const HoldingCarried& carried) {
    Carry(row.carriedText1, carried.carriedText1);
    Carry(row.carriedText2, carried.carriedText2);
    row.carriedLong1 = carried.carriedLong1;
    row.carriedLong2 = carried.carriedLong2;
    Carry(row.carriedText3, carried.carriedText3);
    Carry(row.carriedText4, carried.carriedText4);
}

std::unique_ptr<tagDPHolding> RowOf(const Holding& holding) {
    auto row = std::make_unique<tagDPHolding>();
    WriteWholeField(row->categoryCode, holding.categoryCode.View());
    WriteWholeField(row->isinCode, holding.isinCode.View());
    row->holdingQty = RowQuantity(holding.holdingQty);
    FillSides(*row, holding.nse, holding.bse);
    FillCarried(*row, holding.carried);
    row->collateralQty = RowQuantity(holding.collateralQty);
    row->collateralPrice = holding.collateralPrice;
    row->collateralValue = holding.collateralValue;
    row->saleCredit = holding.saleCredit;
    row->haircutRate = holding.haircutRate;
    return row;
}

}  // namespace

void CSurveillanceCategory::ReserveHolding(std::string_view isinCode) {
    if (!isinCode.empty()) holdingsByIsin.FindOrMake(isinCode);
}

void CSurveillanceCategory::AddDPInfo(const tagDPHolding& row) {
    const auto [holding, fresh] = FindOrMake(holdingsByIsin, row);
    if (!holding) return;
    if (fresh) {
        holding->carried.carriedLong1 = row.carriedLong1;
        holding->carried.carriedLong2 = row.carriedLong2;
        Carry(holding->carried.carriedText3, row.carriedText3);
        Carry(holding->carried.carriedText4, row.carriedText4);
    }
    for (HoldingSide* side : {&holding->nse, &holding->bse}) side->blockedQty = side->sarBlockedQty = 0;
    AddShares(*holding, row.holdingQty, row.collateralPrice, row.haircutRate);
}

void CSurveillanceCategory::AddSARInfo(const tagSarRow& row) {
    constexpr std::int16_t kNseSettlement = 3;
    constexpr std::int16_t kBseSettlement = 0x11;
    const auto [holding, fresh] = FindOrMake(holdingsByIsin, row);
    if (!holding) return;
    if (row.limitMask == kNseSettlement) holding->nse.sarQty += row.quantity;
    if (row.limitMask == kBseSettlement) holding->bse.sarQty += row.quantity;
}

void CSurveillanceCategory::UpdateDPInfo(const tagDPUpload& upload) {
    const auto [holding, fresh] = FindOrMake(holdingsByIsin, upload);
    if (!holding) return;
    if (fresh) Carry(holding->carried.carriedText3, upload.carriedText3);
    AddShares(*holding, upload.quantity, upload.collateralPrice, upload.haircutRate);
}

void CSurveillanceCategory::GetDPInfo(std::string_view isinCode, CPtrList& list) const {
    if (isinCode != kEveryHolding) {
        const Holding* holding = holdingsByIsin.Find(isinCode);
        if (holding && !holding->IsBlank()) HandOver(list, RowOf(*holding));
        return;
    }
    for (const auto& holding : holdingsByIsin) {
        if (!holding.value->IsBlank()) HandOver(list, RowOf(*holding.value));
    }
}

void CSurveillanceCategory::RecomputeCollateral(std::string_view isinCode) {
    if (isinCode == kEveryHolding) {
        collateralTotal = saleCreditTotal = 0;
        for (const auto& entry : holdingsByIsin) {
            Holding& holding = *entry.value;
            FormWorth(holding);
            collateralTotal += holding.collateralValue;
            saleCreditTotal += holding.saleCredit;
        }
    }
    for (const auto& info : limitStores) {
        CSurvLimitEntry* entry = (info.key & kExpiryBit) ? info.value->store.Find(kAllSecurities) : nullptr;
        if (!entry) continue;
        entry->Row().collateralFund = collateralTotal;
        entry->Row().saleCreditFund = saleCreditTotal;
    }
}

}  // namespace surv
