#pragma once

#include "wApi/wExport.h"

#include <string>

namespace Zu::Properties
{

class Node;

/// Nodes straight to text, for those who have no use for the document in between.
class ZUAPI_API JsonTextSerializer
{
public:
    JsonTextSerializer() = delete;

    /// Appends what `JsonSerializer::Serialize` gives, dumped on one line, with what is no UTF-8 replaced.
    static void Append(Node const& node, std::string& text);
};

} // namespace Zu::Properties
