#pragma once

#include "platform/script_engine.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How Less gets the files that a style imports. Less resolves their addresses itself, as it does on
// a web page; the script that is loaded before it holds its requests back until they are answered.
namespace tessaril {

/// What one style may import; each is far beyond what any library needs.
inline constexpr std::size_t mostImportedFiles = 100;
inline constexpr std::size_t mostImportedBytes = 8 << 20; ///< of all files together
/// One for each file within a file, and for each whose path has a variable.
inline constexpr int mostImportRounds = 40;

/// Gives the text of the file with that address, as Less writes it: mostly, but not always one of
/// the web. Nothing for a file that cannot be had now. Never waits for the network.
using ImportLookup = std::function<std::optional<std::string>(const std::string& address)>;

/// A file that Less asked for and did not get.
struct refusedImport {
    std::string address;
    std::string_view reason; ///< goes on behind "... wasn't found:", of static duration
};

struct importOutcome {
    std::vector<refusedImport> refused; ///< each address once, in the order of asking
    /// The addresses among them for which the look-up gave nothing; the others were not looked up.
    std::vector<std::string> missing;
};

/// Answers what a compilation that was begun in `context` asks for, until it asks no more.
importOutcome deliverImports(ScriptContext& context, const ImportLookup& lookUp);

/// The error's text; where it is about a file that was refused, of which Less names only one, with
/// the addresses of the others. Files within a file that stands behind a refused one are not asked
/// for.
std::string withAllRefused(std::string error, const std::vector<refusedImport>& refused);

} // namespace tessaril
