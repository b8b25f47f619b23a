#pragma once

#include "ZuApi/INodeVisitor.h"
#include "ZuApi/JsonTextWriter.h"

#include <cstddef>
#include <vector>

namespace Zu::Properties
{

class Node;

/// Writes nodes as JSON text without building a JSON document.
///
/// It caches the keys of the record classes that it has written: the second record of a class costs less than the
/// first. One thread at a time may use it. After an exception it must not be used again.
class ZUAPI_API JsonTextSerializer final : private INodeVisitorConst
{
public:
    /// `usedWriter` must outlive this object.
    explicit JsonTextSerializer(JsonTextWriter& usedWriter);
    ~JsonTextSerializer() override;

    JsonTextSerializer(JsonTextSerializer const&) = delete;
    JsonTextSerializer& operator=(JsonTextSerializer const&) = delete;

    /// Writes the document of `JsonSerializer::Serialize` on one line. Bytes that are not valid UTF-8 are replaced.
    void Write(Node const& node);

private:
    struct Shape;
    struct Level;

    void VisitValue(Internal::ValueBase const& value) override;
    void VisitStructure(Structure const& structure) override;
    void VisitArray(Internal::ArrayBase const& array) override;
    void VisitReferenceArray(Internal::ReferenceArray const& array) override;

    JsonTextWriter& writer;
    JsonTextWriter scratch;
    std::vector<Level> levels; // indexed by the nesting depth of the record
    std::size_t depth = 0;
};

} // namespace Zu::Properties
