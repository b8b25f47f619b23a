#pragma once

#include "wApi/wTypes.h"

#include <optional>
#include <string>

namespace ZuRest
{
struct Answer;
}

/// The head of an answer, as it is sent.
namespace ZuHost::AnswerHead
{

/// Returns the present time in the format of the header Date: "Sun, 06 Nov 1994 08:49:37 GMT". The text belongs to the
/// calling thread and is valid until its next call.
std::string const& Date();

/// Appends the head to `text`, up to and including the empty line. `date` is the value of the header Date. `isLast`
/// tells the client that the connection closes after the answer. Without `contentBytes` there is no header for the
/// length.
void Append(std::string& text, ZuRest::Answer const& answer, std::string const& date, bool isLast,
            std::optional<uint64> contentBytes);

} // namespace ZuHost::AnswerHead
