#include "house.h"

#include <cstdlib>
#include <cstring>
#include <tuple>

#include "entities.h"
#include "limits/row_masks.h"

namespace surv::bench {
namespace {

constexpr int kScrips = 500;
constexpr std::int16_t kNseEquity = 1;
constexpr std::uint8_t kFamilyLevels = 0x10;

std::int32_t TokenOf(int client) { return 1000 + client % kScrips; }

}  // namespace

CHouse::CHouse(int rowsPerLevel, int clients, Preferences preferences)
    : clients_(clients), preferences_(preferences), library_(std::make_unique<Library>()) {
    masks_ = {2, 3};
    if (rowsPerLevel == 8) masks_ = {2, 3, 0x12, 0x13, 0xE, 0xF, 0x1FE, 0x1FF};
    Library::StartSettings settings;
    settings.positionMode = 2;
    if (preferences_ >= Preferences::kFamily) settings.featureBits = kFamilyLevels;
    library_->Start(settings, {});
    AddLimits(kRootCode);
    AddLimits("G1");
    for (int client = 0; client < clients; client += kClientsPerDealer) {
        char dealer[6];
        DealerCode(client, dealer);
        AddLimits(dealer);
        AddPreferences(dealer);
    }
    for (int client = 0; client < clients; ++client) {
        char code[6];
        ClientCode(client, code);
        AddLimits(code);
        AddPreferences(code);
        JoinFamily(client, code);
    }
    request_.resize(sizeof(tagSurveillanceInfo) + sizeof(tagOrderRequest));
    // Every client has traded once, so that the run meets what a day holds and makes nothing new.
    for (int client = 0; client < clients; ++client) {
        if (!CheckAndCommit(client)) std::abort();
    }
}

void CHouse::AddLimits(const char* entity) {
    for (const std::int16_t mask : masks_) {
        BKSurveillanceLimitDefTag row = FarLimits(entity, mask);
        library_->manager->AddSurvLimits(row, nullptr);
    }
}

void CHouse::AddPreferences(const char* code) {
    if (preferences_ == Preferences::kNone) return;
    for (const std::int32_t exchange : {std::int32_t{kMaskNseCash}, kOverallPreference}) {
        tagClientRiskPreferenceInfoForSurv record{};
        std::memcpy(record.preferenceCode, code, ::strnlen(code, sizeof record.preferenceCode - 1));
        record.exchange = exchange;
        record.token = kAllSecurities;
        record.allowedProducts = 15;
        record.marginFlags = 0x1F;
        library_->AddUpdatePreference(record);
    }
}

/// The first client of a family brings the family with him.
void CHouse::JoinFamily(int client, const char* code) {
    if (preferences_ < Preferences::kFamily) return;
    char family[6];
    FamilyCode(client, family);
    library_->context.stores.clientFamilyMap.FindOrMake(code) = family;
    if (client % kClientsPerFamily != 0) return;
    AddPreferences(family);
    if (preferences_ == Preferences::kFamilies) AddLimits(family);
}

bool CHouse::CheckAndCommit(int client) {
    auto& head = *reinterpret_cast<tagSurveillanceInfo*>(request_.data());
    auto& order = *reinterpret_cast<tagOrderRequest*>(request_.data() + sizeof head);
    head = {};
    order = {};
    head.messageCode = 2000;
    head.exchangeMask = kMaskNseCash;
    head.token = TokenOf(client);
    std::memcpy(head.groupCode, "G1", 3);
    DealerCode(client, head.dealerCode);
    ClientCode(client, head.clientCode);
    head.clientType = 2;
    if (preferences_ == Preferences::kFamilies) FamilyCode(client, *reinterpret_cast<char(*)[6]>(head.familyCode));
    head.subClientType = level::kNone;
    head.levelCheckFlags = 62;
    head.priceMultiplier = 1;
    order.exchangeMask = kMaskNseCash;
    std::memcpy(order.contract.symbol, "SCRIP", 5);
    std::memcpy(order.contract.series, "EQ", 2);
    ClientCode(client, *reinterpret_cast<char(*)[6]>(order.accountText));
    order.buySell = kBuy;
    order.quantity = 10;
    order.price = 25000;
    order.proClient = 1;
    order.productType = product::kMargin;

    static tagOrdErrMessage error{};
    CPtrList limitRows;
    short status = 0;
    library_->manager->CheckSurveillance(head, error, status, {&limitRows, nullptr}, false);
    return status == status::kPass;
}

tagOrderInfoForSurv CHouse::OrderOf(int client) const {
    tagOrderInfoForSurv order;
    char code[6];
    ClientCode(client, code);
    order.marketSegment = kNseEquity;
    order.token = TokenOf(client);
    order.parentCode = "G1";
    order.accountCode = code;
    return order;
}

void CHouse::FloorOfLevel(const CodeText& code, const tagOrderInfoForSurv& order, double& sum) {
    const CSurveillanceCategory& category = *library_->manager->FindCategory(code);
    const Settings& settings = library_->context.settings;
    for (const Period period : {Period::kDaily, Period::kExpiry}) {
        const PeriodBook& book = category.Book(period);
        sum += book.exposures.Find(FlatKey(order))->data.orderBuyValue;
        CClientExposure* account = book.accounts.FindAccount(order);
        sum += account->FindScrip(order, settings)->position.data.orderBuyValue;
        for (const std::int16_t mask : MasksOfScope(order.marketSegment).Of(period)) {
            const CSurveillanceInfo* info = category.limitStores.Find(mask);
            if (!info) continue;
            CSurvLimitEntry* entry = info->store.Find(kAllSecurities);
            if (info->store.Find(order.token)) std::abort();
            BKSurveillanceLimitDefTag row = entry->Row();
            row.usedTurnoverTraded += 1;
            sum += row.usedGrossOrder;
            entry->Row() = row;
        }
        sum += book.exposures.Find(FlatKey(order))->data.orderSellValue;  // the commit's own look-up
    }
}

double CHouse::Floor(int client) {
    const tagOrderInfoForSurv order = OrderOf(client);
    char dealer[6];
    DealerCode(client, dealer);
    double sum = library_->manager->broadcastHash.Find(PlainKey(kMaskNseCash, order.token)) ? 1.0 : 0.0;
    sum += library_->context.stores.FindScrip(kMaskNseCash, order.token)->token;
    FloorOfLevel(order.accountCode.View(), order, sum);
    FloorOfLevel(CodeText{dealer}, order, sum);
    FloorOfLevel("G1", order, sum);
    FloorOfLevel(kRootCode, order, sum);
    return sum;
}

CHouse& HouseOf(int rowsPerLevel, int clients, Preferences preferences) {
    static std::unique_ptr<CHouse> house;
    static std::tuple<int, int, Preferences> made;
    const std::tuple wanted{rowsPerLevel, clients, preferences};
    if (!house || made != wanted) {
        house.reset();
        house = std::make_unique<CHouse>(rowsPerLevel, clients, preferences);
        made = wanted;
    }
    return *house;
}

}  // namespace surv::bench
