#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tessaril {

struct notification {
    using infoValue = std::variant<std::int64_t, std::string, std::vector<std::int64_t>>;

    std::string_view name; ///< one of notification_names.h
    std::map<std::string, infoValue, std::less<>> userInfo = {};
    const void* object = nullptr; ///< what it is about, where that is one object among several

    bool operator==(const notification&) const = default;

    /// What `userInfo` holds under the key; null where that is nothing, or of another type.
    template <typename Value>
    const Value* info(std::string_view key) const {
        const auto found = userInfo.find(key);
        return found == userInfo.end() ? nullptr : std::get_if<Value>(&found->second);
    }

    /// The style that the notification is about, where it names one.
    std::optional<std::int64_t> id() const;
};

/// The application's event bus. Safe to use from any thread; handlers run on the posting thread,
/// in the order in which they subscribed, and may subscribe, unsubscribe and post themselves.
class NotificationCenter {
public:
    using Handler = std::function<void(const notification&)>;

    /// Keeps its handler subscribed until it is destroyed; must not outlive the center. A delivery
    /// that another thread has begun by then still reaches the handler.
    class [[nodiscard]] Subscription {
    public:
        Subscription() = default;
        Subscription(NotificationCenter& center, std::uint64_t token);
        Subscription(Subscription&& other) noexcept;
        Subscription& operator=(Subscription&& other) noexcept;
        ~Subscription();

    private:
        NotificationCenter* center = nullptr;
        std::uint64_t token = 0;
    };

    Subscription observe(std::string_view name, Handler handler);

    void post(const notification& posted);
    void post(std::string_view name) { post(notification{name}); }
    void post(std::string_view name, std::int64_t id) { post(notification{name, {{"id", id}}}); }

private:
    struct observer {
        std::uint64_t token;
        std::string_view name;
        std::shared_ptr<Handler> handler;
    };

    void remove(std::uint64_t token);

    std::mutex mutex;
    std::vector<observer> observers;
    std::uint64_t lastToken = 0;
};

} // namespace tessaril
