#include "wApi/wString.h"

#include "wApi/wTypes.h"

#include <cstring>

wStatus wMemSet(void* destination, int value, std::size_t size)
{
    if (size == 0)
    {
        return Zu::Status::SUCCESS;
    }
    if (destination == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    std::memset(destination, value, size);
    return Zu::Status::SUCCESS;
}

bool wStrEquals(char const* left, char const* right)
{
    if (left == nullptr || right == nullptr)
    {
        return left == right;
    }
    return std::strcmp(left, right) == 0;
}

uint64 wStrLength(char const* text)
{
    return text != nullptr ? std::strlen(text) : 0;
}

char const* wStrFindFirst(char const* text, char const* pattern)
{
    return text != nullptr && pattern != nullptr ? std::strstr(text, pattern) : nullptr;
}

wStatus wStrCat(char* text, std::size_t capacity, char const* tail)
{
    if (text == nullptr || tail == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    std::size_t const length = strnlen(text, capacity);
    if (length == capacity)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    std::size_t const tailLength = std::strlen(tail);
    if (tailLength >= capacity - length)
    {
        return Zu::Status::WRONG_BUFFER_SIZE;
    }
    std::memmove(text + length, tail, tailLength); // memmove: `tail` may be a part of `text`
    text[length + tailLength] = '\0';
    return Zu::Status::SUCCESS;
}
