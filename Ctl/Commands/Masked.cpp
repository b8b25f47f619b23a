#include "Ctl/Commands/Masked.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <utility>

namespace ZuCtl
{

using nlohmann::json;

namespace
{

constexpr std::string_view MASK = "***";
constexpr std::string_view OF_A_TOKEN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_+/=.~";

bool NamesASecret(std::string name)
{
    std::ranges::transform(name, name.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return std::ranges::any_of(std::initializer_list<char const*>{"password", "passphrase", "secret", "token"},
                               [&](char const* word) { return name.find(word) != std::string::npos; });
}

/// Masks the letters of a token behind each `beginning`.
void MaskBehind(std::string& text, std::string_view beginning)
{
    for (std::size_t at = text.find(beginning); at != std::string::npos; at = text.find(beginning, at))
    {
        at += beginning.size();
        std::size_t const end = std::min(text.find_first_not_of(OF_A_TOKEN, at), text.size());
        text.replace(at, end - at, MASK);
        at += MASK.size();
    }
}

void MaskUserOfAddresses(std::string& text)
{
    for (std::size_t at = text.find("//"); at != std::string::npos; at = text.find("//", at))
    {
        at += 2;
        std::size_t const end = std::min(text.find_first_of("/ \t\n\"'", at), text.size());
        std::size_t const sign = text.rfind('@', end == 0 ? 0 : end - 1);
        if (sign != std::string::npos && sign >= at && sign < end)
        {
            text.replace(at, sign - at, MASK);
            at += MASK.size();
        }
    }
}

void MaskText(std::string& text)
{
    if (text.find("PRIVATE KEY-----") != std::string::npos)
    {
        text = MASK;
        return;
    }
    MaskBehind(text, "Bearer ");
    MaskBehind(text, "zc_");
    MaskUserOfAddresses(text);
}

} // namespace

json Masked(json document)
{
    if (document.is_string())
    {
        MaskText(document.get_ref<std::string&>());
    }
    if (!document.is_structured())
    {
        return document;
    }
    for (auto const& [name, value] : document.items())
    {
        bool const isSecret = document.is_object() && NamesASecret(name) && value.is_string() && value != "";
        value = isSecret ? json(MASK) : Masked(std::move(value));
    }
    return document;
}

} // namespace ZuCtl
