#pragma once

#include <string_view>

namespace tessaril {

/// The code of the first style that is written here. One line ends with a blank.
inline constexpr std::string_view firstStyleText =
    "/* Hey there! Thanks for buying Tessaril.\n"
    "Since it looks like this is your first custom style,\n"
    "here's a few tips to get you started.\n"
    "\n"
    "First, you need to write some CSS code for the site\n"
    "you'd like to customize. That's what this handy\n"
    "editor is for! I recommend using Safari's Web\n"
    "Inspector to check out the layout and stylesheet\n"
    "of the website you'd like to modify, so you can\n"
    "figure out what you need to customize.\n"
    "\n"
    "The \"Rule Editor\" button in the toolbar lets you specify\n"
    "which websites your style should apply to. You can\n"
    "specify a specific domain name, a specific URL,\n"
    "all URLs starting with a specific prefix, or even\n"
    "all URLs matching a regular expression.\n"
    "\n"
    "But what if you need to apply a different block\n"
    "of CSS code to different pages, all within a single\n"
    "\"style\"? That's where \"sections\" come in. Each\n"
    "\"section\" of your style has its own block of CSS,\n"
    "as well as its own set of rules. You can add or\n"
    "remove sections and switch between them in the\n"
    "toolbar up top.\n"
    "\n"
    "Once you're all done, you can export your style to a\n"
    "CSS file from the File menu. Then, you can\n"
    "send that file to any other Tessaril user (or even\n"
    "users of similar extensions for other browsers), and\n"
    "they can use it, too. \n"
    "\n"
    "Have fun, and make something beautiful! */";

} // namespace tessaril
