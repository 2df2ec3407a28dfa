#include "reference/preferences.h"

#include <array>
#include <memory>

namespace surv {
namespace {

using Record = tagClientRiskPreferenceInfoForSurv;

/// What the library keeps of a record: its codes and the part that travels; zero elsewhere.
void TakeOver(Record& stored, const Record& given) {
    Record fresh{};
    WriteWholeField(fresh.preferenceCode, FieldText(given.preferenceCode));
    WriteWholeField(fresh.familyCode, FieldText(given.familyCode));
    WriteWholeField(fresh.parentCode, FieldText(given.parentCode));
    WriteWholeField(fresh.accountCode, FieldText(given.accountCode));
    constexpr std::size_t kTravels = offsetof(Record, exchange);
    static_assert(sizeof(Record) - kTravels == 44);
    std::memcpy(reinterpret_cast<char*>(&fresh) + kTravels, reinterpret_cast<const char*>(&given) + kTravels,
                sizeof(Record) - kTravels);
    stored = fresh;
}

void CopyBit(Record& to, const Record& from) {
    to.marginFlags = static_cast<std::uint8_t>((to.marginFlags & ~kExposureMarginCounts) |
                                               (from.marginFlags & kExposureMarginCounts));
}

/// Bit 0 of marginFlags is one for all records of a code; NSE derivatives and NCDEX lead.
void KeepBitInStep(const PreferenceMap& records, Record& record) {
    const auto follow = [&](std::int32_t leader) {
        if (const Record* found = records.Find(leader)) CopyBit(record, *found);
    };
    const auto lead = [&](std::int32_t follower) {
        if (Record* found = records.Find(follower)) CopyBit(*found, record);
    };
    switch (record.exchange) {
        case kMaskNseCash:
        case kMaskBseCash:
        case kMaskBseDerivatives: follow(kMaskNseDerivatives); break;
        case kMaskNcdex: lead(kMaskMcx); break;
        case kMaskMcx: follow(kMaskNcdex); break;
        case kMaskNseDerivatives:
            for (const std::int32_t follower : {kMaskNseCash, kMaskBseCash, kMaskBseDerivatives}) lead(follower);
            break;
        default: break;
    }
}

constexpr std::uint32_t kRecordsPerCode = 10;

}  // namespace

RiskPreference TravellingPart(const Record& record) {
    RiskPreference part;
    part.exchange = record.exchange;
    part.token = record.token;
    part.prefMarginRate = record.prefMarginRate;
    part.marginAddOnFactor = record.marginAddOnFactor;
    part.prefExtraMarginRate = record.prefExtraMarginRate;
    part.carried = record.carried;
    part.preAutoSquareOffPart = record.preAutoSquareOffPart;
    part.autoSquareOffPart = record.autoSquareOffPart;
    part.prefMarginMode = record.prefMarginMode;
    part.allowedProducts = record.allowedProducts;
    part.marginFlags = record.marginFlags;
    part.fundFlags = record.fundFlags;
    return part;
}

void LoadPreferences(ReferenceStores& stores, const CPtrList& records) {
    for (CPtrList::Position at = records.GetHeadPosition(); at;) {
        const auto* given = static_cast<const Record*>(records.GetNext(at));
        if (!given) continue;
        const CodeText code = FieldText(given->preferenceCode);
        PreferenceMap& map = stores.clientPreferences.FindOrMake(code, kRecordsPerCode);
        if (map.Find(given->exchange)) continue;
        auto record = std::make_unique<Record>();
        TakeOver(*record, *given);
        const CodeText family = FieldText(record->familyCode);
        if (!family.Empty() && !stores.clientFamilyMap.Find(code)) stores.clientFamilyMap.FindOrMake(code, family);
        KeepBitInStep(map, map.Insert(given->exchange, std::move(record)));
    }
}

const Record* FindPreference(const ReferenceStores& stores, const CodeText& code, std::int32_t exchange) {
    const PreferenceMap* map = stores.clientPreferences.Find(code);
    return map ? map->Find(exchange) : nullptr;
}

bool AddOrUpdatePreference(ReferenceStores& stores, Record& given) {
    PreferenceMap& map = stores.clientPreferences.FindOrMake(FieldText(given.preferenceCode), kRecordsPerCode);
    Record* stored = map.Find(given.exchange);
    if (stored) {
        TakeOver(*stored, given);
        KeepBitInStep(map, given);
        return false;
    }
    KeepBitInStep(map, given);
    auto record = std::make_unique<Record>();
    TakeOver(*record, given);
    map.Insert(given.exchange, std::move(record));
    return true;
}

void QueryPreferences(const ReferenceStores& stores, int scope, std::string_view code, std::int32_t exchange,
                      CPtrList& result) {
    constexpr int kEveryCode = 0;
    constexpr int kOneCode = 1;
    const auto append = [&](const PreferenceMap& map) {
        for (const auto& record : map) {
            if (exchange == kAllSecurities || record.key == exchange) result.AddTail(record.value.get());
        }
    };
    if (scope == kEveryCode) {
        for (const auto& entry : stores.clientPreferences) append(*entry.value);
    } else if (scope == kOneCode) {
        if (const PreferenceMap* map = stores.clientPreferences.Find(code)) append(*map);
    }
}

}  // namespace surv
