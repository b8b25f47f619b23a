#pragma once

#include "ZuApi/ValueBase.h"

#include <string>

namespace Zu::Properties::Internal
{

/// The JSON type name in a schema. It has no schema entries of its own.
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

    /// Returns the process-wide node of a kind, which all values of that type refer to. It never changes.
    static NodeType& Shared(Kind kind);

    /// Copies the name. A shared node throws `Zu::Status::WRITE_ONLY_REFUSED` if `other` has a different name.
    void CopyValues(Node const& other) override;

    /// Throws `Zu::Status::WRITE_ONLY_REFUSED` for true: a type name can always be read. False does nothing.
    void SetWriteOnly(bool newWriteOnly) override;

    /// Throws `Zu::Status::NOT_SUPPORTED`: a type name cannot be set from outside. `ValidateValue` does the same.
    void ReadValue(IValueReader& reader) override;
    void WriteValue(IValueWriter& writer) const override;
    void ValidateValue(IValueReader& reader) override;

    std::string const& Get() const noexcept;

private:
    NodeType(char const* newName, bool isShared);

    std::string name;
    bool const shared = false;
};

/// Gives a shared type node the access of a member without the size of a node.
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

    operator std::string const&() const // usable like a value of type string
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
