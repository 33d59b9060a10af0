#pragma once

#include <string_view>

namespace tessaril {

/// What the preview of the editor's settings shows.
inline constexpr std::string_view editorPreviewText =
    "/* A nice example. */ \n"
    "\n"
    ".exampleElement\n"
    "{\n"
    "\tcolor: rgb(69, 42, 0) !important;\n"
    "}\n"
    "/* This comment would force you to scroll to see the whole thing, if not for word wrap. */";

} // namespace tessaril
