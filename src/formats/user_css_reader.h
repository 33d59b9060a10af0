#pragma once

#include "model/style_container.h"
#include "model/style_making.h"

#include <optional>
#include <string_view>

namespace tessaril {

/// The name of a style whose text gives none.
inline constexpr std::string_view defaultStyleName = "Style From User CSS";

/// The ends of the metadata block of a UserCSS file.
inline constexpr std::string_view metadataOpening = "/* ==UserStyle==";
inline constexpr std::string_view metadataClosing = "==/UserStyle== */";

/// The new style that the text of a style file makes: a UserCSS file, a file of `@-moz-document`
/// blocks or plain CSS, UTF-8. Keys of the metadata block that do not appear keep their defaults.
/// A style with variables, or of exactly the preprocessor "less" or "stylus", is compiled. Nothing
/// when the text yields no section; then `making` is not asked for an identifier. Time is linear in
/// the text.
std::optional<styleContainer> parseUserCSS(std::string_view text, const styleMaking& making);

/// The same reading of what a compiler wrote: the identifier is 0 and nothing is compiled.
std::optional<styleContainer> parseCompiledCSS(std::string_view text);

} // namespace tessaril
