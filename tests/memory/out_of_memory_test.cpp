// Memory may run out at any allocation of a call: the call fails, and everything is as it was.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "memory/failing_memory.h"
#include "mtm/marked_house.h"
#include "platform/hash_set.h"
#include "positions/exposure_row.h"
#include "support/derivatives.h"
#include "surveillance/host.h"

namespace surv::test {
namespace {

/// Runs a call with memory for so many allocations. False: memory ran out, or the call says that it isn't done.
template <class Call>
bool Within(long allocations, Call call) {
    bool done = false;
    allocationsLeft = allocations;
    try {
        done = call();
    } catch (const std::bad_alloc&) {
    }
    allocationsLeft = -1;
    return done;
}

/// Lets a call have one allocation more each time until it is done, and asks after each what holds then; gives how many
/// it was short of.
template <class Call, class Expect>
long CutShort(Call call, Expect expect) {
    for (long allocations = 0; allocations < 5000; ++allocations) {
        const bool done = Within(allocations, call);
        SCOPED_TRACE(testing::Message() << "after " << allocations << " allocations");
        expect(done);
        if (done || testing::Test::HasFatalFailure()) return allocations;
    }
    ADD_FAILURE() << "it is never done";
    return 0;
}

/// Cut short, a call leaves all as before.
template <class Call>
long ExpectWholeOrNotAtAll(CScenario& s, Call call) {
    const std::string before = s.Dump();
    return CutShort(call, [&](bool done) {
        ASSERT_TRUE(s.library.context.undo.Empty());
        ASSERT_EQ(s.Dump() == before, !done);
    });
}

/// A check or an event as a call.
auto Sent(CScenario& s, const OrderSpec& order, bool check) {
    return [&s, order, check] {
        const long left = std::exchange(allocationsLeft, -1);  // what the host does takes none of it
        std::vector<char> buffer = MakeRequest(order);
        auto& request = *reinterpret_cast<tagSurveillanceInfo*>(buffer.data());
        tagOrdErrMessage error{};
        CPtrList rows;
        short status = status::kPass;
        bool done = true;
        allocationsLeft = left;
        try {
            if (check) {
                s.library.manager->CheckSurveillance(request, error, status, {&rows, nullptr}, false);
            } else {
                s.library.manager->UpdateSurveillance(request, nullptr, &rows, false);
            }
        } catch (const std::bad_alloc&) {
            done = false;
        }
        allocationsLeft = -1;
        s.library.context.settings.RowsAreLive() ? ForgetRows(rows) : FreeRows<LimitRow>(rows);
        EXPECT_TRUE(!done || status == status::kPass) << error.errorText;
        return done;
    };
}

TEST(OutOfMemory, LeavesNoTraceOfACheckWhereverItStrikes) {
    constexpr std::uint8_t kUpdatedBelow = 0b0000'0110;  // group and dealer are checked, the client takes it in
    const std::tuple<const char*, OrderSpec, std::int16_t> cases[]{
        {"every level checked", {}, 0},
        {"client only updated", {.levelCheckFlags = kUpdatedBelow}, 0},
        {"one category at two levels", {.dealer = "C1"}, 0},
        {"positions by client", {.clientType = 1, .levelCheckFlags = kUpdatedBelow}, 2}};
    for (const auto& [name, order, positionMode] : cases) {
        SCOPED_TRACE(name);
        CScenario s({.positionMode = positionMode});
        s.library.context.settings.orderBasedPosition = positionMode == 2 ? 1 : 0;
        for (const int mask : {2, 3}) s.House(static_cast<std::int16_t>(mask));
        EXPECT_GT(ExpectWholeOrNotAtAll(s, Sent(s, order, true)), 5);
        constexpr long kRowsHandedOut = 8;
        EXPECT_TRUE(positionMode != 2 || Within(kRowsHandedOut, Sent(s, order, true)))
            << "known accounts need no memory but the list's";
    }
}

/// A margined order: records of the tree, holders and keys are made on the way.
TEST(OutOfMemory, LeavesNoTraceOfAMarginedOrder) {
    for (const bool check : {true, false}) {
        CDerivativeHouse s(2);
        const Contract contract{.token = 100, .expiryDate = s.Days(30), .array = {5, -5}};
        s.File({contract});
        OrderSpec order = CDerivativeHouse::SpecOf(contract, kBuy, 10, 100);
        order.messageCode = check ? 2000 : 2222;
        ExpectWholeOrNotAtAll(s, Sent(s, order, check));
        EXPECT_EQ(check ? s.Row("-", 0xD).usedMarginOrder : s.Row("-", 0xD).usedMarginTraded, 50.0);
        if (!check) continue;
        // A new file that is cut short is finished by another end message.
        const tagRPFContractRecord doubled =
            ContractRecord({.token = 100, .expiryDate = s.Days(30), .array = {10, -10}});
        const tagRPFUnderlyingRecord charges = UnderlyingRecord(kUnderlying, 0, 0);
        s.RiskMessage(28006, kMaskNseDerivatives, &charges, sizeof charges);
        s.RiskMessage(28009, kMaskNseDerivatives, &doubled, sizeof doubled);
        CutShort([&s] { return s.RiskMessage(28002, kMaskNseDerivatives) == kDone; }, [](bool) {});
        for (const char* entity : {"C1", "-"}) EXPECT_EQ(s.Row(entity, 0xD).usedMarginOrder, 100.0) << entity;
    }
}

TEST(OutOfMemory, AnEventOrAConversionEntersWholeOrNotAtAll) {
    OrderSpec trade{.messageCode = 2222, .clientType = 1, .hasStored = true, .storedQuantity = 100};
    trade.storedPrice = 25000;
    OrderSpec delivery = trade, conversion{.quantity = 50, .clientType = 1};
    delivery.productType = product::kDelivery, conversion.productType = product::kConvertToDelivery;
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{2}}) {
        SCOPED_TRACE(mode);
        CScenario s({.positionMode = mode});
        for (const int mask : {2, 3}) s.House(static_cast<std::int16_t>(mask));
        s.library.context.stores.isinByNseToken.FindOrMake(2885) = "INE002A01018";
        for (const auto& [order, check] :
             {std::pair{trade, false}, {delivery, false}, {conversion, true}, {conversion, false}}) {
            EXPECT_GE(ExpectWholeOrNotAtAll(s, Sent(s, order, check)), 8) << "the rows handed out alone";
        }
        EXPECT_EQ(s.Held("C1", Period::kExpiry)->data.tradedBuyQty, 0) << "two halves of 100 are deliveries now";
    }
}

/// The host is told, and nothing else happens.
TEST(OutOfMemory, IsToldByTheExportedEvent) {
    static long told = 0;
    told = 0;
    SetHostWindow([](void*, unsigned, unsigned,
                     const char* text) { told += std::string_view{text} == "Not Enough memory" ? 1 : 0; },
                  nullptr);
    ASSERT_EQ(InitializeSurvManager(nullptr, nullptr, 0, 0, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr), 0);
    for (const char* entity : {"-", "G1", "D1", "C1"}) {
        LimitRow row = EmptyLimit(entity, 3);
        ASSERT_EQ(AddSurvLimits(&row, nullptr), 0);
    }
    std::vector<char> buffer = MakeRequest({.messageCode = 2222});
    auto* request = reinterpret_cast<tagSurveillanceInfo*>(buffer.data());
    CPtrList rows;
    const long failures = CutShort([&] { return UpdateSurveillance(request, nullptr, &rows, nullptr, 0) == 0; },
                                   [&rows](bool) { FreeRows<LimitRow>(rows); });
    EXPECT_EQ(told, failures);
    LimitRow row = EmptyLimit("C1", 3);
    ASSERT_EQ(GetSurveillancePositions(&row), 0);
    EXPECT_EQ(row.usedNetPositionTraded, 2'500'000.0) << "taken in once";
    CleanupSurvManager();
    SetHostWindow(nullptr, nullptr);
}

/// Every entity is marked whole or not at all, and the next touchline of the same price marks those that are left.
TEST(OutOfMemory, ATouchlineCutShortIsTakenUpByTheNext) {
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{2}}) {
        CMarkedHouse s;
        for (const char* entity : {"C1", "C2"}) {
            for (const int mask : {3, 0x13}) s.AddLimit(entity, static_cast<std::int16_t>(mask));
            s.AddPosition(PositionRow(entity, 3, 100));
        }
        s.Start(mode, 1);
        tagBcastMBOOrMBPTouchline touchline{};
        touchline.exchange = kMaskNseCash, touchline.token = 2885, touchline.lastTradedPrice = 25000;
        CPtrList rows;
        const long failures = CutShort(
            [&] {
                touchline.lastTradedPrice -= 10;
                s.Manager().AddAndComputeMTM(touchline, CSurveillanceManager::Marking::kWanted, &rows);
                return true;
            },
            [&](bool) {
                s.library.context.settings.RowsAreLive() ? ForgetRows(rows) : FreeRows<LimitRow>(rows);
                for (const char* entity : {"C1", "C2"}) {
                    const double mtm = 100.0 * (s.Held(entity, Period::kExpiry)->data.lastPrice - 25000);
                    EXPECT_EQ(s.Row(entity, 3).usedMtmFull, mtm);
                    EXPECT_EQ(s.Row(entity, 0x13).usedMtmFull, mtm);
                }
                s.Touch(kMaskNseCash, 2885, touchline.lastTradedPrice);
                EXPECT_EQ(s.Row("C2", 3).usedMtmFull, 100.0 * (touchline.lastTradedPrice - 25000));
            });
        EXPECT_GE(failures, 3);
    }
}

TEST(OutOfMemory, APositionRowEntersWholeOrNotAtAll) {
    CScenario s({.positionMode = 2});
    s.Limit("-", 9);
    CSurveillanceCategory& root = *s.library.manager->FindCategory("-");
    BKExposureTag row = PositionRow("-", 9, 100);
    row.clientLevelType = 1;  // summed under a '+' account as well
    tagOrderInfoForSurv order;
    FillExposureValuesToOrderInfo(row, order);
    order.scripInfo = s.library.context.stores.FindOrMakeScrip(row, order);
    ExpectWholeOrNotAtAll(s, [&] { return root.AddPositionRow(row, order) == kDone; });
    EXPECT_EQ(root.FindClientBook()->totals.Find(ProductGroup::kNormal, 9)->data.tradedBuyQty, 100);
}

TEST(OutOfMemory, ALimitIsAddedWholeOrNotAtAll) {
    CScenario s({.positionMode = 2});
    for (const char* code : {"A", "B", "C", "D", "E", "F", "G", "H"}) s.Limit(code, 3);
    tagAdminErrMessage error{};
    ExpectWholeOrNotAtAll(s, [&] {
        LimitRow row = EmptyLimit("I", 3);  // the ninth: look-ups need an index now
        const bool done = s.library.manager->AddSurvLimits(row, &error) == kDone;
        EXPECT_TRUE(done || FieldText(error.errorText) == "Not enough memory (CSurveillanceInfo::AddSurvLimits)");
        return done;
    });
    EXPECT_EQ(s.library.manager->categoriesByPeriod.Find(0)->Size(), 9);
}

TEST(OutOfMemory, TheHoldingsOfAStartCountAllOrNotAtAll) {
    CScenario s;
    s.Limit("C1", 3);
    s.library.context.window.Set(nullptr, nullptr);
    tagDPHolding rows[2]{};
    CPtrList list;
    for (tagDPHolding& row : rows) {
        WriteField(row.categoryCode, "C1");
        row.isinCode[0] = &row == rows ? 'A' : 'B';
        row.holdingQty = 100;
        list.AddTail(&row);
    }
    CPtrList shown;
    CutShort([&] { return s.library.manager->InitializeDPPositionInfo(nullptr, &list, nullptr) == kDone; },
             [&](bool done) {
                 s.library.manager->GetDPPositionInfoFromDll(0, "", "ALL", &shown);
                 ASSERT_EQ(shown.GetCount(), done ? 2 : 0);
             });
    EXPECT_EQ(static_cast<tagDPHolding*>(shown.GetHeadPosition()->element)->holdingQty, 100) << "counted once";
    FreeRows<tagDPHolding>(shown);
}

TEST(OutOfMemory, AScreenGivesAllItsRowsOrNone) {
    CPtrList limits, positions, holdings, shown;
    tagDPHolding held{};
    WriteField(held.categoryCode, "C1");
    held.isinCode[0] = 'A';
    holdings.AddTail(&held);
    for (const short positionMode : {short{1}, short{2}}) {
        SCOPED_TRACE(positionMode);
        for (const char* code : {"C1", "C2"}) {
            limits.AddTail(new LimitRow(EmptyLimit(code, 3)));
            positions.AddTail(new BKExposureTag(PositionRow(code, 3, 100)));
        }
        SetHostWindow([](void*, unsigned, unsigned, const char*) {}, nullptr);
        ASSERT_EQ(
            InitializeSurvManager(&limits, &positions, 0, 1, 0, 0, positionMode, 0, 0, nullptr, &holdings, nullptr),
            kDone);
        char everything[] = "ALL";
        char root[] = "C1";
        char group[] = "G1";
        const std::tuple<const char*, int, std::function<short()>> screens[]{
            {"limits", 2, [&] { return GetMarketExposure(everything, 3, &shown); }},
            {"limits of one", 1, [&] { return DownloadSurvInfo(root, &shown); }},
            {"limits of all", 2, [&] { return GetAllSurveillancePositions(&shown, nullptr); }},
            {"positions of all", 2, [&] { return GetAllSurveillancePositions(nullptr, &shown); }},
            {"netted positions", positionMode == 1 ? 2 : 0,
             [&] { return CaptureAllSurveillancePositions(nullptr, &shown); }},
            {"net positions", 1,
             [&] { return GetNetPositionInfoFromDll(5, root, group, everything, -9, 3, &shown, 0, 0); }},
            {"holdings", 1, [&] { return GetDPPositionInfoFromDll(0, root, everything, &shown); }},
        };
        for (const auto& [name, rows, ask] : screens) {
            SCOPED_TRACE(name);
            CutShort([&ask = ask] { return ask() == kDone; }, [&](bool done) { ASSERT_TRUE(done || shown.IsEmpty()); });
            EXPECT_EQ(shown.GetCount(), rows);
            const std::string_view kind = name;
            if (kind.starts_with("limits")) {
                positionMode == 2 ? ForgetRows(shown) : FreeRows<LimitRow>(shown);
            } else if (kind == "holdings") {
                FreeRows<tagDPHolding>(shown);
            } else {
                FreeRows<BKExposureTag>(shown);
            }
        }
        ForgetRows(limits);
        ForgetRows(positions);
        CleanupSurvManager();
    }
    SetHostWindow(nullptr, nullptr);
}

/// The bytes of all limit and position rows, which hold no address.
std::string RowsOf(const CScenario& s) {
    CPtrList limits, positions;
    s.library.manager->GetAllSurveillancePositions(&limits, &positions);
    std::string bytes;
    for (CPtrList::Position at = limits.GetHeadPosition(); at;) {
        bytes.append(static_cast<const char*>(limits.GetNext(at)), sizeof(LimitRow));
    }
    for (CPtrList::Position at = positions.GetHeadPosition(); at;) {
        bytes.append(static_cast<const char*>(positions.GetNext(at)), sizeof(BKExposureTag));
    }
    s.library.context.settings.RowsAreLive() ? ForgetRows(limits) : FreeRows<LimitRow>(limits);
    FreeRows<BKExposureTag>(positions);
    return bytes;
}

/// Calls of the desk: each is refused or fails, and nothing has changed, or it is done as if memory had never run out.
TEST(OutOfMemory, TheDeskChangesAllOrNothing) {
    const std::tuple<const char*, bool (*)(CScenario&)> calls[]{
        {"a row of a new entity",
         [](CScenario& s) {
             LimitRow row = EmptyLimit("C9", 3);
             return s.library.manager->AddSurvLimits(row, nullptr) == kDone;
         }},
        {"another row",
         [](CScenario& s) {
             LimitRow row = EmptyLimit("C1", 3, 1660);
             return s.library.manager->AddSurvLimits(row, nullptr) == kDone;
         }},
        {"a preference",
         [](CScenario& s) {
             tagClientRiskPreferenceInfoForSurv record{};
             WriteField(record.preferenceCode, "C1");
             record.exchange = kMaskNseCash, record.token = kAllSecurities, record.marginFlags = 0x1F;
             s.library.AddUpdatePreference(record);
             return s.library.manager->FindCategory("C1")->ownPreferences != nullptr;
         }},
        {"holdings",
         [](CScenario& s) {
             tagDPUpload upload{};
             WriteField(upload.categoryCode, "C1");
             upload.isinCode[0] = 'A', upload.quantity = 100, upload.collateralPrice = 250;
             return s.library.manager->UpdateDPPositionInfo(upload) == kDone;
         }},
        {"a removed row",
         [](CScenario& s) { return s.library.manager->RemoveSurvLimits(EmptyLimit("C1", 3, 1594), nullptr) == kDone; }},
    };
    for (const auto& [name, call] : calls) {
        SCOPED_TRACE(name);
        CScenario control, s;
        for (CScenario* house : {&control, &s}) {
            for (const int mask : {2, 3}) house->House(static_cast<std::int16_t>(mask));
            house->Limit("C1", 3, {}, 1594);
        }
        ASSERT_TRUE(call(control));
        const std::string before = s.Dump(), after = RowsOf(control);
        CutShort([&s, &call = call] { return call(s); },
                 [&](bool done) { ASSERT_TRUE(done ? RowsOf(s) == after : s.Dump() == before); });
    }
}

/// A start that is cut short is finished by another with the same lists.
TEST(OutOfMemory, ASecondStartFinishesTheFirst) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::string directory = (std::filesystem::temp_directory_path() / "startXXXXXX").string();
    std::filesystem::current_path(::mkdtemp(directory.data()));
    for (const std::int16_t mode : {std::int16_t{0}, std::int16_t{1}, std::int16_t{2}, std::int16_t{3}}) {
        SCOPED_TRACE(mode);
        const Library::StartSettings settings{.rpfMarginMode = 2, .mtmMode = 1, .positionMode = mode};
        std::string whole;
        bool done = false;
        for (long allocations = -1; !done; ++allocations) {
            ASSERT_LT(allocations, 5000);
            CScenario s;
            s.library.CleanUp();
            CPtrList limits, positions;
            const LoadLists lists{.limits = &limits, .exposures = &positions};
            for (const char* entity : {"-", "G1", "C1"}) {
                for (const int mask : {2, 3, 9}) {
                    limits.AddTail(new LimitRow(EmptyLimit(entity, static_cast<std::int16_t>(mask))));
                }
            }
            for (const std::int16_t mask : {std::int16_t{3}, std::int16_t{2}, std::int16_t{9}}) {
                auto* row = new BKExposureTag(PositionRow("G1", mask, 100));
                row->clientLevelType = 1;
                positions.AddTail(row);
                positions.AddTail(new BKExposureTag(PositionRow("C1", mask, -50)));
            }
            done = Within(allocations, [&] { return s.library.Start(settings, lists) == kDone; });
            if (!done) {
                ASSERT_EQ(s.library.Start(settings, lists), kDone) << "after " << allocations << " allocations";
            }
            if (allocations < 0) {
                whole = RowsOf(s);
                done = false;
            }
            ASSERT_TRUE(RowsOf(s) == whole) << "after " << allocations << " allocations";
            ForgetRows(limits);
            ForgetRows(positions);
        }
    }
    std::filesystem::current_path(before);
    std::filesystem::remove_all(directory);
}

TEST(OutOfMemory, ASetHasAKeyOrStaysAsItWas) {
    HashSet<std::int64_t> keys;
    for (std::int64_t key = 0; key < 20; ++key) {  // nine and more have an index
        CutShort([&] { return keys.Insert(key); },
                 [&](bool done) {
                     ASSERT_EQ(keys.Contains(key), done);
                     ASSERT_EQ(keys.Size(), static_cast<std::size_t>(key) + (done ? 1 : 0));
                 });
    }
}

}  // namespace
}  // namespace surv::test
