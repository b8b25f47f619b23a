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
/// simdjson reads it. What that refuses is given to nlohmann::json as a whole, which knows a few numbers more, goes to any
/// depth, and else says what is wrong: what can be read and what is thrown is up to that library.
class ZUCONTROL_INTERNAL_API ConfigurationDocument
{
public:
    /// Throws the library's parse error, and its out-of-range error for a number beyond all floating point numbers.
    explicit ConfigurationDocument(std::string const& text);
    ~ConfigurationDocument();

    ConfigurationDocument(ConfigurationDocument const&) = delete;
    ConfigurationDocument& operator=(ConfigurationDocument const&) = delete;

    DocumentPart Root() const;

    /// All of it, made when it is first asked for; -0 is told as 0.
    nlohmann::json const& ToJson();

private:
    simdjson::dom::parser parser; // holds what it has read
    simdjson::dom::element root;
    bool isRead;
    nlohmann::json json; // when simdjson has not read it, and when it is asked for
};

} // namespace ZuControl
