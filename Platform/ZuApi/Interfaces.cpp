// The destructors of this folder's interfaces.

#include "ZuApi/INodeVisitor.h"
#include "ZuApi/IValueIo.h"

namespace Zu::Properties
{

INodeVisitor::~INodeVisitor() = default;

INodeVisitorConst::~INodeVisitorConst() = default;

IValueReader::~IValueReader() = default;

IValueWriter::~IValueWriter() = default;

IValueIo::~IValueIo() = default;

} // namespace Zu::Properties
