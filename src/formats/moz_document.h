#pragma once

#include "model/style_container.h"

#include <string>
#include <string_view>
#include <vector>

// Sections of a style's text: `@-moz-document` at-rules, each a header of match functions and a
// brace block of CSS. The readers are lenient and textual: they know comments but neither strings
// nor escapes of CSS, drop silently what they can't read, and take time linear in the text. All
// text is UTF-8, in and out.
namespace tessaril {

/// The at-rule that a section's header begins with.
inline constexpr std::string_view mozDocumentKeyword = "@-moz-document";

/// `text` cut before every "@-moz-document" that stands outside block comments, each chunk trimmed.
/// The first chunk is what stands before the first cut; one empty chunk for a blank text. Views
/// into `text`.
std::vector<std::string_view> splitAtMozDocument(std::string_view text);

/// The section with the match rules of `header` ("@-moz-document domain("a"), url-prefix(b)", the
/// last closing parenthesis may be missing) and `code`. Functions that can't be read are left out;
/// with none readable the section has no rules, which makes it apply everywhere.
styleSection parseSectionHeader(std::string_view header, std::string code);

/// The sections of a whole CSS text in the order of the text: a section per block, and sections
/// without rules for the code outside blocks. `preprocessor` is the style's own word; "less" and
/// "stylus" in any case know line comments, "stylus" knows blocks without braces. Empty when there
/// is nothing to read. Logs one line for each header without a readable rule.
std::vector<styleSection> sectionsFromCSS(std::string_view css, std::string_view preprocessor);

/// The style's sections as the one text that a compiler reads. `sectionsFromCSS` reads the same
/// rules and the same code, trimmed, back where the code's braces balance. A regular expression
/// loses the backslash before a slash. A rule that holds "),", or a brace after a blank, a line
/// break or a closing parenthesis, is cut there; one that opens a comment hides what follows.
/// Stylus code without a brace comes back with a line break before it and each line indented by a
/// tab, and not at all when it is empty.
std::string joinSectionsForPreprocessor(const styleContainer& style);

} // namespace tessaril
