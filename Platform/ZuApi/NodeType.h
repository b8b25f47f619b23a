#pragma once

#include "ZuApi/ValueBase.h"

#include <string>

namespace Zu::Properties::Internal
{

/// The JSON type name in a schema. It has no schema of its own.
class ZUAPI_API NodeType final : public ValueBase
{
public:
    enum class Kind : uint8
    {
        NONE, ///< the empty name
        BOOLEAN,
        INTEGER,
        NUMBER,
        STRING,
        ARRAY,
        OBJECT,
    };

    explicit NodeType(std::string newName = {});
    ~NodeType() override;

    /// The one node of a kind, that all values of a type refer to. It never changes.
    static NodeType& Shared(Kind kind);

    /// Takes over the name. A shared one keeps its own: -982 when the other has a different name.
    void CopyValues(Node const& other) override;

    /// -982 for true: a type name can always be read.
    void SetWriteOnly(bool newWriteOnly) override;

    /// -996: a type name cannot be read in.
    void ReadValue(IValueReader& reader) override;
    void WriteValue(IValueWriter& writer) const override;
    void ValidateValue(IValueReader& reader) override;

    std::string const& Get() const noexcept;

private:
    NodeType(char const* newName, bool isShared);

    std::string name;
    bool const shared = false;
};

/// The name of a shared type under the name of a member, without the room that a node takes.
class ZUAPI_API TypeHandle
{
public:
    constexpr explicit TypeHandle(NodeType::Kind newKind) noexcept : kind(newKind)
    {
    }

    std::string const& Get() const
    {
        return Node().Get();
    }

    operator std::string const&() const // reads like the value that it stands for
    {
        return Get();
    }

    NodeType& Node() const
    {
        return NodeType::Shared(kind);
    }

private:
    NodeType::Kind kind;
};

} // namespace Zu::Properties::Internal
