#pragma once

#include "platform/alerts.h"

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// Alerts that are written down; questions are answered from a list.
struct RecordingAlerts : Alerts {
    struct shown {
        std::string title;
        std::string text;
        bool operator==(const shown&) const = default;
    };

    void showAlert(std::string_view title, std::string_view text) override {
        const std::lock_guard lock(mutex);
        alerts.push_back({std::string(title), std::string(text)});
    }
    /// A question that no answer was laid out for is closed, which picks its last button.
    alertAnswer ask(const alertQuestion& question) override {
        questions.push_back(question);
        if (whileAsking) whileAsking();
        if (answers.empty()) return {static_cast<int>(question.buttons.size()) - 1, false};
        const alertAnswer answer = answers.front();
        answers.pop_front();
        return answer;
    }
    void beep() override { ++beeps; }

    /// The titles of the alerts so far, which are forgotten.
    std::vector<std::string> taken() {
        std::vector<std::string> titles;
        for (const shown& alert : std::exchange(alerts, {}))
            titles.push_back(alert.title);
        return titles;
    }

    std::vector<shown> alerts;
    std::vector<alertQuestion> questions;
    std::deque<alertAnswer> answers;
    int beeps = 0;
    std::function<void()> whileAsking; ///< what happens while a question is open
    std::mutex mutex;
};

} // namespace tessaril::testing
