#pragma once

#include <string_view>

/// The data files of this folder, as texts with static storage.
namespace ZuHost::DescriptionTexts
{

/// description.json: what the route table does not say of each request, and the schemas of the records.
std::string_view Description() noexcept;

/// examples.json: answers of a real host, by request and status. Tests/System/description_examples.py writes them.
std::string_view Examples() noexcept;

} // namespace ZuHost::DescriptionTexts
