// survhost, the reference host: plays scripts of calls on the library and shows what came of them.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "bhavcopy.h"
#include "demo.h"
#include "import_margins.h"
#include "import_span.h"
#include "pretty.h"
#include "replay.h"
#include "script_error.h"
#include "summary.h"
#include "surveillance/codes.h"

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;   ///< the fault isn't the caller's
constexpr int kMisused = 2;  ///< the command line or the script is at fault

constexpr const char* kExitStatuses = R"(Exit status:
  0  done
  1  failed, and not by what was asked
  2  the command line, a script or a file is at fault; standard error says where

Example: survhost demo)";

struct ReplayOptions {
    std::vector<std::string> files;
    bool pretty = false;
    bool json = false;  ///< the default, said aloud
    bool summary = false;
};

/// Beside the executable, installed or in its build folder.
std::string ExamplesFolder() {
    std::error_code failed;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", failed);
    return (executable.parent_path() / SURVHOST_EXAMPLES_FROM_BIN).lexically_normal().string();
}

survhost::Painter PainterOfOutput(bool plain) {
    return survhost::Painter(!plain && survhost::WantsColour(STDOUT_FILENO));
}

/// Bytes of all scripts; 0 when that can't be known ahead.
std::size_t TotalBytes(const std::vector<std::string>& files) {
    std::size_t total = 0;
    for (const std::string& file : files) {
        std::error_code failed;
        const auto size = std::filesystem::file_size(file, failed);
        if (failed) return 0;
        total += size;
    }
    return total;
}

/// A bar only where it doesn't run into the answers.
bool WantsProgressBar() { return survhost::IsTerminal(STDERR_FILENO) && !survhost::IsTerminal(STDOUT_FILENO); }

void RunReplay(const ReplayOptions& options, const survhost::Painter& painter) {
    survhost::AnswerWriter answers(std::cout);
    survhost::PrettyPrinter pretty(std::cout, painter);
    survhost::Summary summary;
    std::vector<survhost::Observer*> observers{options.pretty ? static_cast<survhost::Observer*>(&pretty) : &answers};
    if (options.summary) observers.push_back(&summary);
    std::optional<survhost::ProgressBar> progress;
    const std::size_t total = TotalBytes(options.files);
    if (WantsProgressBar() && total > 0) observers.push_back(&progress.emplace(std::cerr, total));

    survhost::Replay replay(observers);
    replay.PlayFiles(options.files);
    progress.reset();
    if (!options.summary) return;
    // Answers are JSON to the last line; the summary then goes where people look.
    std::ostream& out = options.pretty ? std::cout : std::cerr;
    summary.Print(out, replay.GetSession(), options.pretty ? painter : survhost::Painter(false));
}

/// The example day is one of the Indian exchanges: unless the user has a time zone set, it is shown in theirs.
void RunDemo(const survhost::DemoOptions& options, const survhost::Painter& painter) {
    constexpr int kKeepTheUsers = 0;
    ::setenv("TZ", "IST-5:30", kKeepTheUsers);
    ::tzset();
    survhost::PlayDemo(options, std::cout, painter);
}

/// One command under `import` for each kind of file. An import gives its lines when it has them all: of a file with a
/// fault nothing is written that could be taken for the whole.
void AddImports(CLI::App& app, survhost::ImportOptions& options) {
    CLI::App* import = app.add_subcommand("import", "Write a published file as script lines for replay.");
    import->require_subcommand(1);
    import->footer("Example: survhost import span FILE | survhost replay - day.jsonl");
    CLI::App* span = import->add_subcommand("span", "A risk parameter file in XML, format 4.00.");
    span->add_option("FILE", options.file, "The risk parameter file")->required();
    span->add_option("--master", options.master, "Contract master (CSV) to take the contracts' tokens from");
    span->add_option("--segment", options.segment, "Exchange mask that the file belongs to")
        ->check(CLI::IsMember({surv::kMaskNseDerivatives, surv::kMaskBseDerivatives, surv::kMaskMcx, surv::kMaskNcdex}))
        ->capture_default_str();
    span->footer("Example: survhost import span risk.spn --master contracts.csv > risk.jsonl");
    span->callback([&options] { std::cout << survhost::ImportSpan(options, std::cerr); });

    using Importer = std::string (*)(const survhost::ImportOptions&, std::ostream&);
    const auto addRates = [&](const char* name, const char* about, const char* master, const char* example,
                              Importer importer) {
        CLI::App* rates = import->add_subcommand(name, about);
        rates->add_option("FILE", options.file, "The file of rates")->required();
        rates->add_option("--master", options.master, master);
        rates->footer(std::string("Example: survhost import ") + example);
        rates->callback([&options, importer] { std::cout << importer(options, std::cerr); });
    };
    addRates("var", "VaR margins of equity: NSE's lines or BSE's columns.", "Equity master (CSV), for NSE",
             "var var.csv --master equities.csv > rates.jsonl", &survhost::ImportVarMargins);
    addRates("exposure", "Exposure margins of NSE derivatives by symbol (CSV).", "Contract master (CSV)",
             "exposure ael.csv --master contracts.csv > rates.jsonl", &survhost::ImportExposureMargins);
    addRates("mcx", "MCX margins by contract (CSV).", "Contract master (CSV) to take the tokens from",
             "mcx margin.csv > rates.jsonl", &survhost::ImportMcxMargins);
    CLI::App* day = import->add_subcommand("bhavcopy", "A day file of NSE equity or futures, as touchlines.");
    day->add_option("FILE", options.file, "The day file (CSV)")->required();
    day->add_option("--master", options.master, "Instrument master (CSV) to take the tokens from");
    day->footer("Example: survhost import bhavcopy day.csv --master instruments.csv > ticks.jsonl");
    day->callback([&options] { std::cout << survhost::ImportBhavcopy(options, std::cerr); });

    CLI::App* master = import->add_subcommand("master", "A master of NSE equity, as token records.");
    master->add_option("FILE", options.file, "The instrument master (CSV)")->required();
    master->add_option("--closes", options.closes, "Day file of equity to take closes from");
    master->footer("Example: survhost import master instruments.csv --closes day.csv > tokens.jsonl");
    master->callback([&options] { std::cout << survhost::ImportMaster(options, std::cerr); });
}

/// What is wrong, and the usage of the command meant.
int Misuse(const CLI::App& app, const CLI::ParseError& error) {
    std::cerr << "survhost: " << error.what() << "\n\n" << app.help();
    return kMisused;
}

int Run(int argc, char** argv) {
    CLI::App app("The reference host of the surveillance library.", "survhost");
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", std::string("survhost " SURVHOST_VERSION));
    app.footer(kExitStatuses);
    bool plain = false;
    app.add_flag("--no-color", plain,
                 "Write no colours, which otherwise a terminal gets; as NO_COLOR in the environment");

    ReplayOptions replay;
    CLI::App* replayCommand = app.add_subcommand("replay", "Play scripts, one JSON call a line; write the answers.");
    replayCommand->add_option("FILE", replay.files, "Scripts, played in turn; - is standard input")->required();
    CLI::Option* pretty = replayCommand->add_flag("--pretty", replay.pretty, "Write lines for people");
    replayCommand->add_flag("--json", replay.json, "Write the answers as JSON, one a line: the default")
        ->excludes(pretty);
    replayCommand->add_flag("--summary", replay.summary, "Tell at the end what was refused and which limits are used");
    replayCommand->footer("Example: survhost replay --pretty --summary day.jsonl");

    survhost::DemoOptions demo{.examples = ExamplesFolder()};
    CLI::App* demoCommand = app.add_subcommand("demo", "Play the example day and show it.");
    demoCommand->add_option("--examples", demo.examples, "Folder that holds day.jsonl")->capture_default_str();
    CLI::Option* all = demoCommand->add_flag("--all", demo.all, "Show every order");
    demoCommand->add_flag("--json", demo.json, "Write the answers as JSON, one a line, as replay does")->excludes(all);
    demoCommand->footer("Example: survhost demo --all");

    survhost::ImportOptions import;
    AddImports(app, import);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return Misuse(app, error);
    }
    if (replayCommand->parsed()) RunReplay(replay, PainterOfOutput(plain || !replay.pretty));
    if (demoCommand->parsed()) RunDemo(demo, PainterOfOutput(plain));
    return std::cout.flush() ? kDone : kFailed;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const survhost::RunError& error) {
        std::cerr << error.what() << '\n';
        return kMisused;
    } catch (const std::exception& error) {
        std::cerr << "survhost: " << error.what() << '\n';
        return kFailed;
    }
}
