#pragma once

#include <cstddef>

namespace Zu::Internal
{

/// The label of an operation of a record queue, such as "Zu::MsgQueue<struct ZuControl::EndOfOpResult>::Add". It is
/// extracted at compile time from __PRETTY_FUNCTION__ of a function template with the record as its parameter. Unnamed
/// namespaces are left out.
struct MsgQueueLabel
{
    static constexpr std::size_t CAPACITY = 256;

    template <typename Record>
    static consteval MsgQueueLabel Of(char const* operation)
    {
        return {__PRETTY_FUNCTION__, sizeof(__PRETTY_FUNCTION__) - 1, operation};
    }

    char text[CAPACITY] = {};

private:
    consteval MsgQueueLabel(char const* pretty, std::size_t size, char const* operation)
    {
        Append("Zu::MsgQueue<struct ", CAPACITY);
        std::size_t const end = EndOfRecord(pretty, size);
        for (std::size_t i = StartOfRecord(pretty, size); i < end; ++i)
        {
            std::size_t const skipped = UnnamedNamespace(pretty + i, end - i);
            if (skipped == 0)
            {
                Append(pretty + i, 1);
            }
            else
            {
                i += skipped - 1;
            }
        }
        Append(">::", CAPACITY);
        Append(operation, CAPACITY);
    }

    consteval void Append(char const* what, std::size_t count)
    {
        for (std::size_t i = 0; i < count && what[i] != '\0' && length + 1 < CAPACITY; ++i)
        {
            text[length++] = what[i];
        }
    }

    static consteval bool StartsWith(char const* where, std::size_t available, char const* what)
    {
        std::size_t i = 0;
        while (what[i] != '\0' && i < available && where[i] == what[i])
        {
            ++i;
        }
        return what[i] == '\0';
    }

    /// The number of characters that an unnamed namespace takes here, in the spelling of either compiler; 0 if there is
    /// none.
    static consteval std::size_t UnnamedNamespace(char const* where, std::size_t available)
    {
        if (StartsWith(where, available, "{anonymous}::"))
        {
            return 13;
        }
        return StartsWith(where, available, "(anonymous namespace)::") ? 23 : 0;
    }

    /// The position after "Record = ", which both compilers write before the name of the record.
    static consteval std::size_t StartOfRecord(char const* pretty, std::size_t size)
    {
        std::size_t i = 0;
        while (i < size && !StartsWith(pretty + i, size - i, "Record = "))
        {
            ++i;
        }
        return i < size ? i + 9 : size;
    }

    /// The position of the last bracket, with which both compilers end the template arguments and so the name.
    static consteval std::size_t EndOfRecord(char const* pretty, std::size_t size)
    {
        while (size > 0 && pretty[size - 1] != ']')
        {
            --size;
        }
        return size > 0 ? size - 1 : 0;
    }

    std::size_t length = 0;
};

} // namespace Zu::Internal
