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
    : isChunked(newIsChunked), wake(std::move(newWake))
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
    {
        Zu::MutexLock const guard(lock);
        if (hasEnded || isClosed)
        {
            return;
        }
        waiting += isChunked ? ChunkOf(part) : part;
        if (!MustWake())
        {
            return;
        }
    }
    wake();
}

void BodyBuffer::End()
{
    {
        Zu::MutexLock const guard(lock);
        if (hasEnded || isClosed)
        {
            return;
        }
        hasEnded = true;
        waiting += isChunked ? LAST_CHUNK : "";
        if (!MustWake())
        {
            return;
        }
    }
    wake();
}

BodyBuffer::Piece BodyBuffer::Take()
{
    Zu::MutexLock const guard(lock);
    isAwake = false;
    return {std::exchange(waiting, {}), hasEnded};
}

void BodyBuffer::Close()
{
    Zu::MutexLock const guard(lock);
    isClosed = true;
    waiting.clear();
}

bool BodyBuffer::MustWake()
{
    return !std::exchange(isAwake, true);
}

} // namespace ZuHost
