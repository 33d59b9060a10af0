#include "windows/compiler_error_windows.h"

#include "windows/prepro_error_controller.h"

#include <utility>

namespace tessaril {

CompilerErrorWindows::CompilerErrorWindows(Dispatcher& mainQueue) : dispatcher(mainQueue) {}

void CompilerErrorWindows::show(compilerError error) {
    dispatcher.onMain([error = std::move(error)] {
        auto* window = new PreproErrorController(error);
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->show();
    });
}

} // namespace tessaril
