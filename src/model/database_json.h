#pragma once

#include "model/style_database.h"

#include <optional>
#include <string>

// The document's JSON: one compact object, UTF-8. A field's key is its name. The same bytes are the
// file on disk, an exported file, the message to the browser extension and the record in the cloud.
namespace tessaril {

/// The document; nothing when a value cannot be represented: a number that is not finite, a text
/// that is not UTF-8.
std::optional<std::string> encodeDatabase(const styleDatabase& database);

/// Reads a document. Nothing when the bytes are not one JSON object in UTF-8 (RFC 8259), or when at
/// any depth a required field is missing or null, or a field has another form than its own (an
/// integer spelled with a fraction or an exponent included). Unknown keys are ignored, though their
/// values must be JSON; of a key that occurs twice the last counts. Taken by value: bytes with
/// spare capacity are read without a copy.
std::optional<styleDatabase> decodeDatabase(std::string bytes);

/// The style-sharing site's document of one style, by the same rules.
std::optional<styleJSON> decodeStyleJSON(std::string bytes);

/// One style as it stands in the document's list.
std::optional<std::string> encodeStyle(const styleContainer& style);

/// The document around its styles: `opening`, the styles with commas between them, `closing`.
struct documentFrame {
    std::string opening;
    std::string closing;
};

std::optional<documentFrame> encodeFrame(std::int64_t dbVersion, std::int64_t randomHash,
                                         std::optional<date> dateModified);

} // namespace tessaril
