#pragma once

#include "import/imported_style.h"
#include "support/recording_icons.h"
#include "support/store_machine.h"

namespace tessaril::testing {

/// A store in memory with the list that imports look at.
struct ImportMachine : StoreMachine<> {
    importSurroundings importing() {
        return {alerts,
                dispatcher,
                center,
                store,
                list,
                {[this] { return store.generateUniqueID(); }, compile},
                [this](styleContainer&) { return [this] { ++toldOfErrors; }; }};
    }

    int toldOfErrors = 0;
    RecordingIcons icons;
    StyleList list{store, center, dispatcher, icons};
};

} // namespace tessaril::testing
