#include "Host/Store/JobName.h"

#include "ZuApi/Exception.h"
#include "ZuCommon/Persistence.h"

#include <algorithm>

namespace ZuHost::JobName
{

namespace
{

bool IsForbidden(char character)
{
    auto const code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7F || character == '/' || character == '\\';
}

/// The length of a UTF-8 character, by its first byte; 0 if no character begins with that byte.
std::size_t LengthOf(unsigned char first)
{
    if (first < 0x80)
    {
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0)
    {
        return 2;
    }
    if (first >= 0xE0 && first < 0xF0)
    {
        return 3;
    }
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

/// Checks the form: each first byte is followed by the number of continuation bytes that it requires.
bool IsUtf8(std::string_view text)
{
    while (!text.empty())
    {
        std::size_t const length = LengthOf(static_cast<unsigned char>(text.front()));
        if (length == 0 || length > text.size())
        {
            return false;
        }
        std::string_view const rest = text.substr(1, length - 1);
        if (!std::ranges::all_of(rest, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }))
        {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

} // namespace

bool IsValid(std::string_view name)
{
    return !name.empty() && name.size() <= MAX_BYTES && name.front() != '.' && name.find("..") == name.npos &&
           std::ranges::none_of(name, IsForbidden) && IsUtf8(name);
}

std::string Checked(std::string const& name)
{
    std::string job = ZuCommon::PersistManager::NameWithoutSuffix(name);
    if (!IsValid(job))
    {
        ZU_THROW(
            Zu::Status::BAD_ARGUMENT,
            "'%s' cannot be the name of a job: 1 to %zu bytes, no '/', '\\', '..' or control character, and no dot "
            "at the head",
            name.c_str(), MAX_BYTES);
    }
    return job;
}

} // namespace ZuHost::JobName
