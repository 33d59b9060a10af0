#include "model/ascii.h"
#include "model/database_fields.h"
#include "model/database_json.h"
#include "model/json_string.h"

#include <simdjson.h>

#include <bitset>
#include <cmath>

namespace tessaril {

namespace {

namespace ondemand = simdjson::ondemand;

constexpr int deepestChecked = 256;

/// RFC 8259's grammar of a number, of any magnitude.
bool isNumber(std::string_view token) {
    std::size_t at = 0;
    const auto digits = [&] {
        const std::size_t start = at;
        while (at < token.size() && isASCIIDigit(token[at]))
            ++at;
        return at - start;
    };
    const auto accept = [&](std::string_view chars) {
        const bool found = at < token.size() && chars.find(token[at]) != std::string_view::npos;
        if (found) ++at;
        return found;
    };
    accept("-");
    const bool leadingZero = at < token.size() && token[at] == '0';
    const std::size_t whole = digits();
    if (whole == 0 || (leadingZero && whole > 1)) return false;
    if (accept(".") && digits() == 0) return false;
    if (accept("eE")) {
        accept("+-");
        if (digits() == 0) return false;
    }
    return at == token.size();
}

std::string_view withoutTrailingSpace(std::string_view token) {
    while (!token.empty() && (token.back() == ' ' || token.back() == '\t' || token.back() == '\n' ||
                              token.back() == '\r'))
        token.remove_suffix(1);
    return token;
}

/// Whether a value that nobody reads is JSON all the same, so that a torn document is refused.
bool isJSON(ondemand::value value, int depth = 0) {
    ondemand::json_type type{};
    if (value.type().get(type) != simdjson::SUCCESS) return false;
    switch (type) {
    case ondemand::json_type::array: {
        ondemand::array list;
        if (value.get_array().get(list) != simdjson::SUCCESS) return false;
        if (depth >= deepestChecked) return true;
        for (auto element : list) {
            ondemand::value item;
            if (std::move(element).get(item) != simdjson::SUCCESS || !isJSON(item, depth + 1))
                return false;
        }
        return true;
    }
    case ondemand::json_type::object: {
        ondemand::object object;
        if (value.get_object().get(object) != simdjson::SUCCESS) return false;
        if (depth >= deepestChecked) return true;
        for (auto member : object) {
            std::string_view key;
            ondemand::value item;
            if (member.unescaped_key().get(key) != simdjson::SUCCESS ||
                member.value().get(item) != simdjson::SUCCESS || !isJSON(item, depth + 1))
                return false;
        }
        return true;
    }
    case ondemand::json_type::number:
        return isNumber(withoutTrailingSpace(value.raw_json_token()));
    case ondemand::json_type::string:
        return value.get_string().error() == simdjson::SUCCESS;
    case ondemand::json_type::boolean:
        return value.get_bool().error() == simdjson::SUCCESS;
    case ondemand::json_type::null:
        return withoutTrailingSpace(value.raw_json_token()) == "null";
    }
    return false;
}

// Each `decode` reads one value of the form that its target stands for and gives whether it was
// one.

bool decode(ondemand::value value, std::string& out) {
    // The library's own reading of strings is not the vectorised one here, and copies once more.
    return decodeJSONString(withoutTrailingSpace(value.raw_json_token()), out);
}

bool decode(ondemand::value value, bool& out) {
    return value.get_bool().get(out) == simdjson::SUCCESS;
}

bool decode(ondemand::value value, std::int64_t& out) {
    return value.get_int64().get(out) == simdjson::SUCCESS;
}

bool decode(ondemand::value value, double& out) {
    return value.get_double().get(out) == simdjson::SUCCESS && std::isfinite(out);
}

template <typename Type>
bool decode(ondemand::value value, Type& out);

template <typename Element>
bool decode(ondemand::value value, std::vector<Element>& out) {
    out.clear();
    ondemand::array list;
    if (value.get_array().get(list) != simdjson::SUCCESS) return false;
    for (auto element : list) {
        ondemand::value item;
        if (std::move(element).get(item) != simdjson::SUCCESS) return false;
        if (!decode(item, out.emplace_back())) return false;
    }
    return true;
}

template <typename Value>
bool decode(ondemand::value value, std::optional<Value>& out) {
    out.reset();
    if (withoutTrailingSpace(value.raw_json_token()) == "null") return true;
    return decode(value, out.emplace());
}

template <typename Value>
constexpr bool isOptional = false;
template <typename Value>
constexpr bool isOptional<std::optional<Value>> = true;

template <typename Type>
bool decodeObject(ondemand::object object, Type& out) {
    constexpr std::size_t count = std::tuple_size_v<std::remove_const_t<decltype(fieldsOf<Type>)>>;
    std::bitset<count> seen;

    for (auto member : object) {
        std::string_view key;
        ondemand::value value;
        if (member.unescaped_key().get(key) != simdjson::SUCCESS) return false;
        if (member.value().get(value) != simdjson::SUCCESS) return false;

        bool known = false;
        bool read = false;
        std::size_t index = 0;
        const auto tryField = [&](const auto& f) {
            if (!known && key == f.key) {
                known = true;
                if (seen.test(index)) out.*(f.member) = {}; // of two the last counts, whole
                seen.set(index);
                read = decode(value, out.*(f.member));
            }
            ++index;
        };
        std::apply([&](const auto&... f) { (tryField(f), ...); }, fieldsOf<Type>);
        if (known ? !read : !isJSON(value)) return false;
    }

    std::size_t index = 0;
    const auto settled = [&](const auto& f) {
        using Member = std::remove_cvref_t<decltype(out.*(f.member))>;
        const bool result = isOptional<Member> || seen.test(index);
        ++index;
        return result;
    };
    return std::apply([&](const auto&... f) { return (settled(f) & ...); }, fieldsOf<Type>);
}

template <typename Type>
bool decode(ondemand::value value, Type& out) {
    ondemand::object object;
    return value.get_object().get(object) == simdjson::SUCCESS && decodeObject(object, out);
}

template <typename Type>
std::optional<Type> decodeDocument(std::string bytes) {
    if (bytes.capacity() < bytes.size() + simdjson::SIMDJSON_PADDING)
        bytes.reserve(bytes.size() + simdjson::SIMDJSON_PADDING);
    ondemand::parser parser;
    ondemand::document document;
    const simdjson::padded_string_view view(bytes.data(), bytes.size(), bytes.capacity());
    if (parser.iterate(view).get(document) != simdjson::SUCCESS) return std::nullopt;

    ondemand::object object;
    if (document.get_object().get(object) != simdjson::SUCCESS) return std::nullopt;
    std::optional<Type> result(std::in_place);
    if (!decodeObject(object, *result)) return std::nullopt;
    if (document.current_location().error() != simdjson::OUT_OF_BOUNDS) return std::nullopt;
    return result;
}

} // namespace

std::optional<styleDatabase> decodeDatabase(std::string bytes) {
    return decodeDocument<styleDatabase>(std::move(bytes));
}

std::optional<styleJSON> decodeStyleJSON(std::string bytes) {
    return decodeDocument<styleJSON>(std::move(bytes));
}

} // namespace tessaril
