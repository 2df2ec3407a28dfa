#include "session.h"

#include <utility>

#include "surveillance/host.h"

namespace survhost {

Session::Session() { SetHostWindow(&Session::Receive, this); }

Session::~Session() {
    SetHostWindow(nullptr, nullptr);
    SetHostClock(nullptr, nullptr);
}

void Session::SetClock(std::int64_t now) {
    now_ = now;
    SetHostClock(&Session::Clock, this);
}

std::vector<std::string> Session::TakeNotifications() { return std::exchange(notifications_, {}); }

/// The text is good only during the call, so it is copied.
void Session::Receive(void* session, unsigned /*message*/, unsigned /*wParam*/, const char* text) {
    static_cast<Session*>(session)->notifications_.emplace_back(text ? text : "");
}

std::int64_t Session::Clock(void* session) { return static_cast<Session*>(session)->now_.value_or(0); }

}  // namespace survhost
