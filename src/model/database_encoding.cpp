#include "model/database_fields.h"
#include "model/database_json.h"
#include "model/json_writer.h"

#include <concepts>

namespace tessaril {

namespace {

template <typename Type>
concept record = std::tuple_size_v<std::remove_const_t<decltype(fieldsOf<Type>)>> >
0;

template <typename Value>
const Value& present(const Value& value) {
    return value;
}

template <typename Value>
const Value& present(const std::optional<Value>& value) {
    return *value;
}

template <typename Value>
constexpr bool isAbsent(const Value&) {
    return false;
}

template <typename Value>
bool isAbsent(const std::optional<Value>& value) {
    return !value;
}

/// Calls `visit(key, value)` for every field of `value` that has one.
template <record Type, typename Visit>
void forEachField(const Type& value, Visit visit) {
    const auto visitField = [&](const auto& f) {
        const auto& member = value.*(f.member);
        if (!isAbsent(member)) visit(f.key, present(member));
    };
    std::apply([&](const auto&... f) { (visitField(f), ...); }, fieldsOf<Type>);
}

class Encoder {
public:
    explicit Encoder(std::string& out) : writer(out) {}

    void write(const std::string& text) { writer.string(text); }
    void write(bool value) { writer.boolean(value); }
    void write(std::int64_t value) { writer.integer(value); }
    void write(double value) { writer.real(value); }

    template <typename Element>
    void write(const std::vector<Element>& list) {
        std::string_view separator = "[";
        for (const Element& element : list) {
            writer.raw(separator);
            write(element);
            separator = ",";
        }
        writer.raw(list.empty() ? "[]" : "]");
    }

    template <record Type>
    void write(const Type& value) {
        std::string_view separator = "{\"";
        forEachField(value, [&](std::string_view key, const auto& member) {
            writer.raw(separator);
            writer.raw(key);
            writer.raw("\":");
            write(member);
            separator = ",\"";
        });
        writer.raw(separator == "{\"" ? "{}" : "}");
    }

    bool ok() const { return writer.ok(); }

private:
    JsonWriter writer;
};

constexpr std::size_t numberSize = 24;

/// Code has an escape every two dozen bytes or so.
std::size_t encodedSize(const std::string& text) {
    return text.size() + text.size() / 16 + 2;
}

template <typename Number>
requires std::is_arithmetic_v<Number> std::size_t encodedSize(Number) {
    return numberSize;
}

template <record Type>
std::size_t encodedSize(const Type& value);

template <typename Element>
std::size_t encodedSize(const std::vector<Element>& list) {
    std::size_t size = 2;
    for (const Element& element : list)
        size += encodedSize(element) + 1;
    return size;
}

/// Near enough to reserve memory once: growing by doubling would copy a large document.
template <record Type>
std::size_t encodedSize(const Type& value) {
    std::size_t size = 2;
    forEachField(value, [&](std::string_view key, const auto& member) {
        size += key.size() + 4 + encodedSize(member);
    });
    return size;
}

template <record Type>
std::optional<std::string> encode(const Type& value) {
    std::string json;
    json.reserve(encodedSize(value));
    Encoder encoder(json);
    encoder.write(value);
    if (!encoder.ok()) return std::nullopt;
    return json;
}

} // namespace

std::optional<std::string> encodeDatabase(const styleDatabase& database) {
    return encode(database);
}

std::optional<std::string> encodeStyle(const styleContainer& style) {
    return encode(style);
}

std::optional<documentFrame> encodeFrame(std::int64_t dbVersion, std::int64_t randomHash,
                                         std::optional<date> dateModified) {
    const auto empty = encodeDatabase({.dbVersion = dbVersion,
                                       .styles = {},
                                       .randomHash = randomHash,
                                       .dateModified = dateModified});
    if (!empty) return std::nullopt;
    const std::size_t split = empty->find("[]") + 1;
    return documentFrame{empty->substr(0, split), empty->substr(split)};
}

} // namespace tessaril
