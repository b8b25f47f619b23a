#pragma once

#include "ZuControl/Export.h"
#include "ZuControl/Persistence/DocumentPart.h"

#include <nlohmann/json.hpp>
#include <simdjson.h>

#include <string>

namespace ZuControl
{

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

} // namespace ZuControl
