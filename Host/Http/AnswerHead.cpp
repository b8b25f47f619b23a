#include "Host/Http/AnswerHead.h"

#include "ZuRest/Answer.h"

#include <array>
#include <charconv>
#include <ctime>
#include <string_view>

namespace ZuHost::AnswerHead
{

namespace
{

void AppendNumber(std::string& text, uint64 number)
{
    std::array<char, 20> digits; // as many as 64 bits have
    text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

void AppendHeader(std::string& text, std::string_view name, std::string_view value)
{
    text.append(name).append(": ").append(value).append("\r\n");
}

} // namespace

std::string const& Date()
{
    thread_local std::time_t shown = 0;
    thread_local std::string text;
    if (std::time_t const now = std::time(nullptr); now != shown)
    {
        std::tm parts{};
        gmtime_r(&now, &parts);
        std::array<char, 32> written{};
        std::strftime(written.data(), written.size(), "%a, %d %b %Y %H:%M:%S GMT", &parts); // in the "C" locale
        text = written.data();
        shown = now;
    }
    return text;
}

void Append(std::string& text, ZuRest::Answer const& answer, std::string const& date, bool isLast,
            std::optional<uint64> contentBytes)
{
    text.append("HTTP/1.1 ");
    AppendNumber(text, answer.status);
    text.append(" ").append(ZuRest::HttpStatus::Title(answer.status)).append("\r\n");
    AppendHeader(text, "Date", date);
    for (auto const& [name, value] : answer.headers)
    {
        AppendHeader(text, name, value);
    }
    if (!answer.contentType.empty())
    {
        AppendHeader(text, "Content-Type", answer.contentType);
        AppendHeader(text, "X-Content-Type-Options", "nosniff");
    }
    if (isLast)
    {
        AppendHeader(text, "Connection", "close");
    }
    if (contentBytes.has_value())
    {
        text.append("Content-Length: ");
        AppendNumber(text, *contentBytes);
        text.append("\r\n");
    }
    text.append("\r\n");
}

} // namespace ZuHost::AnswerHead
