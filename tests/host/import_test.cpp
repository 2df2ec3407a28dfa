#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "bhavcopy.h"
#include "contract_master.h"
#include "import_margins.h"
#include "import_span.h"
#include "json_record.h"

namespace survhost {
namespace {

std::string With(std::string text, const std::string& what, const std::string& instead) {
    const auto at = text.find(what);
    if (at == std::string::npos) throw std::runtime_error("the text lacks " + what);
    return text.replace(at, what.size(), instead);
}

/// A file of one index with cash, a future and two options; a second commodity has cash only. Each <ra> gets the same
/// values.
std::string MakeFile() {
    std::string text = R"(<?xml version="1.0" encoding="ISO-8859-1"?>
<spanFile><fileFormat>4.00</fileFormat><pointInTime><clearingOrg>
<exchange><exch>EX</exch><name>Y</name><phyPf><pfId>1</pfId></phyPf>
<futPf><pfId>2</pfId><pfCode>INDEX</pfCode><cvf>50</cvf>
<fut><p>95.1</p><sc>0.1</sc>
<setlDate>20160630</setlDate>
<ra><d>1</d></ra></fut></futPf>
<oopPf><pfId>2</pfId><pfCode>INDEXOFTWELVE</pfCode><cvf>0</cvf>
<exercise>AMER</exercise>
<series><setlDate>20160630</setlDate><cvf>100</cvf>
<opt><o>P</o><k>96.005</k><p>2.52</p><ra><d>-0.25</d></ra></opt>
<opt><o>C</o><k>96</k>
<p>0</p><ra><d>0.5</d></ra></opt></series></oopPf></exchange>
<ccDef><cc>CASH</cc><pfLink><exch>EX</exch><pfType>PHY</pfType><pfId>1</pfId></pfLink></ccDef>
<ccDef><cc>INDEX</cc><pfLink><exch>EX</exch><pfType>FUT</pfType><pfId>2</pfId></pfLink>
<pfLink><exch>EX</exch><pfType>OOP</pfType><pfId>2</pfId></pfLink>
<somTiers><tier><rate><val>7</val></rate></tier><tier><rate><val>130</val></rate></tier></somTiers>
<dSpread><chargeMeth>F</chargeMeth><rate><val>955</val></rate><tLeg><cc>INDEX</cc></tLeg></dSpread>
<dSpread><chargeMeth>F</chargeMeth><rate><val>9.5</val></rate><tLeg><cc>INDEX</cc></tLeg></dSpread>
<dSpread><chargeMeth>W</chargeMeth><rate><val>2000</val></rate><tLeg><cc>OTHER</cc></tLeg></dSpread></ccDef>
</clearingOrg></pointInTime></spanFile>
)";
    std::string values = "<ra><a>1.5</a><a>-0.0</a>";
    for (const char* value : {"0", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "-13.1", "14"}) {
        values += std::string("<a>") + value + "</a>";
    }
    for (const char* delta : {"<d>1<", "<d>-0.25<", "<d>0.5<"}) {
        text = With(text, std::string("<ra>") + delta, values + delta);
    }
    return With(text, "<name>Y", "<name>\xDD");  // no UTF-8
}
const std::string kFile = MakeFile();

/// Tests run side by side: each has a folder to itself.
std::string OwnFolder() {
    const std::string folder = testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + '/';
    std::filesystem::create_directories(folder);
    return folder;
}

/// A file on disk for as long as a case runs.
class TemporaryFile {
 public:
    explicit TemporaryFile(const std::string& text, const char* file = "import_test.txt") : name(OwnFolder() + file) {
        std::ofstream(name) << text;
    }
    ~TemporaryFile() { std::filesystem::remove(name); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const std::string name;
};

std::string Imported(const std::string& text, const std::string& master = "", std::string* notes = nullptr) {
    RiskFile file = ReadSpan(text, "risk.spn");
    std::ostringstream said;
    GiveTokens(file, {.file = "risk.spn", .master = master}, said);
    if (notes) *notes = said.str();
    return ReplayLines(file, 16);
}

template <class Function>
std::string Complaint(Function function) {
    try {
        function();
    } catch (const RunError& error) {
        return error.what();
    }
    return "none";
}

TEST(Import, AFileBecomesTheLinesOfItsLoad) {
    const std::string call = R"({"call":"ProcessRPFInfo","messageCode":280)";
    const std::string to = R"(,"segment":16,"toStaging":1)";
    const auto contract = [&](const std::string& fields, const std::string& delta) {
        return call + "09" + to + R"(,"contract":{)" + fields +
               R"(,"riskArray":[1.5,0,0,2,3,4,5,6,7,8,9,10,11,12,-13.1,14],"compositeDelta":)" + delta + "}}\n";
    };
    EXPECT_EQ(
        Imported(kFile),
        call + "01" + to + "}\n" + call + "03" + to + "}\n" + call + "04" + to + "}\n" + call + "06" + to +
            R"(,"underlying":{"underlyingToken":1,"calendarSpreadCharge":955,"shortOptionMinimumCharge":130}})" + "\n" +
            call + "05" + to + ",\"count\":1}\n" + call + "07" + to + "}\n" +
            contract(R"("instrumentName":"FUT","symbol":"INDEX","expiryDate":1151712000,"strikePrice":-1,)"
                     R"("token":100001,"underlyingToken":1,"contractPrice":475500)",
                     "0.1") +
            contract(R"("instrumentName":"OPT","symbol":"INDEXOFTWELV","expiryDate":1151712000,"strikePrice":9601,)"
                     R"("optionType":"PA","token":100002,"underlyingToken":1,"contractPrice":25200)",
                     "-0.25") +
            contract(R"("instrumentName":"OPT","symbol":"INDEXOFTWELV","expiryDate":1151712000,"strikePrice":9600,)"
                     R"("optionType":"CA","token":100003,"underlyingToken":1)",
                     "0.5") +
            call + "08" + to + ",\"count\":3}\n" + call + "02" + to + "}\n");
}

TEST(Import, AFaultyFileIsRefusedAtItsLine) {
    const std::tuple<const char*, const char*, const char*> cases[]{
        {"</spanFile>", "", "21: broken XML: the file ends too early"},
        {"<spanFile>", "<html/><spanFile>", "2: this is no risk parameter file: it begins with <html>"},
        {"4.00", "3.00", "2: file format 3.00 is not known, only 4.00"},
        {"<p>95.1</p>", "", "5: <fut> lacks <p>"},
        {"<p>95.1</p>", "<p>95.1</p>\n<p>95.2</p>", "6: <fut> has a second <p>"},
        {"<p>0</p>", "<p>inf</p>", "13: <p>: \"inf\" is not a number"},
        {"<a>14</a>", "", "7: 15 scenario values, not 16"},
        {"<cvf>50</cvf>", "<cvf>0</cvf>", "4: a contract value factor must be above zero"},
        {"20160630", "20160631", "6: <setlDate>: \"20160631\" is no date"},
        {"<k>96</k>", "<k>0</k>", "12: <k>: 0 is no strike price"},
        {"<o>C</o><k>96</k>", "<o>P</o><k>96.01</k>", "12: INDEXOFTWELVE 2016-06-30 96.01 put stands twice"},
        {"<oopPf>", "<oofPf/><oopPf>", "8: <oofPf>: instruments of this kind are not known"},
        {"<cc>CASH</cc>", "<cc>C\xDDSH</cc>", "14: <cc> holds no code"},
        {"<chargeMeth>F", "<chargeMeth>W", "18: a spread is charged by method W, only F (a flat charge) is known"},
    };
    for (const auto& [what, instead, complaint] : cases) {
        SCOPED_TRACE(std::string(what) + " -> " + instead);
        const std::string faulty = With(kFile, what, instead);
        EXPECT_EQ(Complaint([&] { Imported(faulty); }), std::string("risk.spn:") + complaint);
    }
    EXPECT_EQ(Complaint([] { Imported("{}"); }), "risk.spn:1: the file holds no XML");
}

TEST(Import, TokensComeFromTheMaster) {
    const std::string master =
        "name,exchange_token,underlying_symbol,instrument_type,strike_price,expiry\r\n"
        "\"Index, \"\"the\"\"\",7001,INDEX,FUT,0.0,2016-06-30\r\n"
        "x,7002,INDEXOFTWELVE,CE,96.0,2016-06-30\n"
        "x,7003,INDEXOFTWELVE,PE,96.0,2016-06-30\n"
        "x,bad,INDEX,EQ,,\n\n";
    const TemporaryFile file(master);
    std::string notes;
    const std::string lines = Imported(kFile, file.name, &notes);
    EXPECT_NE(lines.find("\"token\":7001"), std::string::npos);
    EXPECT_NE(lines.find("\"optionType\":\"CA\",\"token\":7002"), std::string::npos);
    EXPECT_NE(lines.find("28008,\"segment\":16,\"toStaging\":1,\"count\":2"), std::string::npos);
    EXPECT_EQ(notes, file.name + ": 1 of 3 contracts are not in the master and are left out\n");

    const std::tuple<const char*, const char*, const char*> faults[]{
        {"expiry", "ends", "1: no column \"expiry\""},
        {",PE,96.0", ",PE,", "4: \"strike_price\":  will not do"},
        {"2016-06-30", "30-06-2016", "2: \"expiry\": 30-06-2016 will not do"},
        {"x,7003,INDEXOFTWELVE,PE", "x,7003,INDEXOFTWELVE,CE", "4: INDEXOFTWELVE 2016-06-30 96.00 call stands twice"},
    };
    for (const auto& [what, instead, complaint] : faults) {
        const TemporaryFile faulty(With(master, what, instead));
        EXPECT_EQ(Complaint([&] { ReadContractMaster(faulty.name); }), faulty.name + ":" + complaint);
    }
}

using RateImporter = std::string (*)(const ImportOptions&, std::ostream&);
/// The lines and, behind them, what was said; "FILE" stands for the name of either file.
std::string Rates(RateImporter import, const std::string& text, const std::string& master) {
    const TemporaryFile file(text, "rates.csv");
    const TemporaryFile tokens(master, "master.csv");
    std::ostringstream said;
    std::string all;
    try {
        all = import({.file = file.name, .master = master.empty() ? "" : tokens.name}, said);
    } catch (const RunError& error) {
        said << error.what();
    }
    all += said.str();
    for (const std::string& name : {file.name, tokens.name}) {
        for (auto at = all.find(name); at != std::string::npos; at = all.find(name))
            all.replace(at, name.size(), "FILE");
    }
    return all;
}

const std::string kNone;
const std::string kBse = "security_code,symbol,latest_var_plus_elm\n500112,SBIN,14.75\r\n532921,ADANIPORTS,50.00\n";
const std::string kNse =
    "10,20082025,1.2,3\n20,SBIN,EQ,X,10.13,0,10.13,3.5,0,13.63\n20,SBIN,BE,X,1,0,1,0,0,1\n"
    "20,NEW,EQ,X,12.67,0.00,12.67,5.88,0.00,18.55\n";
const std::string kEquityMaster = "exchange_token,trading_symbol,instrument_type\n3045,SBIN,EQ\n3046,SBIN,BE\n";
const std::string kExposure =
    "Sr No.,Symbol,Instrument Type,Total applicable ELM%\n1,ACC,OTH,3.5\n2,ACC,OTM,5.25\n"
    "3,ONE,OTH,13.125\n";
const std::string kContracts =
    "exchange_token,underlying_symbol,instrument_type,strike_price,expiry\n"
    "1,ACC,FUT,0,2025-08-28\n2,ACC,CE,100,2025-08-28\n3,ONE,PE,100,2025-08-28\n"
    "4,NIFTY,FUT,0,2025-08-28\n5,GOLD,FUT,0,2019-06-05\n";
const std::string kMcx =
    "symbol,expiry,close,buy_margin_pct,sell_margin_pct\nCRUDEOIL,18APR2019,4481,8.93,9.5\n"
    "GOLD,05JUN2019,32186,5.25,5.25\n";

TEST(Import, PublishedRatesBecomeTheCallsThatLoadThem) {
    const std::string var = R"({"call":"InitializeMarginInfo","list":[{"token":)";
    const std::string all = R"({"call":"InitializeAllAdditionalMarginInfo","map":[{"exchange":)";
    const std::string mcx = R"({"call":"InitializeMCXMarginInfo","records":[{"token":)";
    EXPECT_EQ(Rates(&ImportVarMargins, kBse, ""),
              var +
                  R"(500112,"marginBasis":1,"marginRate":1475,"exchange":8},)"
                  R"({"token":532921,"marginBasis":1,"marginRate":5000,"exchange":8}]})" +
                  "\n");
    EXPECT_EQ(Rates(&ImportVarMargins, kNse, kEquityMaster),
              var +
                  R"(3045,"marginBasis":1,"marginRate":1363,"exchange":1},)"
                  R"({"token":3046,"marginBasis":1,"marginRate":100,"exchange":1}]})" +
                  "\nFILE: 1 of 3 securities are not in the master and are left out\n");
    EXPECT_EQ(Rates(&ImportExposureMargins, kExposure, kContracts),
              all +
                  R"(2,"token":1,"additionalMarginRate":35000},{"exchange":2,"token":2,"additionalMarginRate":52500},)"
                  R"({"exchange":2,"token":3,"additionalMarginRate":131250}]})" +
                  "\nFILE: 2 of 5 contracts of the master have no rate\n");
    EXPECT_EQ(Rates(&ImportMcxMargins, kMcx, ""),
              mcx +
                  R"(100001,"symbol":"CRUDEOIL","marginBasis":1,"marginRate":9.5,"exchange":16},)"
                  R"({"token":100002,"symbol":"GOLD","marginBasis":1,"marginRate":5.25,"exchange":16}]})" +
                  "\n" + all +
                  R"(16,"token":100001,"longMarginRate":89300,"shortMarginRate":95000},)"
                  R"({"exchange":16,"token":100002,"longMarginRate":52500,"shortMarginRate":52500}]})" +
                  "\n");
    EXPECT_EQ(Rates(&ImportMcxMargins, kMcx, kContracts),
              mcx + R"(5,"symbol":"GOLD","marginBasis":1,"marginRate":5.25,"exchange":16}]})" + "\n" + all +
                  R"(16,"token":5,"longMarginRate":52500,"shortMarginRate":52500}]})" +
                  "\nFILE: 1 of 2 contracts are not in the master and are left out\n");
}

TEST(Import, FaultyRatesAreRefusedAtTheirLine) {
    const struct {
        RateImporter import;
        const std::string &text, &master;
        const char *what, *instead, *complaint;
    } cases[]{
        {&ImportVarMargins, kBse, kNone, "14.75", "-1", "2: \"latest_var_plus_elm\": -1 will not do"},
        {&ImportVarMargins, kBse, kNone, "532921", "500112", "3: 500112 stands twice"},
        {&ImportVarMargins, kNse, kNone, "10,", "10,", " symbols of NSE need a master (--master)"},
        {&ImportVarMargins, kNse, kEquityMaster, ",3\n", ",4\n", "4: 3 securities, but the control line tells of 4"},
        {&ImportVarMargins, kNse, kEquityMaster, ",18.55", "", "4: 9 cells, not 10"},
        {&ImportVarMargins, kNse, kEquityMaster, "20,NEW", "30,NEW", "4: a line of kind 30 is not known"},
        {&ImportExposureMargins, kExposure, kContracts, "OTM", "ITM", "3: ITM is neither OTH nor OTM"},
        {&ImportExposureMargins, kExposure, kContracts, "5.25", "5e9", "3: \"Total applicable ELM%\": 5e9 will not do"},
        {&ImportMcxMargins, kMcx, kNone, "18APR2019", "31APR2019", "2: \"expiry\": 31APR2019 will not do"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.what) + " -> " + c.instead);
        EXPECT_EQ(Rates(c.import, With(c.text, c.what, c.instead), c.master), std::string("FILE:") + c.complaint);
    }
}

const std::string kEquityDay =
    "SYMBOL, SERIES, DATE1, PREV_CLOSE, OPEN_PRICE, HIGH_PRICE, LOW_PRICE, LAST_PRICE, CLOSE_PRICE, AVG_PRICE\n"
    "SCRIP, EQ, 19-Jul-2024, 209.05, 209.00, 233.70, 201.42, 217.00, 216.27, 219.70\n"
    "SCRIP, BE, 19-Jul-2024, 5.00, 0, 0, 0, -, , -\n";
const std::string kFuturesDay =
    "CONTRACT_D,PREVIOUS_S,OPEN_PRICE,HIGH_PRICE,LOW_PRICE,CLOSE_PRIC,SETTLEMENT\n"
    "FUTSTK360ONE26-SEP-2024,1050.005,1051.0000000,1060.0000000,1040.0000000,1045.5000000,1045.0000000\n"
    "FUTIDXNIFTY25-JUL-2024,24800.0000000,0.0000000,0.0000000,0.0000000,,24500.0000000\n";

/// The touchlines of an import, each as "exchange:token last/close".
std::string Touchlines(const std::string& day, const std::string& master = "", std::string* notes = nullptr) {
    const TemporaryFile file(day, "day.csv");
    std::ostringstream said;
    std::istringstream lines(ImportBhavcopy({.file = file.name, .master = master}, said));
    std::string touchlines;
    for (std::string line; std::getline(lines, line);) {
        const Json call = Json::parse(line);
        EXPECT_EQ(call["call"].get<std::string>() + call["compute"].dump(), "AddAndComputeMTM1");
        const Json& t = call["touchline"];
        touchlines += t["exchange"].dump() + ":" + t["token"].dump() + " " + t["lastTradedPrice"].dump() + "/" +
                      t["closePrice"].dump() + "  ";
    }
    if (notes) *notes = said.str();
    return touchlines;
}

TEST(ImportBhavcopy, EachScripGoesFromItsPreviousCloseToItsClose) {
    EXPECT_EQ(Touchlines(kEquityDay),
              "1:1 20905/20905  1:2 500/500  1:1 20900/20905  1:1 23370/20905  1:1 20142/20905  1:1 21627/21627  ");
    EXPECT_EQ(Touchlines(kFuturesDay),
              "2:100001 105001/105001  2:100002 2480000/2480000  "
              "2:100001 105100/105001  2:100001 106000/105001  2:100001 104000/105001  2:100001 104550/104550  ");
    std::string notes;
    const TemporaryFile securities("exchange_token,trading_symbol,instrument_type\n2885,SCRIP,BE\n", "master.csv");
    EXPECT_EQ(Touchlines(kEquityDay, securities.name, &notes), "1:2885 500/500  ");
    EXPECT_EQ(notes, securities.name + ": 1 of 2 scrips are not in the master and are left out\n");
    const TemporaryFile contracts(
        "exchange_token,underlying_symbol,instrument_type,strike_price,expiry\n7,NIFTY,FUT,0,2024-07-25\n",
        "master.csv");
    EXPECT_EQ(Touchlines(kFuturesDay, contracts.name), "2:7 2480000/2480000  ");
}

TEST(ImportBhavcopy, AFaultyDayIsRefusedAtItsLine) {
    const std::tuple<const std::string&, const char*, const char*, const char*> cases[]{
        {kEquityDay, "SCRIP, BE", "SCRIP, EQ", "3: SCRIP EQ stands twice"},
        {kEquityDay, "209.05", "-209.05", "2: \"PREV_CLOSE\": -209.05 will not do"},
        {kEquityDay, "201.42", "0", "2: SCRIP EQ has an open and lacks another price"},
        {kFuturesDay, "FUTSTK360", "OPTSTK360", "2: \"CONTRACT_D\": OPTSTK360ONE26-SEP-2024 will not do"},
        {kFuturesDay, "360ONE26-SEP", "26-SEP", "2: \"CONTRACT_D\": FUTSTK26-SEP-2024 will not do"},
    };
    for (const auto& [day, what, instead, complaint] : cases) {
        const std::string faulty = With(day, what, instead);
        EXPECT_EQ(Complaint([&] { Touchlines(faulty); }), OwnFolder() + "day.csv:" + complaint);
    }
}

TEST(ImportMaster, SecuritiesBecomeTokenRecordsWithTheirCloses) {
    const std::string rows = "exchange_token,trading_symbol,instrument_type\n2885,SCRIP,EQ\n7,ALONGNAMEOFFOURTEEN,GS\n";
    const TemporaryFile master(rows, "master.csv");
    const TemporaryFile day(kEquityDay, "day.csv");
    std::ostringstream notes;
    EXPECT_EQ(ImportMaster({.file = master.name, .closes = day.name}, notes),
              R"({"call":"InitializeTokenInfo","records":[)"
              R"({"token":2885,"exchange":1,"symbol":"SCRIP","series":"EQ","closePrice":21627},)"
              R"({"token":7,"exchange":1,"symbol":"ALONGNAMEOFF","series":"GS"}]})"
              "\n");
    EXPECT_EQ(notes.str(), day.name + ": 1 of 2 securities have no close\n");
    const TemporaryFile faulty(With(rows, "trading_symbol", "underlying_symbol"), "faulty.csv");
    EXPECT_EQ(Complaint([&] { ReadSecurityMaster(faulty.name); }),
              faulty.name + ":1: this is a master of contracts, not of cash securities");
}

}  // namespace
}  // namespace survhost
