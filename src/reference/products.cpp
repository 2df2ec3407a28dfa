#include "reference/products.h"

#include <cstring>

#include "platform/host_list.h"
#include "surveillance/codes.h"

namespace surv {
namespace {

/// The message head isn't kept.
tagProductTypeScripBasket WithoutHead(const tagProductTypeScripBasket& record) {
    tagProductTypeScripBasket kept = record;
    std::memset(kept.host0, 0, sizeof kept.host0);
    return kept;
}

}  // namespace

void ProductReference::LoadBaskets(const CPtrList& records) {
    ForEachRow<tagProductTypeScripBasket>(&records, [this](const tagProductTypeScripBasket& record) {
        scripBaskets.FindOrMake(record.token, WithoutHead(record));
    });
}

void ProductReference::SetBasket(const tagProductTypeScripBasket& record) {
    scripBaskets.FindOrMake(record.token) = WithoutHead(record);
}

void ProductReference::LoadSeries(const CPtrList& records) {
    ForEachRow<tagCompulsoryDeliverySeries>(&records, [this](const tagCompulsoryDeliverySeries& record) {
        if (IsCashExchange(record.exchange)) {
            compulsoryDeliverySeries.Insert(SeriesKey(record.exchange, FieldText(record.series)));
        }
    });
}

void ProductReference::LoadTokenPrices(const CPtrList& records) {
    ForEachRow<tagTokenPriceRecord>(&records, [this](const tagTokenPriceRecord& record) {
        if (record.exchange == kMaskNseCash) tokenPrices.FindOrMake(record.token, record);
    });
}

void ProductReference::TakeTokenPrice(const tagBcastMBOOrMBPTouchline& touchline) {
    if (!sellPriceTest.on || touchline.exchange != kMaskNseCash || touchline.lastTradedPrice == 0) return;
    tagTokenPriceRecord* const record = tokenPrices.Find(touchline.token);
    if (!record) return;
    record->lastTradedPrice = touchline.lastTradedPrice;
    record->closePrice = touchline.closePrice;
    record->priceA = touchline.priceA;
    record->priceB = touchline.priceB;
    record->priceC = touchline.priceC;
}

void ProductReference::ClearDay() {
    scripBaskets.Clear();
    compulsoryDeliverySeries.Clear();
    tokenPrices.Clear();
}

}  // namespace surv
