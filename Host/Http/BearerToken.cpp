#include "Host/Http/BearerToken.h"

#include <algorithm>
#include <cctype>

namespace ZuHost::BearerToken
{

namespace
{

constexpr std::string_view SCHEME = "bearer ";

} // namespace

bool IsGiven(std::string_view token, std::string_view header) noexcept
{
    if (token.empty())
    {
        return true;
    }
    bool const isBearer =
        header.size() >= SCHEME.size() && std::equal(SCHEME.begin(), SCHEME.end(), header.begin(), [](char a, char b) {
            return a == static_cast<char>(std::tolower(static_cast<unsigned char>(b)));
        });
    if (!isBearer)
    {
        return false;
    }
    header.remove_prefix(std::min(header.find_first_not_of(' ', SCHEME.size()), header.size()));
    if (header.size() != token.size())
    {
        return false;
    }
    unsigned different = 0;
    for (std::size_t i = 0; i < token.size(); ++i) // to the end, whatever is found on the way
    {
        different |= static_cast<unsigned char>(token[i]) ^ static_cast<unsigned char>(header[i]);
    }
    return different == 0;
}

} // namespace ZuHost::BearerToken
