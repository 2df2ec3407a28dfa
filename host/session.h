#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace survhost {

/// The host's side of the library for as long as a run lasts: its window, its clock, and what the host must remember
/// to know whose a row is. The library is one for the process, so there is one session at a time.
class Session {
 public:
    /// Opens the window: from here on the texts of the library are kept.
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Fixes the clock of the library.
    void SetClock(std::int64_t now);
    /// Nothing while the real clock runs.
    [[nodiscard]] std::optional<std::int64_t> Now() const { return now_; }

    /// The texts sent to the window since the last call of this.
    [[nodiscard]] std::vector<std::string> TakeNotifications();

    // The settings that decide whose a row is, as the calls leave them.

    /// A start that is refused because the library runs already changes nothing and takes no row.
    [[nodiscard]] bool Started() const { return started_; }
    void SetStarted(bool started) { started_ = started; }
    void SetPositionMode(std::int16_t mode) { positionMode_ = mode; }
    void SetOrderBased(std::int16_t value) { orderBased_ = value; }

    /// Limit rows in a list are the library's own.
    [[nodiscard]] bool LiveRows() const { return positionMode_ == 2 || positionMode_ == 3; }
    /// A start keeps the rows that it is handed; else it deletes each one and takes it off the list.
    [[nodiscard]] bool StartAdoptsRows() const { return LiveRows() || orderBased_ == 1; }

 private:
    static void Receive(void* session, unsigned message, unsigned wParam, const char* text);
    static std::int64_t Clock(void* session);

    std::optional<std::int64_t> now_;
    std::vector<std::string> notifications_;
    bool started_ = false;
    std::int16_t positionMode_ = 0;
    std::int16_t orderBased_ = 0;
};

}  // namespace survhost
