#pragma once

namespace surv {

/// The host's main window, where every text of the library goes.
class CHostWindow {
 public:
    using Function = void (*)(void* context, unsigned message, unsigned wParam, const char* text);

    void Set(Function window, void* context) {
        window_ = window;
        context_ = context;
    }
    /// Synchronous; without a window the text is dropped.
    void Notify(const char* text) const {
        if (window_) window_(context_, kMessage, kWParam, text);
    }

 private:
    static constexpr unsigned kMessage = 1131;
    static constexpr unsigned kWParam = 5;

    Function window_ = nullptr;
    void* context_ = nullptr;
};

inline constexpr const char* kNotEnoughMemory = "Not Enough memory";

}  // namespace surv
