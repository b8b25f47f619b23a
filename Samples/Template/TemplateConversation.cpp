#include "TemplateConversation.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <utility>

TemplateConversation::TemplateConversation(Answer newAnswer, TemplateCounters& usedCounters)
    : answer(std::move(newAnswer)), counters(usedCounters)
{
}

TemplateConversation::~TemplateConversation() = default;

void TemplateConversation::AddResults(std::string_view line)
{
    if (output.size() + line.size() > MOST_UNSENT_BYTES)
    {
        Count(counters.controlDrops); // never wait for a client
        return;
    }
    output.append(line);
    Count(counters.lines);
}

std::span<char> TemplateConversation::Room()
{
    bool const isFull = output.size() >= MOST_UNSENT_BYTES; // the client has to take its answers first
    return isFull || step != Step::CONTINUE ? std::span<char>() : std::span(input).subspan(inputBytes);
}

void TemplateConversation::Received(std::size_t bytes)
{
    inputBytes += bytes;
    Count(counters.bytesIn, bytes);
    AnswerLines();
    if (inputBytes == input.size())
    {
        step = Step::DROP; // a line that is too long
    }
}

void TemplateConversation::InputEnded()
{
    step = Step::CLOSE;
}

std::string_view TemplateConversation::Pending() const
{
    return output;
}

void TemplateConversation::Sent(std::size_t bytes)
{
    output.erase(0, bytes);
    Count(counters.bytesOut, bytes);
}

TemplateConversation::Step TemplateConversation::NextStep() const
{
    return step;
}

uint64 TemplateConversation::ProgressCount() const
{
    return answered;
}

bool TemplateConversation::MayBeSilent() const
{
    return true; // a client that only listens stays connected
}

void TemplateConversation::AnswerLines()
{
    auto const end = input.begin() + static_cast<std::ptrdiff_t>(inputBytes);
    auto begin = input.begin();
    for (auto lineEnd = std::find(begin, end, '\n'); lineEnd != end; lineEnd = std::find(begin, end, '\n'))
    {
        try
        {
            output += answer(std::string_view(begin, lineEnd));
        }
        catch (...)
        {
            output += "error " + Zu::CaughtText(); // a refusal: the client gets its text
        }
        output += '\n';
        begin = lineEnd + 1;
        ++answered;
        Count(counters.requests);
    }
    std::copy(begin, end, input.begin());
    inputBytes = static_cast<std::size_t>(end - begin);
}
