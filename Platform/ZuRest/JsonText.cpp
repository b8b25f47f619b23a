#include "ZuRest/JsonText.h"

#include "ZuApi/Exception.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace ZuRest::JsonText
{

namespace
{

/// How deep the brackets of a text go that stand outside of strings.
uint32 DepthOf(std::string_view text)
{
    uint32 depth = 0;
    uint32 deepest = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        char const character = text[i];
        if (isInString)
        {
            i += character == '\\' ? 1 : 0;
            isInString = character != '"';
            continue;
        }
        isInString = character == '"';
        if (character == '[' || character == '{')
        {
            deepest = std::max(deepest, ++depth);
        }
        else if (character == ']' || character == '}')
        {
            depth -= depth != 0 ? 1 : 0;
        }
    }
    return deepest;
}

} // namespace

nlohmann::json Read(std::string_view text)
{
    if (text.size() > MAX_BYTES)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is longer than %zu bytes.", MAX_BYTES);
    }
    if (DepthOf(text) > MAX_DEPTH)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is nested deeper than %u levels.", MAX_DEPTH);
    }
    if (text.find('\0') != std::string_view::npos) // the library takes it for the end
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is not valid JSON: it has a zero byte.");
    }
    try
    {
        return nlohmann::json::parse(text.begin(), text.end());
    }
    catch (nlohmann::json::exception const& exception)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is not valid JSON: %s", exception.what());
    }
}

std::string Write(nlohmann::json const& document)
{
    return document.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace ZuRest::JsonText
