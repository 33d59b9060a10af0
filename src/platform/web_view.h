#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tessaril {

/// A script value as it crosses from the page. `std::monostate` stands for everything that is not
/// one of the other types.
using scriptValue = std::variant<std::monostate, bool, double, std::string>;

/// What a web view tells its owner. All on the main thread.
class WebViewObserver {
public:
    virtual ~WebViewObserver() = default;

    /// The page has loaded; statements now find its globals.
    virtual void navigationFinished() = 0;

    /// The page could not be loaded; there is none.
    virtual void pageNotLoaded() = 0;

    /// The page posted `body` to the message handler of that name.
    virtual void messageReceived(std::string_view handler, const scriptValue& body) = 0;

    /// The page is gone with what it held: the process behind it has ended, or it was left. It can
    /// be loaded anew.
    virtual void pageLost() = 0;
};

/// A page in an embedded browser engine. Main thread only; the page runs in a process of its own,
/// so every statement is asynchronous. Statements run in the order in which they were given.
class WebView {
public:
    /// Takes the statement's value; nothing where it threw, could not be parsed, gave `undefined`,
    /// or where its page is gone.
    using Completion = std::function<void(const std::optional<scriptValue>&)>;

    virtual ~WebView() = default;

    /// Nothing to stop telling. Completions that are still under way are not called any more once
    /// the view is gone.
    virtual void setObserver(WebViewObserver* observer) = 0;

    /// Loads a page of the application's own files. `page` is an absolute path.
    virtual void loadPage(const std::filesystem::path& page) = 0;

    /// Evaluates `statement`, UTF-8, in the page's global scope.
    virtual void evaluate(std::string_view statement, Completion completion = {}) = 0;
};

} // namespace tessaril
