#include "Host/Http/BodyBuffer.h"

#include <array>
#include <cstdio>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr char const* LINE_END = "\r\n";
constexpr char const* LAST_CHUNK = "0\r\n\r\n";

std::string ChunkOf(std::string const& part)
{
    std::array<char, 24> size{};
    std::snprintf(size.data(), size.size(), "%zx\r\n", part.size());
    return size.data() + part + LINE_END;
}

} // namespace

BodyBuffer::BodyBuffer(bool newIsChunked, std::function<void()> newWake)
    : isChunked(newIsChunked), wake(std::make_shared<std::function<void()> const>(std::move(newWake)))
{
}

BodyBuffer::~BodyBuffer() = default;

bool BodyBuffer::IsOpen() const
{
    Zu::MutexLock const guard(lock);
    return !hasEnded && !isClosed;
}

bool BodyBuffer::IsReady() const
{
    Zu::MutexLock const guard(lock);
    return waiting.empty();
}

void BodyBuffer::Send(std::string part)
{
    if (part.empty())
    {
        return; // an empty chunk would end the body
    }
    Wake call;
    {
        Zu::MutexLock const guard(lock);
        if (hasEnded || isClosed)
        {
            return;
        }
        waiting += isChunked ? ChunkOf(part) : part;
        call = WakeOnce();
    }
    if (call != nullptr)
    {
        (*call)();
    }
}

void BodyBuffer::End()
{
    Wake call;
    {
        Zu::MutexLock const guard(lock);
        if (hasEnded || isClosed)
        {
            return;
        }
        hasEnded = true;
        waiting += isChunked ? LAST_CHUNK : "";
        call = WakeOnce();
    }
    if (call != nullptr)
    {
        (*call)();
    }
}

BodyBuffer::Piece BodyBuffer::Take()
{
    Wake unused; // is destroyed without the lock
    Zu::MutexLock const guard(lock);
    isAwake = false;
    if (hasEnded)
    {
        unused = std::move(wake);
    }
    return {std::exchange(waiting, {}), hasEnded};
}

void BodyBuffer::Close()
{
    Wake unused; // is destroyed without the lock
    Zu::MutexLock const guard(lock);
    unused = std::move(wake);
    isClosed = true;
    waiting.clear();
}

/// The function that the caller is to call without the lock; null if the connection is awake already.
BodyBuffer::Wake BodyBuffer::WakeOnce()
{
    return std::exchange(isAwake, true) ? nullptr : wake;
}

} // namespace ZuHost
