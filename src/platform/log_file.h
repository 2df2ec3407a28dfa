#pragma once

#include <string>

#include "platform/clock.h"

namespace surv {

/// "SurvDllLog_", the local time, ".log": a plain name in the working directory.
[[nodiscard]] std::string SurvLogFileName(const CClock& clock);

/// Appends a line, composed beforehand, and closes the file at once. A file that can't be opened loses the line.
void AppendLogLine(const std::string& fileName, const std::string& line);

}  // namespace surv
