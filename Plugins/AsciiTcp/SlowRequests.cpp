#include "Plugins/AsciiTcp/SlowRequests.h"

#include "Plugins/AsciiTcp/AsciiText.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuControl/Control/ControlHardware.h"
#include "ZuControl/Control/IControlHardware.h"
#include "ZuControl/Control/IControlResourceAdaptor.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace AsciiTcp
{

using ZuControl::IControlHardware;
using HardwareType = IControlHardware::ZuHardwareIOType;

namespace
{

/// An argument, split into the index of an output and the rest.
struct IndexedArgument
{
    uint64 index = 0;
    std::string_view rest;
};

template <typename Number>
bool ReadNumber(std::string_view text, Number& number)
{
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size();
}

/// Returns false if there is no index or nothing after it.
bool Split(std::string_view argument, IndexedArgument& split)
{
    std::size_t const end = argument.find_first_of(" \t");
    std::size_t const rest = std::min(argument.find_first_not_of(" \t", end), argument.size());
    split.rest = argument.substr(rest);
    return end != std::string_view::npos && !split.rest.empty() && ReadNumber(argument.substr(0, end), split.index);
}

/// The text for a client if an exception has none.
char const* TextOf(int32 status)
{
    switch (status)
    {
    case Zu::Status::NOT_FOUND:
        return "There is no such output";
    case Zu::Status::BUSY:
        return "Another read is running";
    case Zu::Status::NOT_OFFERED:
        return "The resource gave no answer in time";
    default:
        return "The request is refused";
    }
}

template <typename Output>
Output& Find(ZuControl::IControlHardwareManager& hardware, HardwareType type, uint64 index)
{
    return dynamic_cast<Output&>(hardware.GetHardwareInterface(type, index));
}

std::string AnswerOf(std::function<std::string()> const& task)
{
    std::string line;
    try
    {
        line = "OK" + task();
    }
    catch (Zu::Exception const& exception)
    {
        std::string const text = exception.what();
        AppendError(line, exception.Status(), text.empty() ? TextOf(exception.Status()) : text);
    }
    catch (...)
    {
        AppendError(line, Zu::Status::FAILURE, Zu::CaughtText());
    }
    return line;
}

} // namespace

SlowRequests::SlowRequests(ZuControl::IControlHardwareManager* usedHardware,
                           ZuControl::IControlResourceAdaptor* usedResources, Answered whenAnswered)
    : hardware(usedHardware), resources(usedResources), answered(std::move(whenAnswered))
{
}

SlowRequests::~SlowRequests()
{
    Zu::MutexLock const guard(lock);
    waiting.clear(); // the worker runs no further request
}

uint64 SlowRequests::Begin(AsciiRequest const& request)
{
    Task task = TaskOf(request);
    Zu::MutexLock const guard(lock);
    if (waiting.size() >= MOST_WAITING)
    {
        ZU_THROW(Zu::Status::BUSY, "Too many requests wait for the sensor or the application");
    }
    waiting.push_back({++lastTicket, std::move(task)});
    if (!isWorking)
    {
        worker.Run([this] { RunAll(); });
        isWorking = true;
    }
    return lastTicket;
}

void SlowRequests::Abandon(uint64 ticket)
{
    Zu::MutexLock const guard(lock);
    std::erase_if(waiting, [ticket](Waiting const& request) { return request.ticket == ticket; });
}

bool SlowRequests::TakeNext(Waiting& next)
{
    Zu::MutexLock const guard(lock);
    isWorking = !waiting.empty();
    if (isWorking)
    {
        next = std::move(waiting.front());
        waiting.pop_front();
    }
    return isWorking;
}

void SlowRequests::RunAll()
{
    for (Waiting next; TakeNext(next);)
    {
        ZU_GUARD_BOUNDARY([&] { answered(next.ticket, AnswerOf(next.task)); }); // the next request runs after all
    }
}

SlowRequests::Task SlowRequests::TaskOf(AsciiRequest const& request)
{
    switch (request.verb)
    {
    case AsciiRequest::Verb::DOUT:
        return DigitalOutputTask(request.argument);
    case AsciiRequest::Verb::AOUT:
        return AnalogOutputTask(request.argument);
    case AsciiRequest::Verb::SERIAL:
        return SerialOutputTask(request.argument);
    default:
        return ReadTask(request.argument);
    }
}

SlowRequests::Task SlowRequests::DigitalOutputTask(std::string_view argument)
{
    IndexedArgument split;
    if (!Split(argument, split) || (split.rest != "0" && split.rest != "1"))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "DOUT needs the index of an output and 0 or 1");
    }
    return [&outputs = Hardware(), index = split.index, state = split.rest == "1"] {
        Find<ZuControl::ControlDigitalOutput>(outputs, HardwareType::DIGITAL_OUTPUT, index).SetControlState(state);
        return std::string();
    };
}

SlowRequests::Task SlowRequests::AnalogOutputTask(std::string_view argument)
{
    IndexedArgument split;
    double current = 0;
    if (!Split(argument, split) || !ReadNumber(split.rest, current) || !std::isfinite(current))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "AOUT needs the index of an output and a current in mA");
    }
    return [&outputs = Hardware(), index = split.index, current] {
        Find<ZuControl::ControlAnalogOutput>(outputs, HardwareType::ANALOG_OUTPUT, index).EnqueueOutput(current);
        return std::string();
    };
}

SlowRequests::Task SlowRequests::SerialOutputTask(std::string_view argument)
{
    IndexedArgument split;
    if (!Split(argument, split))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "SERIAL needs the index of an output and a text");
    }
    return [&outputs = Hardware(), index = split.index, text = std::string(split.rest)] {
        Find<ZuControl::ControlSerialOutput>(outputs, HardwareType::SERIAL_OUTPUT, index).Write(text.c_str());
        return std::string();
    };
}

SlowRequests::Task SlowRequests::ReadTask(std::string_view path)
{
    if (resources == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "This system has no resources to read");
    }
    return [&readable = *resources, kept = std::string(path)] {
        std::string json;
        readable.Read(kept, json, READ_TIMEOUT_USEC);
        if (json.size() > MOST_BYTES_READ)
        {
            ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE, "The resource has more than %u bytes",
                     static_cast<unsigned>(MOST_BYTES_READ));
        }
        return " " + json;
    };
}

ZuControl::IControlHardwareManager& SlowRequests::Hardware() const
{
    if (hardware == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "This system has no outputs");
    }
    return *hardware;
}

} // namespace AsciiTcp
