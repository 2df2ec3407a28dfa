#pragma once

#include <algorithm>
#include <cstring>

#include "platform/fixed_text.h"

namespace surv {

/// A code in a buffer of the caller's that a query may write into: trimmed, or another code. The buffer takes only what
/// fits the text that was there; the work goes on with the whole text.
class CCodeArgument {
 public:
    /// width: how far the buffer is read at most.
    CCodeArgument(char* buffer, std::size_t width)
        : text_(HostText(buffer, width)), buffer_(buffer), room_(text_.View().size()) {}

    [[nodiscard]] std::string_view View() const { return text_.View(); }
    void Trim() { Write(Trimmed(View())); }
    /// A buffer that holds the code already isn't written to.
    void Write(std::string_view code) {
        if (code == View()) return;
        text_ = FixedText<32>{code};
        const std::string_view text = View();
        const std::size_t length = std::min(text.size(), room_);
        if (length != 0) std::memcpy(buffer_, text.data(), length);
        if (length < room_) buffer_[length] = '\0';
    }

 private:
    FixedText<32> text_;
    char* buffer_;
    std::size_t room_;  // characters; the text's end isn't counted
};

/// Whose positions are asked for. A group is at most as long as in a row, and so is an account.
struct HolderCodes {
    CCodeArgument group;
    CCodeArgument account;
};

}  // namespace surv
