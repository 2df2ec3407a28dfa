#pragma once

#include <stdexcept>
#include <string>

namespace survhost {

/// A fault of the script, in words that fit behind "FILE:LINE: ". Nothing was called for its line.
class ScriptError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The run can't go on. The text is whole and goes to standard error; the exit status is 2.
class RunError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace survhost
