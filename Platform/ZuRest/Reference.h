#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace ZuRest
{

/// A reference from a document to another resource.
struct Reference
{
    bool isEmbedded;      ///< true: shown inline; false: as a link
    std::string key;      ///< the relation: "item", "zu:command"
    std::string path;     ///< percent-encoded
    bool asList;          ///< the value of the key is a list, even with one member
    nlohmann::json extra; ///< an object with further members of the link, or null
};

} // namespace ZuRest
