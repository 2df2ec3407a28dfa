#include "support/scenario.h"

#include <gtest/gtest.h>

#include "platform/format.h"
#include "reference/preferences.h"

namespace surv::test {
namespace {

template <std::size_t Width>
void Put(char (&field)[Width], std::string_view text) {
    std::memset(field, 0, Width);
    std::memcpy(field, text.data(), std::min(Width, text.size()));
}

template <class Record>
void Append(std::vector<char>& buffer, const Record& record) {
    const std::size_t at = buffer.size();
    buffer.resize(at + sizeof record);
    std::memcpy(buffer.data() + at, &record, sizeof record);
}

template <class Row>
std::vector<Row> TakeRows(CPtrList& list, bool live) {
    std::vector<Row> rows;
    while (!list.IsEmpty()) {
        auto* row = static_cast<Row*>(list.RemoveHead());
        rows.push_back(*row);
        if (!live) delete row;
    }
    return rows;
}

tagContractDescriptor ContractOf(const OrderSpec& spec) {
    tagContractDescriptor contract{};
    Put(contract.symbol, spec.symbol), Put(contract.series, spec.series);
    contract.strikePrice = spec.strikePrice, contract.expiryDate = spec.expiryDate;
    return contract;
}

tagOrderRequest OrderRecord(const OrderSpec& spec) {
    tagOrderRequest order{};
    order.exchangeMask = spec.exchangeMask;
    order.contract = ContractOf(spec);
    order.buySell = spec.buySell, order.quantity = spec.quantity, order.price = spec.price;
    order.productType = spec.productType, order.proClient = spec.proClient;
    Put(order.accountText, spec.client), Put(order.clientAccount, spec.client);
    Put(order.clientCategory, spec.clientCategory);
    order.marginPlusLeg = spec.marginPlusLeg, order.triggerPrice = spec.triggerPrice;
    order.firstLegPrice = spec.firstLegPrice, order.secondLegPrice = spec.secondLegPrice;
    return order;
}

tagOrderInfo StoredRecord(const OrderSpec& spec) {
    tagOrderInfo stored{};
    stored.exchangeMask = spec.exchangeMask;
    stored.contract = ContractOf(spec);
    stored.buySell = spec.buySell, stored.quantity = spec.storedQuantity, stored.price = spec.storedPrice;
    stored.quantityFilled = spec.storedFilled, stored.quantityRemaining = spec.storedQuantity - spec.storedFilled;
    stored.orderStatus = spec.storedStatus;
    stored.productType = spec.productType, stored.proClient = spec.proClient;
    Put(stored.accountText, spec.client), Put(stored.clientAccount, spec.client);
    Put(stored.clientCategory, spec.clientCategory);
    stored.marginPlusLeg = spec.marginPlusLeg;
    stored.firstLegPrice = spec.firstLegPrice, stored.secondLegPrice = spec.secondLegPrice;
    return stored;
}

tagTradeInfo TradeRecord(const OrderSpec& spec, std::int32_t quantity, std::int32_t price) {
    tagTradeInfo trade{};
    trade.exchangeMask = spec.exchangeMask;
    trade.contract = ContractOf(spec);
    trade.buySell = spec.buySell, trade.tradedQuantity = quantity, trade.tradePrice = price;
    trade.productType = spec.productType;
    Put(trade.clientAccount, spec.client);
    trade.marginPlusLeg = spec.marginPlusLeg;
    trade.firstLegPrice = spec.firstLegPrice, trade.secondLegPrice = spec.secondLegPrice;
    return trade;
}

tagTradeCorrectionRequest CorrectionRecord(const OrderSpec& spec) {
    tagTradeCorrectionRequest correction{};
    correction.exchangeMask = spec.exchangeMask;
    correction.contract = ContractOf(spec);
    correction.buySellCharacter[0] = static_cast<char>('0' + spec.buySell);
    correction.newQuantity = spec.quantity, correction.tradePrice = spec.price;
    correction.tradedQuantity = spec.storedQuantity;
    Put(correction.accountText, spec.client);
    Put(correction.buyClientAccount, spec.client), Put(correction.sellClientAccount, spec.client);
    return correction;
}

template <class... Values>
void DumpValue(std::string& out, const Values&... values) {
    (out.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
}

/// Field by field: the record has padding.
void DumpPosition(std::string& out, const tagSurvPositionData& p) {
    DumpValue(out, p.limitMask, p.lastPrice, p.orderBuyQty, p.orderSellQty, p.tradedBuyQty, p.tradedSellQty);
    DumpValue(out, p.orderBuyValue, p.orderSellValue, p.tradedBuyValue, p.tradedSellValue);
    DumpValue(out, p.openPositionValue, p.mtmValue, p.scripInfo);
}

void DumpSet(std::string& out, const CExposureDetails& set) {
    for (const auto& position : set.positions) {
        if (!position.value->data.scripInfo) continue;
        DumpValue(out, position.key.Printed());
        DumpPosition(out, position.value->data);
    }
}

void DumpAccount(std::string& out, const AccountKey& key, const CClientExposure& account) {
    std::string contracts;
    account.ForEachScrip([&contracts](const CScripExposure& scrip) {
        if (scrip.IsBlank()) return;
        DumpPosition(contracts, scrip.position.data);
        DumpPosition(contracts, scrip.dayPosition.data);
    });
    if (contracts.empty()) return;
    out.append(key.View()).append(contracts);
    DumpValue(out, account.levelTypes, account.listed);
}

void DumpHoldings(std::string& out, const CSurveillanceCategory& category) {
    DumpValue(out, category.collateralTotal, category.saleCreditTotal);
    for (const auto& held : category.holdingsByIsin) {
        const Holding& holding = *held.value;
        if (holding.categoryCode.Empty() && holding.holdingQty == 0) continue;
        out.append(held.key.View());
        DumpValue(out, holding.holdingQty, holding.collateralValue, holding.saleCredit, holding.nse, holding.bse);
    }
}

void DumpClientBook(std::string& out, const CClientBook& book) {
    for (const Period period : kPeriods) {
        const CClientBook::Side& side = book.Of(period);
        for (const auto& scrip : side.positions.scrips) {
            for (const auto& holder : *scrip.value) {
                if (!holder.value->position.data.scripInfo) continue;
                DumpValue(out, scrip.key.Printed());
                out.append(holder.key.View());
                DumpPosition(out, holder.value->position.data);
            }
        }
        for (std::size_t group = 0; group < kProductGroupCount; ++group) {
            for (const CClientExposure* held : side.lists.Of(static_cast<ProductGroup>(group))) DumpValue(out, held);
            out.push_back(';');
        }
    }
    book.totals.ForEach([&out](ProductGroup group, std::int16_t mask, const CSurvPosition& total) {
        if (!total.data.scripInfo) return;
        DumpValue(out, group, mask);
        DumpPosition(out, total.data);
    });
}

}  // namespace

BKSurveillanceLimitDefTag EmptyLimit(std::string_view entity, std::int16_t mask, std::int32_t token) {
    return UnlimitedRow(entity, token, mask);
}

BKExposureTag PositionRow(std::string_view level, std::int16_t mask, std::int32_t traded, std::string_view account,
                          std::int32_t token) {
    BKExposureTag row{};
    Put(row.levelCode, level);
    Put(row.groupCode, "G1");
    Put(row.accountCode, account);
    row.marketSegment = LimitMaskToSegment(mask);
    row.limitMask = mask, row.token = token, row.clientLevelType = 2;
    row.priceMultiplier = 1, row.lastPrice = 25000;
    (traded > 0 ? row.orderBuyQty : row.orderSellQty) = std::abs(traded);
    (traded > 0 ? row.orderBuyValue : row.orderSellValue) = std::abs(traded) * 25000.0;
    (traded > 0 ? row.tradedBuyQty : row.tradedSellQty) = std::abs(traded);
    (traded > 0 ? row.tradedBuyValue : row.tradedSellValue) = std::abs(traded) * 25000.0;
    return row;
}

std::vector<char> MakeRequest(const OrderSpec& spec) {
    tagSurveillanceInfo head{};
    head.messageCode = spec.messageCode, head.exchangeMask = spec.exchangeMask, head.token = spec.token;
    head.underlyingToken = spec.underlyingToken;
    Put(head.groupCode, spec.group), Put(head.dealerCode, spec.dealer), Put(head.familyCode, spec.family);
    Put(head.clientCode, spec.client), Put(head.subClientCode, spec.subClient);
    head.groupType = spec.groupType, head.dealerType = spec.dealerType, head.clientType = spec.clientType;
    head.subClientType = spec.subClientType, head.levelCheckFlags = spec.levelCheckFlags;
    head.levelMarginFlags = spec.levelMarginFlags, head.scripGroupNumber = spec.scripGroupNumber;
    head.priceMultiplier = spec.priceMultiplier;
    const bool ofTrade = spec.messageCode == 5440 || spec.messageCode == 5445;
    if (spec.hasStored) head.levelMarginFlags |= 0x80;
    if (spec.hasStored && ofTrade) head.requestFlags |= 1;
    std::vector<char> buffer;
    Append(buffer, head);
    const MessageCodeRow* message = FindMessageCode(spec.messageCode);
    switch (message ? message->primary : PrimaryRecord::kNone) {
        case PrimaryRecord::kOrderRequest: Append(buffer, OrderRecord(spec)); break;
        case PrimaryRecord::kTradeCorrection: Append(buffer, CorrectionRecord(spec)); break;
        case PrimaryRecord::kTradeInfo: Append(buffer, TradeRecord(spec, spec.quantity, spec.price)); break;
        case PrimaryRecord::kNone: break;
    }
    if (spec.hasStored) Append(buffer, StoredRecord(spec));
    if (spec.hasStored && ofTrade) Append(buffer, TradeRecord(spec, spec.storedQuantity, spec.storedPrice));
    buffer.shrink_to_fit();
    return buffer;
}

std::string Answer::Head() const {
    const char* time = timeStamp == CScenario::kNow ? "now" : timeStamp == 0 ? "never" : "some time";
    return Format("%d, %d, %d at %s: %s, %d", status, errorCode, headCode, time, failedLevelCode.c_str(),
                  failedLevelType);
}

CScenario::CScenario(Library::StartSettings settings, const LoadLists& lists,
                     const std::function<void(Library&)>& prepare) {
    library.context.clock.Set([](void*) { return kNow; }, nullptr);
    library.context.window.Set(
        [](void* context, unsigned, unsigned, const char* text) {
            static_cast<CScenario*>(context)->notifications.emplace_back(text);
        },
        this);
    if (prepare) prepare(library);
    EXPECT_EQ(library.Start(settings, lists), kDone);
}

void CScenario::Limit(std::string_view entity, std::int16_t mask,
                      const std::function<void(BKSurveillanceLimitDefTag&)>& change, std::int32_t token) {
    BKSurveillanceLimitDefTag row = EmptyLimit(entity, mask, token);
    if (change) change(row);
    tagAdminErrMessage error{};
    ASSERT_EQ(library.manager->AddSurvLimits(row, &error), kDone) << error.errorText;
}

void CScenario::House(std::int16_t mask) {
    for (const char* entity : {"-", "G1", "D1", "C1"}) Limit(entity, mask);
}

void CScenario::Preference(std::string_view code, std::int32_t exchange,
                           const std::function<void(tagClientRiskPreferenceInfoForSurv&)>& change) {
    tagClientRiskPreferenceInfoForSurv record{};
    Put(record.preferenceCode, code);
    record.exchange = exchange, record.token = kAllSecurities, record.allowedProducts = 0xF;
    if (change) change(record);
    library.AddUpdatePreference(record);
}

void CScenario::Market(std::int16_t exchangeMask, std::int32_t token, std::int32_t bid, std::int32_t offer,
                       std::int32_t last, std::int32_t close) {
    CBroadcastScrip& scrip = library.manager->broadcastHash.FindOrMake(PlainKey(exchangeMask, token));
    scrip.bestBuyPrice = bid, scrip.bestSellPrice = offer, scrip.lastTradedPrice = last;
    scrip.closePrice = close;
}

Answer CScenario::Send(std::vector<char>& buffer, bool probe) {
    auto& request = *reinterpret_cast<tagSurveillanceInfo*>(buffer.data());
    tagOrdErrMessage error{};
    CPtrList limitRows, rollbackRows;
    Answer answer;
    answer.result =
        library.manager->CheckSurveillance(request, error, answer.status, {&limitRows, &rollbackRows}, probe);
    EXPECT_TRUE(library.context.undo.Empty()) << "a trial has outlived the call";
    answer.errorCode = error.errorCode, answer.headCode = error.headCode, answer.timeStamp = error.timeStamp;
    answer.text = error.errorText;
    answer.failedLevelCode = FieldText(request.failedLevelCode);
    answer.failedLevelType = request.failedLevelType, answer.levelCheckFlags = request.levelCheckFlags;
    if (probe) {
        answer.probeRows = TakeRows<tagBreachRow>(limitRows, false);
    } else {
        for (CPtrList::Position at = limitRows.GetHeadPosition(); at;) {
            answer.limitRowAddresses.push_back(static_cast<BKSurveillanceLimitDefTag*>(limitRows.GetNext(at)));
        }
        answer.limitRows = TakeRows<BKSurveillanceLimitDefTag>(limitRows, library.context.settings.RowsAreLive());
    }
    answer.rollbackRows = TakeRows<tagBreachRow>(rollbackRows, false);
    return answer;
}

EventAnswer CScenario::SendEvent(std::vector<char> buffer, bool dealerOnly) {
    auto& request = *reinterpret_cast<tagSurveillanceInfo*>(buffer.data());
    tagAdminErrMessage error{};
    CPtrList limitRows;
    EventAnswer answer;
    answer.result = library.manager->UpdateSurveillance(request, &error, &limitRows, dealerOnly);
    EXPECT_TRUE(library.context.undo.Empty()) << "a trial has outlived the call";
    answer.errorCode = error.errorCode, answer.timeStamp = error.timeStamp, answer.text = error.errorText;
    answer.limitRows = TakeRows<BKSurveillanceLimitDefTag>(limitRows, library.context.settings.RowsAreLive());
    return answer;
}

std::int16_t CScenario::RiskMessage(std::int16_t code, std::int16_t segment, const void* body, std::size_t bodySize,
                                    bool toStaging, std::int16_t messageLength) {
    std::vector<char> message(sizeof(tagRPFHeader) + bodySize);
    tagRPFHeader head{};
    head.messageCode = code;
    head.messageLength = messageLength != 0 ? messageLength : static_cast<std::int16_t>(message.size());
    head.segment = segment;
    std::memcpy(message.data(), &head, sizeof head);
    if (bodySize != 0) std::memcpy(message.data() + sizeof head, body, bodySize);
    return library.ProcessRPFInfo(message.data(), static_cast<std::int32_t>(message.size()), toStaging);
}

void CScenario::RiskFile(std::int16_t segment, const std::vector<tagRPFUnderlyingRecord>& underlyings,
                         const std::vector<tagRPFContractRecord>& contracts) {
    for (const auto& underlying : underlyings) {
        ASSERT_EQ(RiskMessage(28006, segment, &underlying, sizeof underlying), kDone);
    }
    for (const auto& contract : contracts) {
        ASSERT_EQ(RiskMessage(28009, segment, &contract, sizeof contract), kDone);
    }
    ASSERT_EQ(RiskMessage(28002, segment), kDone);
}

BKSurveillanceLimitDefTag& CScenario::Row(std::string_view entity, std::int16_t mask, std::int32_t token) {
    CSurveillanceCategory* category = library.manager->FindCategory(entity);
    EXPECT_NE(category, nullptr) << entity;
    CSurvLimitEntry* entry = category->FindRow(mask, token);
    EXPECT_NE(entry, nullptr) << entity << " " << mask << " " << token;
    return entry->Row();
}

namespace {
PositionKey ScripKey(std::int32_t token) { return {kMaskNseCash, PositionFamily::kPlain, token}; }
}  // namespace

CSurvPosition* CScenario::Held(std::string_view entity, Period period, std::int32_t token) const {
    return library.manager->FindCategory(entity)->Book(period).exposures.Find(ScripKey(token));
}

CSurvPosition* CScenario::HeldBy(std::string_view entity, Period period, std::string_view group,
                                 std::string_view account, std::int32_t token) const {
    const auto* found = library.manager->FindCategory(entity)->Book(period).accounts.FindAccount(group, account);
    CScripExposure* scrip = found ? found->FindScripByKey(ScripKey(token)) : nullptr;
    return scrip ? &scrip->position : nullptr;
}

std::string CScenario::Dump() const {
    std::string out;
    for (const auto& category : library.manager->categories) {
        out.append(category.key.View());
        for (const auto& info : category.value->limitStores) {
            for (const auto& entry : info.value->store.entries) DumpValue(out, entry.value->Row());
        }
        for (const Period period : {Period::kDaily, Period::kExpiry}) {
            const PeriodBook& book = category.value->Book(period);
            DumpSet(out, book.exposures);
            DumpSet(out, book.clientLevelExposures);
            for (const auto& account : book.accounts.accounts) DumpAccount(out, account.key, *account.value);
        }
        DumpValue(out, category.value->cashMarginNse, category.value->cashMarginBse);
        DumpHoldings(out, *category.value);
        static const CClientBook kNoBook;  // one that is empty says as much as none
        const CClientBook* clients = category.value->FindClientBook();
        DumpClientBook(out, clients ? *clients : kNoBook);
    }
    return out;
}

}  // namespace surv::test
