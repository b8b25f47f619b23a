#pragma once

#include "ZuControl/Export.h"

#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <simdjson.h>
#include <string>
#include <variant>
#include <vector>

namespace Zu::Properties
{
class Node;
} // namespace Zu::Properties

namespace ZuControl
{

/// A value of a configuration document with its members. Operations return and throw as nlohmann::json does.
///
/// The entries of a large configuration are read from the text into parameter records without a JSON object for each:
/// making and freeing those objects would take longer than the rest of a load.
/// Small, to be copied; valid for as long as the document.
class ZUCONTROL_INTERNAL_API DocumentPart
{
public:
    explicit DocumentPart(nlohmann::json const& json);
    explicit DocumentPart(simdjson::dom::element newElement);

    bool IsArray() const;

    /// The value of `key`; nothing when this is no object or has no such key.
    std::optional<DocumentPart> Find(char const* key) const;

    /// The values of an array. Null and {} have none. Another value that is no array raises the library's type error
    /// 305.
    std::vector<DocumentPart> Elements() const;

    /// Throws the library's type error 302 for a value that is no text.
    std::string Text() const;

    /// As Zu::Properties::JsonSerializer::Deserialize.
    void ReadInto(Zu::Properties::Node& node) const;

private:
    std::variant<nlohmann::json const*, simdjson::dom::element> value;
};

/// A configuration document, read from its text.
///
/// simdjson reads the text. When it refuses, nlohmann::json reads the whole text: that library accepts a few more
/// numbers and any depth, and throws the exception for a text with an error. So nlohmann::json decides which texts are
/// valid.
class ZUCONTROL_INTERNAL_API ConfigurationDocument
{
public:
    /// Throws the parse error of nlohmann::json, and its out-of-range error for a number beyond all floating point
    /// numbers.
    explicit ConfigurationDocument(std::string const& text);
    ~ConfigurationDocument();

    ConfigurationDocument(ConfigurationDocument const&) = delete;
    ConfigurationDocument& operator=(ConfigurationDocument const&) = delete;

    DocumentPart Root() const;

    /// The whole document, made at the first call; -0 reads as 0.
    nlohmann::json const& ToJson();

private:
    simdjson::dom::parser parser; // owns the elements
    simdjson::dom::element root;
    bool isRead;
    nlohmann::json json; // set when simdjson has refused the text, and by ToJson
};

bool HasNul(std::string const& text);

/// `text` with each NUL written as its JSON escape, for interfaces that read a text up to its first NUL.
std::string WithoutNuls(std::string text);

} // namespace ZuControl
