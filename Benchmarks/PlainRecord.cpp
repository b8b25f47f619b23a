#include "PlainRecord.h"

namespace ZuBench
{

PlainRecord::PlainRecord()
{
    Register("id", "Id", "integer");
    Register("size", "Size", "integer");
    Register("source", "Source", "string");
    Register("offset", "Offset", "integer");
    Register("length", "Length", "integer");
}

PlainRecord::~PlainRecord() = default;

void PlainRecord::Register(std::string const& key, std::string const& title, char const* type)
{
    auto node = std::make_unique<Node>();
    for (char const* const entry : {"type", "title", "sortOrder", "readOnly", "minimum"})
    {
        node->schema.emplace(entry, std::make_unique<Entry>());
    }
    node->schema["type"]->text = type;
    node->schema["title"]->text = title;
    node->schema["sortOrder"]->number = 100.0 * static_cast<double>(order.size());
    members.emplace(key, std::move(node));
    order.push_back(key);
}

} // namespace ZuBench
