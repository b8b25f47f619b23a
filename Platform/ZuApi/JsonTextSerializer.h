#pragma once

#include "ZuApi/INodeVisitorConst.h"
#include "ZuApi/JsonTextWriter.h"

#include <cstddef>
#include <vector>

namespace Zu::Properties
{

class Node;

/// Nodes straight to text, for those who have no use for the document in between.
///
/// It remembers what the records look like that it has written: the second one of a class costs less than the first. One
/// thread at a time; of no more use once something was thrown.
class ZUAPI_API JsonTextSerializer final : private INodeVisitorConst
{
public:
    /// The writer outlives it.
    explicit JsonTextSerializer(JsonTextWriter& usedWriter);
    ~JsonTextSerializer() override;

    JsonTextSerializer(JsonTextSerializer const&) = delete;
    JsonTextSerializer& operator=(JsonTextSerializer const&) = delete;

    /// Writes what `JsonSerializer::Serialize` gives, dumped on one line, with what is no UTF-8 replaced.
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
    std::vector<Level> levels; // by how deep in one another records stand
    std::size_t depth = 0;
};

} // namespace Zu::Properties
