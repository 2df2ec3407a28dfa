// What a host sees: the public headers and the shared library. All tests share the one library of the process, so
// each begins by ending what the one before has left.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "surveillance/host.h"
#include "surveillance/surveillance_c.h"

namespace {

using Strings = std::vector<std::string>;
using Answers = std::vector<short>;

template <std::size_t Width>
void Put(char (&field)[Width], const char* text) {
    std::memcpy(field, text, std::strlen(text));
}

/// A row of mask 3 across all securities without a limit.
BKSurveillanceLimitDefTag Row(const char* entity) {
    BKSurveillanceLimitDefTag row{};
    Put(row.entityCode, entity);
    row.limitMask = 3, row.token = -9;
    SetNoLimits(row);
    return row;
}

/// An order of G, D and the root, 100 at 250.00.
struct [[gnu::packed]] Request {
    tagSurveillanceInfo head{};
    tagOrderRequest order{};

    Request() {
        head.messageCode = 2000;
        Put(head.groupCode, "G");
        Put(head.dealerCode, "D");
        head.clientType = head.subClientType = 255;
        order.exchangeMask = order.buySell = order.proClient = 1;
        order.quantity = 100, order.price = 25000, order.productType = 1;
    }
};

class Boundary : public ::testing::Test {
 protected:
    Boundary() {
        CleanupSurvManager();
        SetHostWindow(
            [](void* context, unsigned message, unsigned wParam, const char* text) {
                EXPECT_EQ(message, 1131U);
                EXPECT_EQ(wParam, 5U);
                static_cast<Boundary*>(context)->texts_.emplace_back(text);
            },
            this);
    }
    ~Boundary() override {
        SetHostWindow(nullptr, nullptr);
        CleanupSurvManager();
    }
    static short Start(short positionMode = 0, short detail = 0, CPtrList* limits = nullptr) {
        return InitializeSurvManager(limits, nullptr, 0, detail, 0, 0, positionMode, 0, 0, nullptr, nullptr, nullptr);
    }
    static short ShortStart() { return surv_RestartSurvManager(nullptr, nullptr, 0, nullptr, nullptr, nullptr); }
    /// Rows for G, D and the root, that of the root at 99 shares an order.
    void AddHouse() {
        for (const char* entity : {"G", "D", "-"}) {
            BKSurveillanceLimitDefTag limit = Row(entity);
            if (entity[0] == '-') limit.maxSingleOrderQty = 99;
            ASSERT_EQ(AddSurvLimits(&limit, &error), 0) << error.errorText;
        }
    }
    short Check(CPtrList* rows, short probe = 0) {
        return CheckSurveillance(&request.head, &orderError, &status, rows, rows, rows, probe);
    }
    /// The texts since the last call.
    Strings Texts() { return std::exchange(texts_, {}); }

    Request request;
    tagAdminErrMessage error{};
    tagOrdErrMessage orderError{};
    BKSurveillanceLimitDefTag row = Row("D");
    BKSurveillanceLimitDefTag* live = &row;
    char code[2] = "D";
    short status = 77;
    CPtrList list;

 private:
    Strings texts_;
};

TEST_F(Boundary, BeforeTheStartEachEntryTellsItsText) {
    std::array<char, 8> opaque{};
    auto& security = *reinterpret_cast<tagBcastUpdateSecurityInfo*>(opaque.data());
    const std::tuple<const char*, std::function<short()>> cases[]{
        {"Check Surveillance Failed !!!. ", [&] { return Check(&list); }},
        {"Update Surveillance Failed !!!. ", [&] { return UpdateSurveillance(&request.head, &error, {}, {}, 0); }},
        {"Add Surv Limits Failed !!!. ", [&] { return AddSurvLimits(&row, &error); }},
        {"Update Surv Limits !!!. ", [&] { return UpdateSurvLimits(&row, &error); }},
        {"Remove Surv Limits !!!. ", [&] { return RemoveSurvLimits(row, &error); }},
        {"", [&] { return GetSurveillancePositions(&row); }},
        {"", [&] { return GetSurvPositions(code, 3, -9, live); }},
        {"", [&] { return GetAllSurveillancePositions(&list, nullptr); }},
        {"", [&] { return CaptureAllSurveillancePositions(&list, nullptr); }},
        {"Download Failed !!!. ", [&] { return DownloadSurvInfo(code, &list); }},
        {"Check Surveillance Failed !!!. ", [&] { return AddAndComputeMTM(1, nullptr, &list, nullptr); }},
        {"Check Surveillance Failed !!!. ", [&] { return RecomputeMTM(&list, nullptr); }},
        {"RecomputeMTMOnline failed !!!. ", [] { return RecomputeMTMOnline(); }},
        {"Check Surveillance Failed !!!. ", [&] { return GetMarketExposure(code, 3, &list); }},
        {"Check Surveillance Failed !!!. ",
         [&] { return GetNetPositionInfoFromDll(0, code, code, code, -9, 3, &list, 0, 0); }},
        {"Check Surveillance Failed !!!. ", [&] { return ClientPositionPresentFromDLL(code, code, code, code); }},
        {"Check Surveillance Failed !!!. ", [&] { return GetDPPositionInfoFromDll(0, code, code, &list); }},
        {"Update Surveillance Failed !!!. ", [] { return UpdateDPPositionInfo(nullptr); }},
        {"Update Surveillance Failed !!!. ", [] { return AddUpdateProductMasterInfo(nullptr); }},
        {"RMSFund Allocation !!!. ", [&] { return RMSFundAllocation(nullptr, &row); }},
        {"CheckAndUpdateSecurityInfo Failed !!!. ", [&] { return CheckAndUpdateSecurityInfo(security); }},
        {"SetLastBcastMBOOrMBPTouchline Failed !!!. ",
         [] { return surv_SetLastBcastMBOOrMBPTouchline(nullptr), short{-1}; }},
    };
    int number = 0;
    for (const auto& [text, call] : cases) {
        SCOPED_TRACE(testing::Message() << "entry " << number++);
        EXPECT_EQ(call(), -1);
        EXPECT_EQ(Texts(), Strings{std::string(text) + "Surveillance Manager not initialized"});
    }
    EXPECT_EQ(live, nullptr) << "no stale row is handed out";
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(surv_ComputeMTMOnOrOff(7), -1);
    EXPECT_EQ(Texts(), Strings{}) << "the one guarded entry without a text";
    CleanupSurvManager();
    EXPECT_EQ(Texts(), Strings{"Cleanup Failed !!!. Surveillance Manager was not initialized."});

    ASSERT_EQ(Start(), 0);
    EXPECT_EQ(surv_ComputeMTMOnOrOff(7), 0);
    EXPECT_EQ(CheckAndUpdateSecurityInfo(security), 0);
    EXPECT_EQ(AddAndComputeMTM(1, nullptr, nullptr, nullptr) | RecomputeMTM(nullptr, nullptr) | RecomputeMTMOnline(),
              0);
    SetLastBcastMBOOrMBPTouchline(nullptr);
    EXPECT_EQ(Texts(), Strings{});
}

/// By the C interface, which hands on.
TEST_F(Boundary, OldFormsAreRefusedAndSettingsTakenWhateverTheState) {
    for (const bool started : {false, true}) {
        SCOPED_TRACE(started);
        EXPECT_EQ(started ? Start() : 0, 0);
        EXPECT_EQ(surv_CheckSurveillanceByInfo(nullptr), -1);
        EXPECT_EQ(surv_CheckSurveillanceByCodes("G", "D", "C", nullptr, &orderError, &status, &list), -1);
        EXPECT_EQ(surv_UpdateSurveillanceByInfo(nullptr), -1);
        EXPECT_EQ(surv_UpdateSurveillanceByCodes("G", "D", "C", nullptr, nullptr, &error, &list), -1);
        EXPECT_EQ(Texts(), Strings(4, "This function should not be called."));
        EXPECT_EQ(status, 77);
        EXPECT_EQ(orderError.timeStamp + error.timeStamp, 0);

        EXPECT_EQ(surv_UpdateSurvExposure(&list, nullptr, 0) | surv_MTMTimeIntervalAndTickCount(60, 5), 0);
        EXPECT_EQ(
            surv_SetMarginPlusMinOrderValue(1) | surv_SetOrderBasedPosition(0) | surv_InitializeMCXLOTWeightOnOrOff(0),
            0);
        EXPECT_EQ(surv_AddUpdateAutoSquareOffTimeSettings(7, 3, 1) | surv_EnableTransactionLogging(1), 0);
        EXPECT_EQ(surv_GetTransactionLogList(), nullptr);
        EXPECT_EQ(Texts(), Strings{});
    }
}

TEST_F(Boundary, ASecondStartChangesNothingAndAfterACleanUpOnlyTheLongFormStartsAgain) {
    ASSERT_EQ(Start(2, 1), 0);
    AddHouse();
    EXPECT_EQ(Start(0, 0), -1);
    EXPECT_EQ(ShortStart(), -1);
    EXPECT_EQ(Texts(), Strings(2, "Surveillance Manager already initialized"));
    ASSERT_EQ(GetSurvPositions(code, 3, -9, live), 0);
    ASSERT_EQ(DownloadSurvInfo(code, &list), 0);
    EXPECT_EQ(list.RemoveHead(), live) << "positionMode is 2 no longer";
    ASSERT_EQ(Check(nullptr), 0);
    EXPECT_NE(std::string(orderError.errorText).find("limit is 99 and current value is 100"), std::string::npos)
        << "limitDetailMessages is 1 no longer: " << orderError.errorText;

    CleanupSurvManager();
    EXPECT_EQ(Texts(), Strings{});
    EXPECT_EQ(ShortStart(), -1);
    EXPECT_EQ(Texts(), Strings{"Surveillance Manager initialization Failed"});
    ASSERT_EQ(Start(), 0);
    EXPECT_EQ(GetSurveillancePositions(&row), -1) << "a limit has outlived the clean-up";
    AddHouse();
    EXPECT_EQ(GetSurveillancePositions(&row), 0);
    EXPECT_EQ(Texts(), Strings{});
}

TEST_F(Boundary, AWindowThatCallsBackInIsRefused) {
    static BKSurveillanceLimitDefTag limit;
    static CPtrList dumped;
    static Answers answers;
    limit = Row("W");
    SetHostWindow(
        [](void*, unsigned, unsigned, const char*) {
            answers.push_back(AddSurvLimits(&limit, nullptr));
            answers.push_back(GetAllSurveillancePositions(&dumped, nullptr));
            CleanupSurvManager();
            SetHostWindow(nullptr, nullptr);
        },
        nullptr);
    const auto speak = [] { CheckSurveillance(static_cast<tagCheckSurveillanceInfo*>(nullptr)); };
    speak();  // the old form, which tells its text
    EXPECT_EQ(answers, (Answers{-1, -1})) << "before the start";
    ASSERT_EQ(Start(), 0);
    speak();
    EXPECT_EQ(answers, (Answers{-1, -1, -1, -1}));
    EXPECT_EQ(GetAllSurveillancePositions(&dumped, nullptr), 0) << "still started";
    EXPECT_TRUE(dumped.IsEmpty());
}

TEST_F(Boundary, NullPointersEndACallOrAreSkipped) {
    CPtrList nulls, limits;
    nulls.AddTail(nullptr);
    limits.AddTail(nullptr);
    EXPECT_EQ(InitializeClientPreferencesInfo(&nulls, nullptr), 0);
    ASSERT_EQ(Start(0, 0, &limits), 0);
    AddHouse();
    BKSurveillanceLimitDefTag unknown = Row("X");
    tagRMSFundAllocationRequest fund{};
    EXPECT_EQ(
        InitializeMarginInfo(nullptr) | InitializeMarginInfo(&nulls) | InitializeMCXMarginInfo(&nulls) |
            InitializeNCDEXExposureMarginInfo(&nulls) | Check(nullptr) | Check(nullptr, 1) |
            GetAllSurveillancePositions(nullptr, nullptr) | CaptureAllSurveillancePositions(nullptr, nullptr) |
            GetNetPositionInfoFromDll(0, nullptr, code, code, -9, 3, &list, 0, 0) |
            GetNetPositionInfoFromDll(4, code, nullptr, code, -9, 3, &list, 0, 0) |
            GetNetPositionInfoFromDll(4, code, code, nullptr, -9, 3, &list, 0, 0) |
            GetNetPositionInfoFromDll(4, code, code, code, -9, 3, nullptr, 0, 0) |
            GetMarketExposure(nullptr, 3, &list) | GetMarketExposure(code, 3, nullptr) |
            DownloadSurvInfo(nullptr, &list) | DownloadSurvInfo(code, nullptr) |
            InitializeClientPreferencesInfo(nullptr, nullptr) | AddUpdateClientPreferencesInfo(nullptr) |
            GetClientPreferencesInfo(0, nullptr, -9, nullptr) | GetClientPreferencesInfo(1, nullptr, 4711, &list) |
            GetDPPositionInfoFromDll(1, code, nullptr, &list) | GetDPPositionInfoFromDll(0, nullptr, nullptr, nullptr) |
            surv_InitializeProductMasterInfo(nullptr) | InitializeProductMasterInfo(&nulls) |
            surv_InitializeTokenInfo(nullptr, 0, 0, 0, 0) | InitializeTokenInfo(&nulls, 0, 0, 0, 0) |
            (surv_ListCount(nullptr) + !!surv_ListNext(nullptr, nullptr)) | (surv_RowNew(4) != nullptr),
        0);
    EXPECT_EQ(CheckSurveillance(nullptr, &orderError, &status, {}, {}, {}, 0) &
                  CheckSurveillance(&request.head, nullptr, &status, {}, {}, {}, 0) &
                  CheckSurveillance(&request.head, &orderError, nullptr, {}, {}, {}, 0) &
                  AddSurvLimits(nullptr, &error) & AddSurvLimits(&row, nullptr) & UpdateSurvLimits(nullptr, &error) &
                  UpdateSurvLimits(&unknown, nullptr) & RemoveSurvLimits(unknown, nullptr) &
                  GetSurveillancePositions(nullptr) & ClientPositionPresentFromDLL(nullptr, nullptr, nullptr, nullptr) &
                  GetDPPositionInfoFromDll(1, nullptr, nullptr, &list) & UpdateDPPositionInfo(nullptr) &
                  RMSFundAllocation(nullptr, &row) & RMSFundAllocation(&fund, nullptr) &
                  GetClientCode1(0, {}, nullptr, code) & surv_ListAdd(nullptr, &row) &
                  surv_MapPut(nullptr, "", nullptr) & surv_RemoveSurvLimits(nullptr, &error) &
                  surv_GetSurvPositions(code, 3, -9, nullptr) & surv_GetClientCode1(0, nullptr, "", code) &
                  surv_CheckAndUpdateSecurityInfo(nullptr),
              -1);
    EXPECT_EQ(Texts(), Strings{});
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(GetSurvPositions(code, 5, -9, live), 0) << "no such mask is no failure";
    EXPECT_EQ(live, nullptr);
    EXPECT_EQ(GetSurvPositions(nullptr, 3, -9, live), -1);
    EXPECT_EQ(Texts(), Strings{"Surveillance Manager Update Exposure Failed"});
}

TEST(CInterface, ListsRowsAndMaps) {
    for (const int kind : {SURV_LIMIT_ROW, SURV_POSITION_ROW, SURV_BREACH_ROW, SURV_HOLDING_ROW}) {
        CPtrList* list = surv_ListNew();
        void* row = surv_RowNew(kind);
        EXPECT_EQ(surv_ListAdd(list, row), 0);
        SurvPosition at = surv_ListHead(list);
        EXPECT_EQ(surv_ListNext(list, &at), row);
        EXPECT_EQ(surv_ListNext(list, &at), nullptr);
        surv_ListForget(list);
        surv_RowFree(kind, row);
        EXPECT_EQ(surv_ListAdd(list, surv_RowNew(kind)), 0);
        EXPECT_EQ(surv_ListCount(list), 1);
        surv_ListFreeRows(kind, list);
        EXPECT_EQ(surv_ListCount(list), 0);
        surv_ListDelete(list);
    }
    EXPECT_EQ(surv_RowNew(99), nullptr);
    EXPECT_EQ(surv_ListAdd(nullptr, nullptr), -1);
    EXPECT_EQ(surv_ListCount(nullptr), 0);

    tagAdditionalMarginInfo rates{};
    CMapStringToOb* map = surv_MapNew();
    EXPECT_EQ(surv_MapPut(map, "rates", &rates), 0);
    EXPECT_EQ(surv_MapPut(map, nullptr, &rates), -1);
    surv_MapDelete(map);
}

TEST(ClientCode, AccountOfARawRecord) {
    const struct {
        const char* name;
        short kind, messageCode, proClient;
        const char* accountText;  // '.' stands for a zero
        short result;
        const char* text;  // '?': untouched; the stored order says "STORED"
    } cases[] = {
        {"over the gap", 0, 2000, 1, "ABCDEFGHIJ##KLMN", 0, "ABCDEFGHIJKLMN"},
        {"ends in the gap, before another's rest", 0, 2040, 1, "ABCDEFGHIJ#.KLMN", 0, "ABCDEFGHIJ"},
        {"another kind, unknown code", -1, 4711, 1, "C1..............", 1, "?"},
        {"cancelled", 0, 9002, 1, "C1..............", 0, "C1"},
        {"trade", 0, 2222, 2, "C1..............", 0, "STORED"},
        {"correction", 0, 5440, 1, "C1..............", -1, "?"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        tagOrderInfo stored{};
        Put(stored.accountText, "STORED");
        tagOrderRequest order{};
        order.messageCode = c.messageCode, order.proClient = c.proClient;
        for (std::size_t i = 0; i < 16; ++i) order.accountText[i] = c.accountText[i] == '.' ? '\0' : c.accountText[i];
        const auto text = std::make_unique<char[]>(15);  // no more than a host must give
        text[0] = '?';
        EXPECT_EQ(GetClientCode1(c.kind, stored, reinterpret_cast<char*>(&order), text.get()), c.result);
        EXPECT_STREQ(text.get(), c.text);
    }
}

using Names = std::map<std::string, int>;  // of functions, with the number of their forms

/// What nm says that the loaded library exports.
Names ExportedNames() {
    std::ifstream maps("/proc/self/maps");
    std::string path;
    for (std::string line; std::getline(maps, line);) {
        if (line.find("libsurveillance.so") != std::string::npos) path = line.substr(line.find('/'));
    }
    Names names;
    std::FILE* pipe = ::popen(("nm -DC --defined-only " + path).c_str(), "r");
    std::array<char, 1024> line{};
    while (std::fgets(line.data(), static_cast<int>(line.size()), pipe)) {
        const std::string symbol = std::string(line.data()).substr(19);  // behind address and type
        ++names[symbol.substr(0, symbol.find_first_of("(\n"))];
    }
    ::pclose(pipe);
    return names;
}

TEST(Exports, TheLibraryShowsWhatItsHeadersDeclareAndNothingElse) {
    const std::string mark = "\nSURVEILLANCE_API ";
    Names declared;
    for (const char* header : {"surveillance.h", "host.h", "surveillance_c.h"}) {
        std::ifstream file(SURVEILLANCE_SOURCE_DIR "/include/surveillance/" + std::string(header));
        const std::string text(std::istreambuf_iterator<char>(file), {});
        for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
            const std::size_t name = text.find(' ', at + mark.size()) + 1;  // behind the type
            ++declared[text.substr(name, text.find('(', name) - name)];
        }
    }
    EXPECT_EQ(ExportedNames(), declared);
}

}  // namespace
