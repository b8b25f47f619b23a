#include "Plugins/AsciiTcp/AsciiConversation.h"

#include "Plugins/AsciiTcp/AsciiMetrics.h"
#include "Plugins/AsciiTcp/AsciiText.h"
#include "Plugins/AsciiTcp/DataFeed.h"
#include "Plugins/AsciiTcp/ForeignClient.h"
#include "ZuApi/Exception.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace AsciiTcp
{

IAsciiService::~IAsciiService() = default;

using namespace ZuControl::ControlProtocol;

AsciiConversation::AsciiConversation(IAsciiService& usedService, DataFeed& usedFeed, AsciiCounters& usedCounters)
    : service(usedService), feed(usedFeed), counters(usedCounters)
{
}

AsciiConversation::~AsciiConversation()
{
    if (awaited != 0)
    {
        service.Abandon(awaited);
    }
    Unsubscribe();
}

std::span<char> AsciiConversation::Room()
{
    if (hasInputEnded || isForeign || !HasRoomForAnswer())
    {
        return {};
    }
    if (inputFirst > 0)
    {
        std::memmove(input.data(), input.data() + inputFirst, inputEnd - inputFirst);
        inputEnd -= inputFirst;
        inputFirst = 0;
    }
    return std::span(input).subspan(inputEnd);
}

void AsciiConversation::Received(std::size_t bytes)
{
    inputEnd += bytes;
    Count(counters.bytesIn, bytes);
    AnswerAll();
}

void AsciiConversation::InputEnded()
{
    hasInputEnded = true;
}

std::string_view AsciiConversation::Pending() const
{
    return std::string_view(output).substr(outputFirst);
}

void AsciiConversation::Sent(std::size_t bytes)
{
    outputFirst += bytes;
    Count(counters.bytesOut, bytes);
    if (outputFirst == output.size() || outputFirst > FULL_BYTES)
    {
        output.erase(0, outputFirst);
        outputFirst = 0;
    }
    AnswerAll();
}

void AsciiConversation::TakeData()
{
    if (subscribed)
    {
        std::size_t const unsent = output.size() - outputFirst;
        Count(counters.controlDrops, feed.Read(nextLine, output, DATA_BYTES - std::min(unsent, DATA_BYTES)));
    }
}

bool AsciiConversation::OperationEnded(uint64 endedTicket, bool isDone)
{
    if (ticket == 0 || endedTicket != ticket)
    {
        return false;
    }
    ticket = 0;
    ++ended;
    output.append(isDone ? "DONE\n" : "FAILED\n");
    return true;
}

bool AsciiConversation::Answered(uint64 ticketOfAnswer, std::string_view line)
{
    if (awaited == 0 || ticketOfAnswer != awaited)
    {
        return false;
    }
    awaited = 0;
    output.append(line).push_back('\n');
    Count(counters.errors, line.starts_with("ERROR") ? 1 : 0);
    NoteAnswered(wTime_NowUsec() - awaitedSinceUsec);
    AnswerAll();
    return true;
}

void AsciiConversation::Tell(std::string_view line)
{
    if (!HasRoomForAnswer())
    {
        Count(counters.controlDrops);
        return;
    }
    output.append(line).push_back('\n');
}

AsciiConversation::Step AsciiConversation::NextStep() const
{
    if (isForeign)
    {
        return Step::DROP;
    }
    // Without pending output every complete line has been answered.
    return hasInputEnded && Pending().empty() && !MayBeSilent() ? Step::CLOSE : Step::CONTINUE;
}

bool AsciiConversation::HasRoomForAnswer() const
{
    return output.size() - outputFirst < FULL_BYTES;
}

void AsciiConversation::AnswerAll()
{
    std::string_view line;
    while (awaited == 0 && HasRoomForAnswer() && TakeLine(line))
    {
        Answer(line);
    }
}

/// Takes the next line from the input; `line` refers to the input. If a line is too long for the input, the part
/// received so far is returned and the rest is skipped. Returns false when there is no line yet, and when the client is
/// turned away.
bool AsciiConversation::TakeLine(std::string_view& line)
{
    while (true)
    {
        std::string_view const unread(input.data() + inputFirst, inputEnd - inputFirst);
        if (!isSkipping && IsTlsHello(unread)) // it need not have a line end
        {
            TurnAway();
            return false;
        }
        std::size_t const end = unread.find('\n');
        bool const isWhole = end != std::string_view::npos;
        bool const mayGrow = unread.size() <= AsciiRequest::MAX_BYTES + 1; // one byte more may be the carriage return
        if (!isWhole && !isSkipping && mayGrow)
        {
            return false;
        }
        bool const isRest = std::exchange(isSkipping, !isWhole);
        line = unread.substr(0, end);
        inputFirst += isWhole ? end + 1 : unread.size();
        NoteEnd(line, !isRest);
        if ((!isRest && IsHostField(line)) || (isWhole && EndsInHttpVersion(lineEnd)))
        {
            TurnAway();
        }
        if (!isRest) // a line that is too long is refused first, whatever the pieces in which it comes
        {
            return !isForeign || line.size() > AsciiRequest::MAX_BYTES + 1;
        }
        if (!isWhole || isForeign)
        {
            return false;
        }
    }
}

/// Keeps the last bytes of the line up to `part`.
void AsciiConversation::NoteEnd(std::string_view part, bool isBegin)
{
    lineEnd.resize(isBegin ? 0 : lineEnd.size());
    lineEnd.append(part.substr(part.size() - std::min(part.size(), HTTP_VERSION_BYTES)));
    lineEnd.erase(0, lineEnd.size() - std::min(lineEnd.size(), HTTP_VERSION_BYTES));
}

/// Ignores all further input of the client. `NextStep` then closes the connection.
void AsciiConversation::TurnAway()
{
    isForeign = true;
    inputFirst = inputEnd;
    Unsubscribe();
}

void AsciiConversation::Answer(std::string_view line)
{
    uint64 const beginUsec = wTime_NowUsec();
    std::size_t const before = output.size();
    try
    {
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        if (line.size() > AsciiRequest::MAX_BYTES)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "A request has at most %u bytes",
                     static_cast<unsigned>(AsciiRequest::MAX_BYTES));
        }
        AsciiRequest const request = AsciiRequest::Parse(line);
        CheckRole(request.verb);
        CarryOut(request);
        if (awaited != 0)
        {
            awaitedSinceUsec = beginUsec;
            return;
        }
    }
    catch (...)
    {
        std::string const text = Zu::CaughtText();
        output.resize(before); // removes an incomplete answer
        AppendError(output, Zu::CaughtStatus(), text.empty() ? "The request is refused" : text);
        Count(counters.errors);
    }
    output.push_back('\n');
    NoteAnswered(wTime_NowUsec() - beginUsec);
}

/// Throws `Zu::Status::NOT_OFFERED` for a request that the client's role does not allow.
void AsciiConversation::CheckRole(AsciiRequest::Verb verb)
{
    if (Client().role < AsciiRequest::RoleFor(verb))
    {
        Count(counters.deniedRequests);
        TellDenied(std::string(AsciiRequest::NameOf(verb)));
        ZU_THROW(Zu::Status::NOT_OFFERED, "%s",
                 Client().role == ZuCommon::Role::NONE ? "This client has no role" : "This client may only read");
    }
}

void AsciiConversation::CarryOut(AsciiRequest const& request)
{
    using Verb = AsciiRequest::Verb;
    switch (request.verb)
    {
    case Verb::GET:
        return Get(request.argument);
    case Verb::LIST:
        output.append("OK ");
        return service.AppendNames(output);
    case Verb::SUBSCRIBE:
        return Subscribe();
    case Verb::UNSUBSCRIBE:
        output.append("OK");
        return Unsubscribe();
    case Verb::START:
        return Begin(CommandStart, request.argument);
    case Verb::STOP:
        return Begin(CommandStop, request.argument);
    case Verb::ALIGN:
        return Begin(CommandAlign, request.argument);
    case Verb::CLEARALIGN:
        return Begin(CommandClearAlign, request.argument);
    case Verb::LOAD:
        return Begin(CommandLoadJob, request.argument);
    case Verb::TRIGGER:
        return Begin(CommandSoftwareTrigger, request.argument);
    case Verb::DOUT:
    case Verb::AOUT:
    case Verb::SERIAL:
    case Verb::READ:
        awaited = service.Ask(request);
        return;
    case Verb::STATUS:
        output.append("OK ");
        return service.AppendStatus(output);
    case Verb::HELP:
        output.append("OK ").append(AsciiRequest::Help());
        return;
    }
}

void AsciiConversation::Get(std::string_view argument)
{
    output.append("OK ");
    if (!service.AppendReading(output, ReadName(argument)))
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no output of this name");
    }
}

void AsciiConversation::Subscribe()
{
    output.append("OK");
    if (!subscribed)
    {
        feed.AddReader();
        subscribed = true;
        nextLine = feed.End();
    }
}

void AsciiConversation::Unsubscribe()
{
    if (subscribed)
    {
        feed.RemoveReader();
        subscribed = false;
    }
}

void AsciiConversation::Begin(IAsciiService::Command command, std::string_view argument)
{
    ticket = service.Begin(command, argument);
    output.append("OK");
}

void AsciiConversation::NoteAnswered(uint64 tookUsec)
{
    ++answered;
    Count(counters.requests);
    counters.NoteHandling(tookUsec);
}

} // namespace AsciiTcp
