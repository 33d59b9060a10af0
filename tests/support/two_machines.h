#pragma once

#include "support/captured_log.h"
#include "support/memory_records.h"
#include "support/sync_machine.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tessaril::testing {

inline const recordID databaseID{"styleDatabase", "styleDatabase"};
inline const recordID preferencesID{"preferences", "preferences"};

struct MachineInMemory : SyncMachine<> {
    explicit MachineInMemory(MemoryRecordServer& server)
        : SyncMachine(std::make_unique<MemoryRecordStore>(server)) {}
    MemoryRecordStore& records() { return static_cast<MemoryRecordStore&>(*recordStore); }
};

/// Two machines of one user, and the records that they share.
struct TwoMachines : ::testing::Test {
    /// Lets everything that was begun come to its end.
    void settle() {
        for (bool any = true; any;) {
            any = server.deliverNext();
            for (MachineInMemory* machine : {&a, &b}) {
                any |= !machine->dispatcher.mainTasks.empty() ||
                       !machine->dispatcher.backgroundTasks.empty();
                machine->dispatcher.runAll();
            }
        }
    }
    /// Both hold style 1, and are idle.
    void beginWithOneStyle() {
        a.putDocument({namedStyle("One", 1)});
        a.switchOn();
        settle();
        b.switchOn();
        settle();
        a.takeHeard();
        b.takeHeard();
    }
    styleDatabase inCloud() { return decodeDatabase(*server.records.at(databaseID).file).value(); }
    std::vector<std::string> namesInCloud() {
        std::vector<std::string> names;
        for (const auto& style : inCloud().styles)
            names.push_back(style.styleData.name);
        return names;
    }

    CapturedLog log;
    MemoryRecordServer server;
    MachineInMemory a{server}, b{server};
};

} // namespace tessaril::testing
