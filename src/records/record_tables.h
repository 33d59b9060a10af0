#pragma once

#include "records/sql_connection.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// The records in the tables of a database, the same for both engines.
namespace tessaril {

/// Makes the tables if they are not there. An error also when they are those of a newer version of
/// the application, or the database is another program's.
std::optional<recordError> prepareTables(SqlConnection& connection, const TimeLimit& limit);

recordFetch fetchRecordsFrom(SqlConnection& connection, const TimeLimit& limit,
                             std::span<const recordID> ids);

/// What a save needs beside its records.
struct recordsToSave {
    std::vector<cloudRecord> records;
    std::vector<std::string> newTags; ///< as many
    std::string sender;               ///< by which other clients know who saved
};

/// Saves all of them or none.
/// - commitBegan: set once the save may have been done though it ends with an error
recordSave saveRecordsInto(SqlConnection& connection, const TimeLimit& limit,
                           const recordsToSave& save, bool& commitBegan);

/// The change tags of the records.
using recordTags = std::map<recordID, std::string>;

std::variant<recordTags, recordError> fetchTagsFrom(SqlConnection& connection,
                                                    const TimeLimit& limit);

/// What is announced of a save, in its parts.
struct announcement {
    std::string_view sender;
    std::string_view recordType;
};
announcement parseAnnouncement(std::string_view text);

} // namespace tessaril
