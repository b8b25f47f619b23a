#include "ZuApi/JsonTextSerializer.h"

#include "ZuApi/ArrayBase.h"
#include "ZuApi/INodeVisitorConst.h"
#include "ZuApi/JsonTextWriter.h"
#include "ZuApi/ReferenceArray.h"
#include "ZuApi/Structure.h"
#include "ZuApi/ValueBase.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Zu::Properties
{

namespace
{

class Serializer final : public INodeVisitorConst
{
public:
    explicit Serializer(std::string& writtenText) : text(writtenText), writer(writtenText)
    {
    }

    void Run(Node const& node)
    {
        if (node.IsWriteOnly())
        {
            text += "null";
            return;
        }
        node.Accept(*this);
    }

    void VisitValue(Internal::ValueBase const& value) override
    {
        value.WriteValue(writer);
    }

    void VisitStructure(Structure const& structure) override
    {
        std::size_t const begin = children.size();
        for (uint64 i = 0; i < structure.Count(); ++i)
        {
            if (!structure.At(i).IsWriteOnly())
            {
                children.emplace_back(&structure.KeyAt(i), &structure.At(i));
            }
        }
        std::sort(children.begin() + static_cast<std::ptrdiff_t>(begin), children.end(),
                  [](Child const& one, Child const& other) { return *one.first < *other.first; });
        text.push_back('{');
        for (std::size_t i = begin; i < children.size(); ++i)
        {
            Child const child = children[i]; // a copy: what is beneath it grows the list
            if (i != begin)
            {
                text.push_back(',');
            }
            writer.WriteString(*child.first);
            text.push_back(':');
            child.second->Accept(*this);
        }
        text.push_back('}');
        children.resize(begin);
    }

    void VisitArray(Internal::ArrayBase const& array) override
    {
        writer.BeginArray();
        for (uint64 i = 0; i < array.Count(); ++i)
        {
            writer.NextElement();
            Run(array.ElementAt(i));
        }
        writer.EndArray();
    }

    void VisitReferenceArray(Internal::ReferenceArray const& array) override
    {
        writer.BeginArray();
        for (uint64 i = 0; i < array.Count(); ++i)
        {
            writer.NextElement();
            Run(array.At(i));
        }
        writer.EndArray();
    }

private:
    using Child = std::pair<std::string const*, Node const*>;

    std::string& text;
    JsonTextWriter writer;
    std::vector<Child> children; // of the structures that are open, each sorted by key as a document has them
};

} // namespace

void JsonTextSerializer::Append(Node const& node, std::string& text)
{
    Serializer(text).Run(node);
}

} // namespace Zu::Properties
