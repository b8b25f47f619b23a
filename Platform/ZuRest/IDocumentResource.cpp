#include "ZuRest/IDocumentResource.h"

namespace ZuRest
{

IDocumentResource::~IDocumentResource() = default;

} // namespace ZuRest
