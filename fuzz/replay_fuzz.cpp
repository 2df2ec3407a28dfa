// The reader of replay scripts: any text is played, or refused with the line that is at fault.

#include <unistd.h>

#include <sstream>

#include "input.h"
#include "replay.h"
#include "script_error.h"
#include "surveillance/host.h"

namespace {

/// Sees the answers as a host writes them.
std::string Answers(std::string_view script) {
    std::ostringstream out;
    survhost::AnswerWriter answers(out);
    survhost::Replay replay({&answers});
    std::istringstream lines{std::string(script)};
    try {
        replay.Play(lines, "script");
    } catch (const survhost::RunError& error) {
        out << error.what();
    }
    // A failed start leaves the library half loaded, and only a started one can be cleaned up.
    CPtrList none;
    if (!replay.GetSession().Started()) InitializeSurvManager(&none, &none, 0, 0, 0, 0, 0, 0, 0, &none, &none, &none);
    CleanupSurvManager();
    SetOrderBasedPosition(0);
    return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool away = ::chdir("/proc/self") == 0;  // the library's logs are not wanted
    return away && Answers(fuzz::CInput(data, size).Rest()).size() > std::size_t{1} << 30 ? -1 : 0;
}
