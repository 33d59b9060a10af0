#pragma once

#include "events/notification_names.h"
#include "store/style_list_commands.h"
#include "support/recording_icons.h"
#include "support/store_machine.h"

#include <string>
#include <utility>
#include <vector>

namespace tessaril::testing {

/// A style list with its commands over a store in memory. As the list's window it writes down what
/// it is told.
struct ListMachine : StoreMachine<>, StyleListObserver {
    ~ListMachine() override { list.setObserver(nullptr); }

    /// Puts styles named by one letter each into the database, with identifiers from 1, and opens
    /// the list.
    void begin(std::string_view letters) {
        std::vector<styleContainer> styles;
        for (const char letter : letters)
            styles.push_back(
                namedStyle(std::string(1, letter), static_cast<std::int64_t>(styles.size()) + 1));
        putDocument(std::move(styles));
        list.setObserver(this);
        told.clear();
    }

    void rowsWillReset() override {}
    void rowsReset() override { told.emplace_back("reset"); }
    void rowsWillChange(const rowsChange&) override {}
    void rowsChanged(const rowsChange& change) override {
        told.push_back((change.what == rowsChange::kind::insertion ? "insert "
                        : change.what == rowsChange::kind::removal ? "remove "
                                                                   : "move ") +
                       std::to_string(change.first) + "-" + std::to_string(change.last));
    }
    void rowChanged(std::size_t row) override { told.push_back("draw " + std::to_string(row)); }
    void selectRows(const std::vector<std::size_t>& rows) override {
        for (const std::size_t row : rows)
            told.push_back("select " + std::to_string(row));
    }
    void lockChanged() override { told.emplace_back("lock"); }

    std::vector<std::string> tellings() {
        dispatcher.runAll();
        return std::exchange(told, {});
    }

    /// The first letters of the rows, which the live database has to hold in the same order.
    std::string shown() const {
        std::string letters;
        for (const auto& row : list.styles())
            letters += row->name.substr(0, 1);
        return letters;
    }
    std::string stored() {
        std::string letters;
        for (const std::string& name : names())
            letters += name.substr(0, 1);
        return letters;
    }
    std::string checked() {
        std::string letters;
        for (const auto& row : list.styles())
            if (row->isEnabled) letters += row->name;
        return letters;
    }

    RecordingIcons icons;
    StyleList list{store, center, dispatcher, icons};
    UndoManager undoManager;
    OpenStyles openStyles{center};
    StyleIDs updatingStyles, openProperties;
    StyleListCommands commands{{store, list, center, dispatcher, alerts, undoManager, openStyles,
                                updatingStyles, openProperties}};
    std::vector<std::string> told;
};

} // namespace tessaril::testing
