#include "Host/Security/LoginNotice.h"

#include "Host/Security/UnicodeText.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace ZuHost::LoginNotice
{

namespace
{

[[noreturn]] void Refuse(std::filesystem::path const& file, std::string const& reason)
{
    ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--login-notice': the file '%s' %s", file.c_str(), reason.c_str());
}

bool IsPlainText(std::string const& text)
{
    return UnicodeText::Normalised(text).has_value() && std::ranges::none_of(text, [](char character) {
               auto const code = static_cast<unsigned char>(character);
               return code == 0x7F || (code < 0x20 && character != '\n' && character != '\r' && character != '\t');
           });
}

} // namespace

std::string ReadFile(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string text(MAX_BYTES + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (stream.bad() || !stream.is_open())
    {
        Refuse(file, std::string("cannot be read: ") + std::strerror(errno));
    }
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.size() > MAX_BYTES)
    {
        Refuse(file, "has more than " + std::to_string(MAX_BYTES) + " bytes");
    }
    text.erase(text.find_last_not_of(" \t\r\n") + 1);
    if (text.empty())
    {
        Refuse(file, "has no text");
    }
    if (!IsPlainText(text))
    {
        Refuse(file, "is no text in UTF-8, or has control characters");
    }
    return text;
}

} // namespace ZuHost::LoginNotice
