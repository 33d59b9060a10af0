#pragma once

#include "platform/alerts.h"
#include "platform/dispatcher.h"
#include "platform/preference_store.h"
#include "platform/url_loader.h"

#include <cstdlib>

// A machine on which nothing happens besides what is measured.
namespace tessaril::bench {

/// An alert would be a fault of the benchmark.
class NoAlerts : public Alerts {
    void showAlert(std::string_view, std::string_view) override { std::abort(); }
    alertAnswer ask(const alertQuestion&) override { std::abort(); }
    void beep() override { std::abort(); }
};

/// Tasks are asked for, but not carried out, so that the calling thread's share shows.
class NoBackground : public Dispatcher {
    void onMain(Task) override {}
    void onMainAfter(std::chrono::milliseconds, Task) override {}
    void inBackground(taskPriority, Task) override {}
};

class NoPreferences : public PreferenceStore {
    std::optional<preferenceValue> value(std::string_view, const preferenceValue&) const override {
        return std::nullopt;
    }
    void setValue(std::string_view, const preferenceValue&) override {}
    void removeValue(std::string_view) override {}
};

class NoNetwork : public UrlLoader {
    std::optional<urlResponse> load(const urlRequest&) override { return std::nullopt; }
    void cancelAll() override {}
};

} // namespace tessaril::bench
