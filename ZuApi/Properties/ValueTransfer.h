#pragma once

#include "ZuApi/Exception.h"
#include "ZuApi/IValueIo.h"
#include "ZuApi/NodeType.h"

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zu::Properties::Internal
{

/// The JSON type of a C++ type, and its transfer through readers and writers. One specialisation for each supported
/// type.
template <typename T>
struct ValueTransfer;

template <>
struct ValueTransfer<bool>
{
    static constexpr NodeType::Kind KIND = NodeType::Kind::BOOLEAN;
    static bool Read(IValueReader& reader)
    {
        return reader.ReadBool();
    }
    static void Write(IValueWriter& writer, bool value)
    {
        writer.WriteBool(value);
    }
};

template <>
struct ValueTransfer<std::string>
{
    static constexpr NodeType::Kind KIND = NodeType::Kind::STRING;
    static std::string Read(IValueReader& reader)
    {
        return reader.ReadString();
    }
    static void Write(IValueWriter& writer, std::string const& value)
    {
        writer.WriteString(value);
    }
};

template <>
struct ValueTransfer<double>
{
    static constexpr NodeType::Kind KIND = NodeType::Kind::NUMBER;
    static double Read(IValueReader& reader)
    {
        return reader.ReadDouble();
    }
    static void Write(IValueWriter& writer, double value)
    {
        writer.WriteDouble(value);
    }
};

template <>
struct ValueTransfer<uint16>
{
    static constexpr NodeType::Kind KIND = NodeType::Kind::INTEGER;
    static uint16 Read(IValueReader& reader)
    {
        return reader.ReadUint16();
    }
    static void Write(IValueWriter& writer, uint16 value)
    {
        writer.WriteUint16(value);
    }
};

template <>
struct ValueTransfer<uint32>
{
    static constexpr NodeType::Kind KIND = NodeType::Kind::INTEGER;
    static uint32 Read(IValueReader& reader)
    {
        return reader.ReadUint32();
    }
    static void Write(IValueWriter& writer, uint32 value)
    {
        writer.WriteUint32(value);
    }
};

template <>
struct ValueTransfer<uint64>
{
    static constexpr NodeType::Kind KIND = NodeType::Kind::INTEGER;
    static uint64 Read(IValueReader& reader)
    {
        return reader.ReadUint64();
    }
    static void Write(IValueWriter& writer, uint64 value)
    {
        writer.WriteUint64(value);
    }
};

template <>
struct ValueTransfer<int32>
{
    static constexpr NodeType::Kind KIND = NodeType::Kind::INTEGER;
    static int32 Read(IValueReader& reader)
    {
        return reader.ReadInt32();
    }
    static void Write(IValueWriter& writer, int32 value)
    {
        writer.WriteInt32(value);
    }
};

/// An enumeration is stored and transferred as its integer. Reading throws `Zu::Status::BAD_ARGUMENT` for a number that
/// its integer type cannot hold.
template <typename T>
requires std::is_enum_v<T>
struct ValueTransfer<T>
{
    using Integer = std::underlying_type_t<T>;
    static_assert(std::is_unsigned_v<Integer> || sizeof(Integer) <= sizeof(int32),
                  "there is no signed 64-bit transfer");
    using Carrier = std::conditional_t<std::is_signed_v<Integer>, int32,
                                       std::conditional_t<sizeof(Integer) <= sizeof(uint32), uint32, uint64>>;

    static constexpr NodeType::Kind KIND = NodeType::Kind::INTEGER;

    static T Read(IValueReader& reader)
    {
        Carrier const number = ValueTransfer<Carrier>::Read(reader);
        if (!std::in_range<Integer>(number))
        {
            ZU_THROW(Status::BAD_ARGUMENT, "The number is out of range.");
        }
        return static_cast<T>(static_cast<Integer>(number)); // in range: tested above
    }

    static void Write(IValueWriter& writer, T value)
    {
        ValueTransfer<Carrier>::Write(writer, static_cast<Carrier>(static_cast<Integer>(value)));
    }
};

template <typename Element>
struct ValueTransfer<std::vector<Element>>
{
    static_assert(std::is_same_v<Element, std::string> || std::is_enum_v<Element>, "see SharedItems");

    static constexpr NodeType::Kind KIND = NodeType::Kind::ARRAY;
    static constexpr NodeType::Kind ITEM_KIND = ValueTransfer<Element>::KIND;

    static std::vector<Element> Read(IValueReader& reader)
    {
        std::vector<Element> elements;
        reader.BeginArray();
        while (reader.NextElement())
        {
            elements.push_back(ValueTransfer<Element>::Read(reader));
        }
        reader.EndArray();
        return elements;
    }

    static void Write(IValueWriter& writer, std::vector<Element> const& elements)
    {
        writer.BeginArray();
        for (Element const& element : elements)
        {
            writer.NextElement();
            ValueTransfer<Element>::Write(writer, element);
        }
        writer.EndArray();
    }
};

/// Returns the schema of the elements of an array value: a bare structure that all values of the type share.
ZUAPI_API Structure& SharedItems(NodeType::Kind kind);

template <typename T>
constexpr NodeType::Kind ItemKind()
{
    if constexpr (requires { ValueTransfer<T>::ITEM_KIND; })
    {
        return ValueTransfer<T>::ITEM_KIND;
    }
    else
    {
        return NodeType::Kind::NONE;
    }
}

} // namespace Zu::Properties::Internal
