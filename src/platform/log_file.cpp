#include "platform/log_file.h"

#include <cstdio>
#include <memory>

#include "platform/format.h"

namespace surv {

std::string SurvLogFileName(const CClock& clock) {
    const std::tm now = clock.LocalNow();
    return Format("SurvDllLog_%uY%02uM%02uD~%02uh%02um%02us.log", static_cast<unsigned>(now.tm_year) + 1900U,
                  static_cast<unsigned>(now.tm_mon + 1), static_cast<unsigned>(now.tm_mday),
                  static_cast<unsigned>(now.tm_hour), static_cast<unsigned>(now.tm_min),
                  static_cast<unsigned>(now.tm_sec));
}

void AppendLogLine(const std::string& fileName, const std::string& line) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(fileName.c_str(), "at"), &std::fclose);
    if (file) std::fwrite(line.data(), 1, line.size(), file.get());
}

}  // namespace surv
