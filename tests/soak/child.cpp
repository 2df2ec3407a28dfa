#include "child.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>

namespace soak {
namespace {

constexpr unsigned kMostSeconds = 120;
constexpr int kFailed = 3;

void Write(int pipe, const Json& line) {
    std::string text;
    survhost::WriteJson(line, text);
    text += '\n';
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t wrote = ::write(pipe, text.data() + done, text.size() - done);
        if (wrote <= 0) ::_exit(kFailed);
        done += static_cast<std::size_t>(wrote);
    }
}

[[noreturn]] void Run(int pipe, const std::function<void(const Say& say)>& work) {
    ::alarm(kMostSeconds);
    ::setenv("TZ", kTimeZone, 1);
    ::tzset();
    try {
        work([pipe](const Json& line) { Write(pipe, line); });
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        ::_exit(kFailed);
    }
#ifdef SURVEILLANCE_COVERAGE
    std::exit(0);  // which writes the counts of lines
#else
    ::_exit(0);
#endif
}

}  // namespace

ChildEnd InChild(const std::function<void(const Say& say)>& work) {
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    std::fflush(nullptr);  // so that no child says again what is said
    const pid_t child = ::fork();
    if (child < 0) std::abort();
    if (child == 0) {
        ::close(ends[0]);
        Run(ends[1], work);
    }
    ::close(ends[1]);
    std::string text;
    std::vector<char> buffer(1 << 16);
    for (ssize_t got = 0; (got = ::read(ends[0], buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<std::size_t>(got));
    }
    ::close(ends[0]);
    ChildEnd end;
    std::size_t from = 0;
    for (std::size_t to = 0; (to = text.find('\n', from)) != std::string::npos; from = to + 1) {
        end.said.push_back(Json::parse(text.substr(from, to - from)));
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) end.died = "signal " + std::to_string(WTERMSIG(status));
    if (WIFEXITED(status) && WEXITSTATUS(status) != 0) end.died = "exit " + std::to_string(WEXITSTATUS(status));
    return end;
}

}  // namespace soak
