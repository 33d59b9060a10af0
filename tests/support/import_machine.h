#pragma once

#include "events/notification_names.h"
#include "import/imported_style.h"
#include "less_imports/importing_compiler.h"
#include "support/recording_icons.h"
#include "support/store_machine.h"

namespace tessaril::testing {

inline const std::string block = "@-moz-document domain(\"a.example\") { b { color: red } }";
inline const std::string lessStyle =
    "/* ==UserStyle==\n@preprocessor less\n==/UserStyle== */\n" + block;

/// A store in memory with the list that imports look at.
struct ImportMachine : StoreMachine<> {
    importSurroundings importing() {
        return {alerts,
                dispatcher,
                center,
                store,
                list,
                {[this] { return store.generateUniqueID(); }, compile},
                [this](styleContainer& style) {
                    reachedOwnNetwork = mayImportFromOwnNetwork(style);
                    return [this] { ++toldOfErrors; };
                }};
    }

    /// The last style, or an empty one.
    styleContainer last() {
        const liveDatabase live = store.snapshot();
        return live.styles.empty() ? styleContainer() : *live.styles.back();
    }

    int toldOfErrors = 0, announced = 0;
    bool reachedOwnNetwork = false; ///< whether the last style that was compiled may
    NotificationCenter::Subscription subscription =
        center.observe(notifications::addLatestStyle, [this](const auto&) { ++announced; });
    RecordingIcons icons;
    StyleList list{store, center, dispatcher, icons};
};

} // namespace tessaril::testing
