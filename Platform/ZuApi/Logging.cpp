#include "ZuApi/Logging.h"

#include "ZuApi/FormatText.h"
#include "wApi/wMutex.h"

#include <cstdarg>
#include <string>
#include <vector>

namespace Zu::Logging
{

namespace
{

using Sinks = std::vector<std::shared_ptr<ISink>>;

/// The sinks of the process: an immutable list that is replaced as a whole, so that a line in progress keeps its list.
struct Registry
{
    Zu::Mutex lock; // held to copy or replace the pointer. Under it `ISink::Wants` runs, but never `ISink::Write`
    std::shared_ptr<Sinks const> sinks ZU_GUARDED_BY(lock) = std::make_shared<Sinks>();
};

Registry& TheRegistry()
{
    static auto* const registry = new Registry; // never destroyed: destructors of statics may log
    return *registry;
}

constexpr uint64 ALL_KINDS[] = {FLAGS_INFO,      FLAGS_WARNING,      FLAGS_ERROR,
                                FLAGS_USER_INFO, FLAGS_USER_WARNING, FLAGS_USER_ERROR};

void Replace(Registry& registry, std::shared_ptr<Sinks const> sinks) ZU_REQUIRES(registry.lock)
{
    uint32 wanted = 0;
    for (auto const& sink : *sinks)
    {
        for (uint64 const kind : ALL_KINDS)
        {
            wanted |= sink->Wants(kind) ? KindBit(kind) : 0;
        }
    }
    registry.sinks = std::move(sinks);
    wantedKinds.store(wanted, std::memory_order_relaxed);
}

std::shared_ptr<Sinks const> CurrentSinks()
{
    Registry& registry = TheRegistry();
    Zu::MutexLock const guard(registry.lock);
    return registry.sinks;
}

} // namespace

// Relaxed access only: it filters and publishes nothing. It is not a member of the registry, so that a test of it needs
// no check for the construction of a function-local static.
constinit std::atomic<uint32> wantedKinds{0};

ISink::~ISink() = default;

void AddSink(std::shared_ptr<ISink> sink)
{
    Registry& registry = TheRegistry();
    Zu::MutexLock const guard(registry.lock);
    auto sinks = std::make_shared<Sinks>(*registry.sinks);
    sinks->push_back(std::move(sink));
    Replace(registry, std::move(sinks));
}

void RemoveSink(std::shared_ptr<ISink> const& sink)
{
    Registry& registry = TheRegistry();
    Zu::MutexLock const guard(registry.lock);
    auto sinks = std::make_shared<Sinks>(*registry.sinks);
    std::erase(*sinks, sink);
    Replace(registry, std::move(sinks));
}

void AskSinksAgain()
{
    Registry& registry = TheRegistry();
    Zu::MutexLock const guard(registry.lock);
    Replace(registry, registry.sinks);
}

void Zu_Debug_Log(int line, char const* file, uint64 flags, char const* label, char const* format, ...)
{
    if (!IsWanted(flags))
    {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    std::string const text = FormatText(format, arguments);
    va_end(arguments);

    Entry const entry{line, file, flags, label, text.c_str()};
    auto const sinks = CurrentSinks();
    for (auto const& sink : *sinks)
    {
        if (sink->Wants(flags))
        {
            sink->Write(entry);
        }
    }
}

} // namespace Zu::Logging
