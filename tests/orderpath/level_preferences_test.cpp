#include "orderpath/level_preferences.h"

#include <gtest/gtest.h>

#include "platform/format.h"
#include "reference/preferences.h"
#include "support/scenario.h"

namespace surv::test {
namespace {

/// A preference record as a case gives it.
struct Given {
    const char* code;
    std::int32_t exchange;
    std::int32_t allowedProducts = 0xF;
    std::uint8_t marginFlags = 0, fundFlags = 0;
    std::int32_t squareOffParts = 0;
};

/// A house with families in force: the root, G1, D1, C1, S1 and the family F1.
class CFamilyHouse : public CScenario {
 public:
    explicit CFamilyHouse(const std::vector<Given>& preferences, std::int16_t mask = 3)
        : CScenario({.featureBits = 0x10}) {
        for (const char* entity : {"-", "G1", "D1", "C1", "S1", "F1"}) Limit(entity, mask);
        for (const Given& given : preferences) {
            Preference(given.code, given.exchange, [&given](tagClientRiskPreferenceInfoForSurv& record) {
                record.allowedProducts = given.allowedProducts, record.marginFlags = given.marginFlags;
                record.fundFlags = given.fundFlags;
                record.preAutoSquareOffPart = record.autoSquareOffPart = given.squareOffParts;
            });
        }
    }
    /// An order of the family's client, or (type 4, 45) of a dealer that is its own client.
    Answer Send(std::uint8_t dealerType = 0) {
        return Check({.family = "F1", .subClient = "S1", .dealerType = dealerType, .subClientType = 12});
    }
};

TEST(LevelPreferences, TheRecordInForceDecidesOnTheProduct) {
    // refusedAt: empty: it passes
    const std::tuple<const char*, std::vector<Given>, std::uint8_t, std::string> cases[]{
        {"none", {}, 0, ""},
        {"own", {{"C1", 1, 2}}, 0, "C1"},
        {"everybody's, for one with a map", {{"C1", 8}, {"*****", 1, 0}}, 0, "C1"},
        {"everybody's, for one without", {{"*****", 1, 0}}, 0, ""},
        {"the family's before the own one", {{"F1", 1, 0}, {"C1", 1, 1}}, 0, "C1"},
        {"the dealer's", {{"D1", 1, 0}}, 0, "D1"},
        {"unless it is its own client", {{"F1", 1, 1}, {"D1", 1, 0}}, 4, ""},
        {"in either form", {{"F1", 1, 0}}, 45, "D1"},
        {"other levels aren't asked", {{"S1", 1, 0}, {"G1", 1, 0}, {"-", 1, 0}}, 0, ""},
    };
    for (const auto& [name, preferences, dealerType, refusedAt] : cases) {
        SCOPED_TRACE(name);
        CFamilyHouse s(preferences);
        const Answer answer = s.Send(dealerType);
        EXPECT_EQ(answer.Passed(), refusedAt.empty());
        if (answer.Passed()) continue;
        // At the client the call ends at once; at the dealer the refusal goes the way of a limit's.
        const bool atClient = refusedAt == "C1";
        EXPECT_EQ(answer.text, atClient ? "Margin Order Not Allowed for " : "C1|Margin Order Not Allowed for  of ");
        EXPECT_EQ(answer.Head(),
                  "-312, -227, 0 at now: " + std::string(refusedAt) + ", " + std::to_string(atClient ? 2 : dealerType));
    }
}

TEST(LevelPreferences, SquareOffModeOfALevel) {
    constexpr std::uint8_t kByTime = 1 << 6, kBySession = 1 << 7;
    const struct {
        const char* name;
        Given preference;
        std::int16_t time, session;
        bool refused;
    } cases[] = {
        {"at all times", {"C1", 1, 0xF, 0, 1}, 0, 0, true},
        {"by time", {"C1", 1, 0xF, kByTime}, 1, 0, true},
        {"by session", {"C1", 1, 0xF, kBySession}, 0, 1, true},
        {"by session, time on", {"C1", 1, 0xF, kBySession}, 1, 0, false},
        {"a setting of 2", {"C1", 1, 0xF, kByTime | kBySession}, 2, 2, false},
        {"a level without the mode", {"S1", 1, 0xF, 0, 1}, 0, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CFamilyHouse s({c.preference});
        CAutoSquareOffSettings& settings = s.library.context.settings.autoSquareOff;
        settings.Set(0, kMaskNseCash, c.time);
        settings.Set(1, kMaskNseCash, c.session);
        for (const std::int16_t mask : {kMaskBseCash, kMaskNseDerivatives}) settings.Set(1, mask, 1);
        settings.Set(2, kMaskNseCash, 1);
        EXPECT_EQ(s.Send().text, c.refused ? "C1|Only Square Off Orders allowed - User is in SquareOff mode across "
                                             "all securities of Equity ( NSE-Settlement)  of "
                                           : "");
    }
    CAutoSquareOffSettings settings;
    settings.Set(0, kMaskBseDerivatives, 1);
    settings.Set(1, kMaskBseDerivatives, 1);
    EXPECT_EQ(settings.Get(CAutoSquareOffSettings::kTime, kMaskNseCash), 1) << "the two share a place";
    EXPECT_EQ(settings.Get(CAutoSquareOffSettings::kSession, kMaskNseCash), 0) << "but not the session's";
}

TEST(LevelPreferences, TheOverallRecordTellsTheSquareOffPartsAndTheFund) {
    constexpr std::uint8_t kPre = 1 << 1, kAuto = 1 << 2;
    const Given clientAt5{"C1", -1, 0, 0, kPre, 500'000};
    const Given familyAt9{"F1", -1, 0, 0, kPre, 900'000};
    // mode: of the refusal; empty: it passes
    const std::tuple<const char*, std::vector<Given>, std::uint8_t, std::string> cases[]{
        {"none", {}, 0, ""},
        {"own, pre", {clientAt5}, 0, "Pre AutoSquareOff"},
        {"at its part", {{"C1", -1, 0, 0, kPre, 600'000}}, 0, ""},
        {"everybody's isn't asked", {{"*****", -1, 0, 0, kPre, 500'000}, {"C1", 1}}, 0, ""},
        {"the family's before the client's", {familyAt9, clientAt5}, 0, ""},
        {"the dealer's over the family's", {familyAt9, {"D1", -1, 0, 0, kPre, 500'000}}, 4, "Pre AutoSquareOff"},
        {"of a dealer without its own", {{"F1", -1, 0, 0, kAuto, 500'000}}, 4, "AutoSquareOff"},
    };
    for (const auto& [name, preferences, dealerType, mode] : cases) {
        SCOPED_TRACE(name);
        CFamilyHouse s(preferences, 0x1FF);
        for (const char* entity : {"C1", "D1"}) {
            s.Row(entity, 0x1FF).mtmLossLimit = 1'000'000;
            s.Row(entity, 0x1FF).usedMtm = -600'000;
        }
        EXPECT_EQ(s.Send(dealerType).text,
                  mode.empty() ? ""
                               : "C1|Only Square Off Orders allowed - MTM " + mode +
                                     " Mode (limit is "
                                     "10000.00, prev. utilized was 6000.00) across all securities of Combined ALL "
                                     "(Expiry) of ");
    }
    // Collateral counts where the overall record says so; the exchange's own bits don't matter.
    for (const bool overall : {false, true}) {
        const std::uint8_t bit = 0x20, none = 0;
        CFamilyHouse s({{"C1", -1, 0, 0, overall ? bit : none}, {"C1", 1, 0xF, 0, overall ? none : bit}});
        s.Row("C1", 3).grossExposureMultiplier = 10000;
        s.Row("C1", 3).collateralFund = 100 * 25000;
        EXPECT_EQ(s.Send().Passed(), overall);
    }
}

/// NSE derivatives lead the other securities, NCDEX leads MCX; the others' word doesn't count beside a leader's.
TEST(Preferences, TheExposureMarginBitFollowsItsLeader) {
    ReferenceStores stores;
    const auto set = [&stores](std::int32_t exchange, std::uint8_t bit) {
        tagClientRiskPreferenceInfoForSurv record{};
        WriteField(record.preferenceCode, "C1");
        record.exchange = exchange, record.marginFlags = bit;
        AddOrUpdatePreference(stores, record);
        std::string counts;
        for (const std::int32_t each : {1, 2, 4, 8, 0x10, 0x40}) {
            const auto* stored = FindPreference(stores, "C1", each);
            if (stored && stored->marginFlags != 0) counts += std::to_string(each) + " ";
        }
        return counts;
    };
    for (const std::int32_t exchange : {1, 4, 8, 0x10, 2, 0x40}) set(exchange, 0);
    EXPECT_EQ(set(2, 1), "1 2 4 8 ");
    EXPECT_EQ(set(0x40, 1), "1 2 4 8 16 64 ");
    EXPECT_EQ(set(2, 0), "16 64 ");
    EXPECT_EQ(set(0x40, 0), "");
    CPtrList ofOne;
    QueryPreferences(stores, 0, "", 8, ofOne);
    EXPECT_EQ(ofOne.GetCount(), 1);
}

TEST(LevelPreferences, TheFamilysRecordMarginsItsClientWhateverElseHappens) {
    CFamilyHouse s({{"F1", 1, 3}, {"C1", 1, 9}, {"C1", 8, 5}});
    CSurveillanceManager& manager = *s.library.manager;
    manager.Context().stores.clientFamilyMap.FindOrMake("C1") = "F1";
    manager.AddClientRiskPreference("C1");
    const CSurveillanceCategory& client = *manager.FindCategory("C1");
    EXPECT_EQ(manager.EffectivePreference(client, 1).allowedProducts, 3);
    EXPECT_EQ(manager.EffectivePreference(client, 8).allowedProducts, 5)
        << "of an exchange that the family is silent on";
}

/// An entity with records, but none of the exchange, where everybody's has none either.
TEST(LevelPreferences, WhatStandsForAMissingRecordOfAnEvent) {
    RiskPreference before;
    before.prefMarginRate = 5, before.marginAddOnFactor = 6, before.prefMarginMode = 1, before.allowedProducts = 9;
    before.marginFlags = 0xFF, before.fundFlags = 0xFF, before.autoSquareOffPart = 7;
    const auto told = [&before](const std::vector<Given>& given, PreferenceRoad road) {
        const CFamilyHouse s(given);
        tagOrderInfoForSurv order;
        order.marketSegment = 1, order.riskPreference = before;
        TakeOwnPreference(*s.library.manager, *s.library.manager->FindCategory("C1"), road, order);
        const RiskPreference& p = order.riskPreference;
        return Format("%d %d %d %d; %d %d; %d", p.prefMarginRate, p.marginAddOnFactor, p.prefMarginMode, p.marginFlags,
                      p.fundFlags, p.allowedProducts, p.autoSquareOffPart);
    };
    const std::vector<Given> own{{"C1", 8}}, everybodys{{"C1", 8}, {"*****", 8}};
    EXPECT_EQ(told(own, PreferenceRoad::kEvent), "5 6 1 255; 255 9; 7") << "a family's record stays";
    EXPECT_EQ(told(everybodys, PreferenceRoad::kEvent), "0 0 0 0; 0 7; 0");
    EXPECT_EQ(told(everybodys, PreferenceRoad::kConversion), "0 0 0 0; 224 9; 7");
}

}  // namespace
}  // namespace surv::test
