#include "records/record_fields.h"

#include "model/json_writer.h"

#include <simdjson.h>

namespace tessaril {

namespace {

namespace dom = simdjson::dom;

std::optional<std::variant<std::int64_t, std::string>> valueOf(const dom::element& value) {
    std::int64_t number = 0;
    if (value.get(number) == simdjson::SUCCESS) return number;
    std::string_view text;
    if (value.get(text) == simdjson::SUCCESS) return std::string(text);
    return std::nullopt;
}

} // namespace

std::optional<std::string> encodeRecordFields(const recordFields& fields) {
    std::string json = "{";
    JsonWriter writer(json);
    for (const auto& [name, value] : fields) {
        if (json.size() > 1) writer.raw(",");
        writer.string(name);
        writer.raw(":");
        if (const auto* text = std::get_if<std::string>(&value))
            writer.string(*text);
        else
            writer.integer(std::get<std::int64_t>(value));
    }
    writer.raw("}");
    if (!writer.ok()) return std::nullopt;
    return json;
}

std::optional<recordFields> decodeRecordFields(const std::string& json) {
    dom::parser parser;
    dom::object object;
    if (parser.parse(json).get(object) != simdjson::SUCCESS) return std::nullopt;
    recordFields fields;
    for (const dom::key_value_pair& member : object) {
        auto value = valueOf(member.value);
        if (!value) return std::nullopt;
        fields.insert_or_assign(std::string(member.key), std::move(*value));
    }
    return fields;
}

} // namespace tessaril
