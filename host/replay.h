#pragma once

#include <cstdint>
#include <fstream>
#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "json_record.h"
#include "session.h"

namespace survhost {

/// A call of the script and what came of it.
struct Played {
    const Json& line;
    const Json& answer;
    std::optional<std::int64_t> now;  ///< of the fixed clock
};

/// Sees every call that a replay makes, in order.
class Observer {
 public:
    virtual ~Observer() = default;
    /// A call is about to be made.
    virtual void BeforeCall(const Json& /*line*/) {}
    virtual void OnCall(const Played& played) = 0;
    /// After each line, calls or not: how many bytes of the scripts have been read.
    virtual void OnProgress(std::size_t /*bytes*/) {}
};

/// Writes each answer as one line of JSON, at once: what a script has done is known even if it ends badly.
class AnswerWriter : public Observer {
 public:
    explicit AnswerWriter(std::ostream& out) : out_(out) {}
    void OnCall(const Played& played) override;

 private:
    std::ostream& out_;
};

/// Plays scripts, one after the other, on the one library of the process.
class Replay {
 public:
    explicit Replay(std::vector<Observer*> observers) : observers_(std::move(observers)) {}

    /// Plays a script to its end. Throws RunError with file and line at the first line that can't be played.
    void Play(std::istream& script, const std::string& name);
    /// Plays the files in turn; "-" is standard input. None is played if one of them can't be read.
    void PlayFiles(const std::vector<std::string>& files);

    [[nodiscard]] Session& GetSession() { return session_; }

 private:
    void PlayLine(const std::string& text);

    Session session_;
    std::vector<Observer*> observers_;
    std::size_t bytes_ = 0;
};

/// Opens a script. Throws RunError when it isn't a file that can be read.
std::ifstream OpenScript(const std::string& name);

}  // namespace survhost
