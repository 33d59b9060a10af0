#pragma once

#include "platform/record_store.h"
#include "records/time_limit.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessaril {

/// A value for a place of a statement. What it views lives until the statement was executed.
struct sqlParameter {
    enum class kind { text, bytes, null };
    kind is;
    std::string_view value;
};

inline sqlParameter sqlText(std::string_view text) {
    return {.is = sqlParameter::kind::text, .value = text};
}

/// Texts and bytes as they are, nothing for null.
using sqlRow = std::vector<std::optional<std::string>>;

struct sqlResult {
    std::vector<sqlRow> rows;
    std::int64_t affected = 0; ///< rows, by a statement that changes some
    std::optional<recordError> error;
};

/// What an engine says differently than the other.
struct sqlDialect {
    std::string_view begin;
    std::string_view bytesType;
    /// An expression: whose records a connection sees and saves.
    std::string_view owner;
    /// Lets one connection at a time make the tables, until its transaction ends; empty where
    /// `begin` does.
    std::string_view lockTables;
    /// Gives one row with a text when the tables have been made, and refuses by an empty text where
    /// something else lies in their place.
    std::string_view findTables;
    /// Around the making of the tables, in its transaction.
    std::span<const std::string_view> beforeTables;
    std::span<const std::string_view> afterTables;
    /// Tells other connections of a save, when its transaction ends well: the text $1. Empty where
    /// they see it by themselves.
    std::string_view announce;
};

/// A connection to one of the engines. To be used by one thread at a time.
class SqlConnection {
public:
    virtual ~SqlConnection() = default;

    virtual const sqlDialect& dialect() const = 0;

    /// One statement, with the values of its places $1, $2 and so on. Its columns must be text or
    /// bytes. Ends with an error when the limit is over, before or while it is executed:
    /// `timedOut`, and the connection is not to be kept.
    virtual sqlResult execute(const TimeLimit& limit, const std::string& statement,
                              std::span<const sqlParameter> parameters = {}) = 0;

    /// Whether it can serve further operations.
    virtual bool isToBeKept() const = 0;
};

} // namespace tessaril
