#pragma once

#include "platform/web_view.h"

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// A page that writes statements down and answers when the test says so.
struct RecordingWebView : WebView {
    void setObserver(WebViewObserver* newObserver) override { observer = newObserver; }
    void loadPage(const std::filesystem::path& page) override { loaded.push_back(page); }
    void evaluate(std::string_view statement, Completion completion) override {
        statements.emplace_back(statement);
        if (completion) waiting.push_back(std::move(completion));
    }

    /// Answers the oldest statement that waits for its result.
    void answer(const std::optional<scriptValue>& result) {
        const Completion completion = std::move(waiting.front());
        waiting.pop_front();
        completion(result);
    }
    /// Answers the newest one.
    void answerLast(const std::optional<scriptValue>& result) {
        const Completion completion = std::move(waiting.back());
        waiting.pop_back();
        completion(result);
    }
    void fail() { answer(std::nullopt); }
    /// The user types: the page reports it and then answers with its new text.
    void type(const std::string& text) {
        report();
        answer(text);
    }
    void report() { observer->messageReceived("callback", "stringChanged"); }

    std::vector<std::string> taken() { return std::exchange(statements, {}); }

    WebViewObserver* observer = nullptr;
    std::vector<std::filesystem::path> loaded;
    std::vector<std::string> statements;
    std::deque<Completion> waiting;
};

} // namespace tessaril::testing
