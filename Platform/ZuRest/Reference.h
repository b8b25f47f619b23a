#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace ZuRest
{

/// One resource that a document refers to.
struct Reference
{
    bool isEmbedded;      ///< shown inline, else by its address alone
    std::string key;      ///< the relation: "item", "zu:command"
    std::string path;     ///< percent-encoded
    bool asList;          ///< the key holds a list, also with one member
    nlohmann::json extra; ///< members of an object stand beside the address of a link; null for none
};

} // namespace ZuRest
