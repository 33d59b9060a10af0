#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

enum class alertStyle { warning, critical };

struct alertQuestion {
    std::string title;
    std::string text;
    std::vector<std::string> buttons; ///< in order; the first is the default
    alertStyle style = alertStyle::warning;
    std::optional<int> destructiveButton = std::nullopt; ///< shown as such where buttons are marked
    std::optional<int> closingButton = std::nullopt;     ///< where it is not as `alertAnswer` says
    bool offersSuppression = false; ///< show the check box that turns the message off

    bool operator==(const alertQuestion&) const = default;
};

struct alertAnswer {
    /// Index into the buttons; closing the alert picks the last, or the first where the last is
    /// destructive.
    int button = 0;
    bool suppressed = false; ///< the check box was ticked
};

class Alerts {
public:
    virtual ~Alerts() = default;

    /// A modal warning with the one button "OK". Returns at once and shows on the main thread; may
    /// be called from any thread.
    virtual void showAlert(std::string_view title, std::string_view text) = 0;

    /// Asks and waits for the answer. Main thread only.
    virtual alertAnswer ask(const alertQuestion& question) = 0;

    /// The system's alert sound. Main thread only.
    virtual void beep() = 0;
};

} // namespace tessaril
