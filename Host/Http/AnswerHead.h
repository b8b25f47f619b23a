#pragma once

#include "wApi/wTypes.h"

#include <optional>
#include <string>

namespace ZuRest
{
struct Answer;
}

/// The head of an answer as it goes over the wire.
namespace ZuHost::AnswerHead
{

/// The present time as the header Date has it: "Sun, 06 Nov 1994 08:49:37 GMT". The reference is the calling thread's,
/// and stands until its next call.
std::string const& Date();

/// Appends the head to `text`, up to and with the empty line. `date` is the value of that header; `isLast` tells the
/// client that the connection closes behind the answer; no header tells the length when there is none.
void Append(std::string& text, ZuRest::Answer const& answer, std::string const& date, bool isLast,
            std::optional<uint64> contentBytes);

} // namespace ZuHost::AnswerHead
