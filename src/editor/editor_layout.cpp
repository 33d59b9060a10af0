#include "editor/editor_layout.h"

#include <algorithm>

namespace tessaril {

int paddingFor(borderType border) {
    switch (border) {
    case borderType::none:
        return 0;
    case borderType::line:
    case borderType::bezel:
        return 1;
    case borderType::groove:
        return 2;
    }
    return 0;
}

viewFrame insideFrame(int width, int height, int padding) {
    return {padding, padding, std::max(0, width - 2 * padding), std::max(0, height - 2 * padding)};
}

viewFrame webViewFrame(int width, int height, int padding, int findBarHeight) {
    viewFrame frame = insideFrame(width, height, padding);
    frame.y += findBarHeight;
    frame.height = std::max(0, frame.height - findBarHeight);
    return frame;
}

} // namespace tessaril
