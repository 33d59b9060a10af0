#pragma once

#include "platform/compiler_errors.h"
#include "platform/dispatcher.h"

namespace tessaril {

/// Opens a window of its own for every compiler error.
class CompilerErrorWindows : public CompilerErrors {
public:
    /// `dispatcher` must live longer.
    explicit CompilerErrorWindows(Dispatcher& dispatcher);

    void show(compilerError error) override;

private:
    Dispatcher& dispatcher;
};

} // namespace tessaril
