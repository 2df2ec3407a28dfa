#include "replay.h"

#include <gtest/gtest.h>

#include <sstream>

#include "script_error.h"

namespace survhost {
namespace {

/// Plays a script and gives its answers; the complaint goes to `complaint`.
std::string Play(const std::string& script, std::string* complaint = nullptr) {
    std::istringstream in(script);
    std::ostringstream out;
    AnswerWriter writer(out);
    Replay replay({&writer});
    try {
        replay.Play(in, "day.jsonl");
    } catch (const RunError& error) {
        if (complaint) *complaint = error.what();
    }
    return out.str();
}

TEST(Replay, AFaultyLineIsNamedAndEarlierAnswersStand) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"call":"GetTransactionLogList")", "broken JSON at column 32: syntax error"},
        {"{\"call\":\"DownloadSurvInfo\",\"code\":\"\xFF\"}", "broken JSON at column 36: syntax error"},
        {R"({"call":"ComputeMTMOnOrOff","mode":1e999})", "broken JSON: number overflow"},
        {R"([1])", "a line must hold one JSON object"},
        {R"({"call":"ComputeMTM"})", "unknown call \"ComputeMTM\"; do you mean \"ComputeMTMOnOrOff\"?"},
        {R"({"call":"ComputeMTMOnOrOff","mode":1,"mode":2})", "\"mode\" stands twice in one object"},
        {R"({"call":"ComputeMTMOnOrOff","mask":1})", "ComputeMTMOnOrOff has no argument \"mask\"; it takes: mode"},
        {R"({"call":"InitializeSurvManager","form":"brief"})", "\"form\" must be \"long\" or \"short\""},
        {R"({"call":"InitializeSurvManager","limitList":[{},{"mask":1}]})",
         "limitList[1]: BKSurveillanceLimitDefTag has no field \"mask\""},
        {R"({"call":"AddSurvLimits","limit":[]})", "limit: a BKSurveillanceLimitDefTag must be an object"},
        {R"({"call":"GetAllSurveillancePositions","want":["rows"]})", "\"want\" knows no \"rows\""},
        {R"({"call":"CheckSurveillance","order":{}})", "\"request\" is missing"},
        {R"({"call":"CheckSurveillance","request":{"messageCode":2000}})", "message code 2000 needs \"order\""},
        {R"({"call":"CheckSurveillance","request":{"messageCode":5440},"tradeCorrection":{},"order":{}})",
         "message code 5440 takes no \"order\""},
        {R"({"call":"CheckSurveillance","request":{"messageCode":2000,"levelMarginFlags":128},"order":{}})",
         "bit 7 of \"levelMarginFlags\" is set, but \"orderInfo\" is missing"},
        {R"({"call":"UpdateSurveillance","request":{"messageCode":2222,"requestFlags":1},"trade":{}})",
         "bit 0 of \"requestFlags\" is set, but no \"trade\" follows"},
        {R"({"call":"ProcessRPFInfo","messageCode":28008,"count":1,"underlying":{}})",
         "message code 28008 takes no \"underlying\""},
        {R"({"call":"InitializeAllAdditionalMarginInfo","map":[{},{"rate":1}]})",
         "map[1]: tagAdditionalMarginInfo has no field \"rate\""},
    };
    const std::string good = "# a comment\n\n{\"call\":\"GetTransactionLogList\"}\r\n";
    for (const auto& [line, due] : cases) {
        SCOPED_TRACE(line);
        std::string complaint;
        const std::string answers = Play(good + line + "\n" + good, &complaint);
        EXPECT_EQ(answers, "{\"call\":\"GetTransactionLogList\",\"result\":null}\n");
        EXPECT_TRUE(complaint.starts_with(std::string("day.jsonl:4: ") + due)) << complaint;
        EXPECT_EQ(complaint.find('\n'), std::string::npos);
    }
}

TEST(Replay, AnUnreadableFileIsRefusedBeforeAnyIsPlayed) {
    struct Counter : Observer {
        void OnCall(const Played&) override { ++calls; }
        void OnProgress(std::size_t) override { ++calls; }
        int calls = 0;
    } counter;
    Replay replay({&counter});
    const std::string readable = SURVEILLANCE_SOURCE_DIR "/examples/worked_answer.jsonl";
    for (const char* unreadable : {"no such file", "/"}) {
        EXPECT_THROW(replay.PlayFiles({readable, unreadable}), RunError) << unreadable;
    }
    EXPECT_EQ(counter.calls, 0);
}

TEST(Replay, TextsForTheWindowBelongToTheCallThatSentThem) {
    EXPECT_EQ(
        Play(R"({"call":"CleanupSurvManager"}
{"call":"SetOrderBasedPosition","value":0}
)"),
        R"({"call":"CleanupSurvManager","notifications":["Cleanup Failed !!!. Surveillance Manager was not initialized."]}
{"call":"SetOrderBasedPosition","result":0}
)");
}

}  // namespace
}  // namespace survhost
