#pragma once

#include "model/style_database.h"

#include <string_view>
#include <tuple>

// The persisted fields of each type: the one list that the reader and the writer of the document
// walk. A field is required unless its member is an optional.
namespace tessaril {

template <typename Type, typename Member>
struct field {
    std::string_view key;
    Member Type::*member;
};

template <typename Type>
inline constexpr std::tuple<> fieldsOf;

template <>
inline constexpr auto fieldsOf<variableOption> =
    std::tuple{field{"name", &variableOption::name}, field{"label", &variableOption::label},
               field{"value", &variableOption::value}};

template <>
inline constexpr auto fieldsOf<rangeOpts> =
    std::tuple{field{"min", &rangeOpts::min}, field{"max", &rangeOpts::max},
               field{"step", &rangeOpts::step}, field{"units", &rangeOpts::units}};

template <>
inline constexpr auto fieldsOf<userVariable> = std::tuple{
    field{"type", &userVariable::type},
    field{"name", &userVariable::name},
    field{"label", &userVariable::label},
    field{"defaultValue", &userVariable::defaultValue},
    field{"selectOptions", &userVariable::selectOptions},
    field{"rangeOptions", &userVariable::rangeOptions},
    field{"currentValue", &userVariable::currentValue},
};

template <>
inline constexpr auto fieldsOf<styleSection> = std::tuple{
    field{"urls", &styleSection::urls},
    field{"urlPrefixes", &styleSection::urlPrefixes},
    field{"domains", &styleSection::domains},
    field{"regexps", &styleSection::regexps},
    field{"code", &styleSection::code},
    field{"compiledcode", &styleSection::compiledcode},
    field{"sectionName", &styleSection::sectionName},
};

template <>
inline constexpr auto fieldsOf<styleJSON> = std::tuple{
    field{"url", &styleJSON::url},
    field{"updateUrl", &styleJSON::updateUrl},
    field{"md5Url", &styleJSON::md5Url},
    field{"originalMd5", &styleJSON::originalMd5},
    field{"name", &styleJSON::name},
    field{"sections", &styleJSON::sections},
    field{"compSections", &styleJSON::compSections},
};

template <>
inline constexpr auto fieldsOf<styleContainer> = std::tuple{
    field{"uniqueID", &styleContainer::uniqueID},
    field{"styleData", &styleContainer::styleData},
    field{"isEnabled", &styleContainer::isEnabled},
    field{"source", &styleContainer::source},
    field{"userstyleID", &styleContainer::userstyleID},
    field{"version", &styleContainer::version},
    field{"namespace", &styleContainer::namespace_},
    field{"description", &styleContainer::description},
    field{"author", &styleContainer::author},
    field{"homepageURL", &styleContainer::homepageURL},
    field{"supportURL", &styleContainer::supportURL},
    field{"license", &styleContainer::license},
    field{"downloadedFrom", &styleContainer::downloadedFrom},
    field{"preprocessor", &styleContainer::preprocessor},
    field{"exclURL", &styleContainer::exclURL},
    field{"exclDomain", &styleContainer::exclDomain},
    field{"exclPrefix", &styleContainer::exclPrefix},
    field{"exclRegExp", &styleContainer::exclRegExp},
    field{"allowIframe", &styleContainer::allowIframe},
    field{"updateURL", &styleContainer::updateURL},
    field{"systemTheme", &styleContainer::systemTheme},
    field{"userVariables", &styleContainer::userVariables},
    field{"dateModified", &styleContainer::dateModified},
};

template <>
inline constexpr auto fieldsOf<styleDatabase> = std::tuple{
    field{"dbVersion", &styleDatabase::dbVersion},
    field{"styles", &styleDatabase::styles},
    field{"randomHash", &styleDatabase::randomHash},
    field{"dateModified", &styleDatabase::dateModified},
};

} // namespace tessaril
