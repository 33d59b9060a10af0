#pragma once

#include "records/sql_connection.h"

#include <memory>
#include <string>
#include <variant>

namespace tessaril {

/// Where the file of a path really lies, or will once it is made: SQLite follows links, and writes
/// and keeps its journal there.
std::string resolvedPath(const std::string& path);

/// Opens the SQLite file, which is made if it is not there, for its owner alone. Its folder must
/// exist. Whoever uses it meanwhile is waited for, within the limit. A connection serves one
/// operation, as the file may be replaced by another between two.
std::variant<std::unique_ptr<SqlConnection>, recordError> openSqlite(const std::string& path);

} // namespace tessaril
