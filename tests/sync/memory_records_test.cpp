#include "support/memory_records.h"
#include "support/record_store_suite.h"

namespace tessaril::testing {
namespace {

struct StandInServer {
    std::unique_ptr<RecordStore> client() { return std::make_unique<MemoryRecordStore>(server); }
    void deliver() { server.deliver(); }
    void stop() {
        for (MemoryRecordStore* machine : server.machines)
            machine->errors.assign(100, recordErrorCode::unreachable);
    }
    void start() {
        for (MemoryRecordStore* machine : server.machines)
            machine->errors.clear();
    }

    MemoryRecordServer server;
};

INSTANTIATE_TYPED_TEST_SUITE_P(StandIn, RecordStoreSuite, StandInServer);

} // namespace
} // namespace tessaril::testing
