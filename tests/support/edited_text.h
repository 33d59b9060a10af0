#pragma once

#include "editor/wk_ace_view.h"
#include "events/notification_names.h"
#include "support/recording_web_view.h"

#include <string>
#include <vector>

namespace tessaril::testing {

/// An editor over a stand-in page, and a journal of the changes that it reports.
struct EditedText : WKAceViewDelegate {
    explicit EditedText(const std::string& text = "") {
        view.setDelegate(this);
        if (text.empty()) return;
        view.setString(text);
        page.answer(text);
        page.taken();
    }

    void textDidChange(const notification& changed) override {
        if (changed.object == &view) changes.push_back("told " + view.string());
    }

    RecordingWebView page;
    NotificationCenter center;
    UndoManager undo;
    WKAceView view{page, center, undo};
    std::vector<std::string> changes;
    NotificationCenter::Subscription subscription =
        center.observe(notifications::ACEDidChange, [this](const notification& posted) {
            if (posted.object == &view) changes.push_back("posted " + view.string());
        });
};

} // namespace tessaril::testing
