#pragma once

namespace tessaril {

enum class borderType { none, line, bezel, groove };

/// How far the web view stays away from the editor's edges, in points.
int paddingFor(borderType border);

/// A rectangle from the editor's top left corner, in points; no side is negative.
struct viewFrame {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const viewFrame&) const = default;
};

/// The editor's inside, which the find bar and the web view share.
viewFrame insideFrame(int width, int height, int padding);

/// Where the web view goes in an editor of that size. `findBarHeight` is 0 while the bar is hidden;
/// the bar takes the top of the inside.
viewFrame webViewFrame(int width, int height, int padding, int findBarHeight);

} // namespace tessaril
