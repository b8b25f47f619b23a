#include "Host/Http/BearerToken.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <utility>

namespace ZuHost::BearerToken
{

namespace
{

constexpr std::string_view SCHEME = "bearer ";

constexpr char const* BLANKS = " \t\r";

} // namespace

std::string ReadFile(std::filesystem::path const& file)
{
    errno = 0;
    std::ifstream stream(file);
    std::string token;
    if (!stream || (!std::getline(stream, token) && stream.bad()))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--token': %s: %s", file.c_str(),
                 errno != 0 ? std::strerror(errno) : "it cannot be read");
    }
    using std::filesystem::perms;
    constexpr perms OF_OTHERS = perms::group_read | perms::group_write | perms::others_read | perms::others_write;
    if ((std::filesystem::status(file).permissions() & OF_OTHERS) != perms::none)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "option '--token': others can read or change %s: take that right away with "
                 "chmod 600 %s, and replace the token if they may have read it",
                 file.c_str(), file.c_str());
    }
    token.erase(0, std::min(token.find_first_not_of(BLANKS), token.size()));
    token.erase(token.find_last_not_of(BLANKS) + 1);
    bool const isText = std::all_of(token.begin(), token.end(), [](char one) { return one > ' ' && one < 0x7F; });
    if (token.size() < MIN_BYTES || !isText)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "option '--token': the first line of %s is no token: %zu characters or more, without blanks",
                 file.c_str(), MIN_BYTES);
    }
    return token;
}

std::string_view In(std::string_view header) noexcept
{
    bool const isBearer =
        header.size() >= SCHEME.size() && std::equal(SCHEME.begin(), SCHEME.end(), header.begin(), [](char a, char b) {
            return a == static_cast<char>(std::tolower(static_cast<unsigned char>(b)));
        });
    if (!isBearer)
    {
        return {};
    }
    header.remove_prefix(std::min(header.find_first_not_of(' ', SCHEME.size()), header.size()));
    return header;
}

bool IsGiven(std::string_view token, std::string_view header) noexcept
{
    if (token.empty())
    {
        return true;
    }
    std::string_view const shown = In(header);
    if (shown.size() != token.size())
    {
        return false;
    }
    unsigned different = 0;
    for (std::size_t i = 0; i < token.size(); ++i) // no early exit, so that the time does not depend on the content
    {
        different |= static_cast<unsigned char>(token[i]) ^ static_cast<unsigned char>(shown[i]);
    }
    return different == 0;
}

} // namespace ZuHost::BearerToken

namespace ZuHost
{

CurrentToken::CurrentToken(std::string newToken) : token(std::move(newToken))
{
}

CurrentToken::~CurrentToken() = default;

void CurrentToken::Set(std::string newToken)
{
    Zu::MutexLock const guard(lock);
    token = std::move(newToken);
}

bool CurrentToken::IsEmpty() const noexcept
{
    Zu::MutexLock const guard(lock);
    return token.empty();
}

bool CurrentToken::IsGiven(std::string_view header) const noexcept
{
    Zu::MutexLock const guard(lock);
    return BearerToken::IsGiven(token, header);
}

} // namespace ZuHost
