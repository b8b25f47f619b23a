#include "ZuCommon/IPersistStore.h"

namespace ZuCommon
{

IPersistStore::~IPersistStore() = default;

} // namespace ZuCommon
