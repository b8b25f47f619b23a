#include "Plugins/ModbusTcp/IRegisterModel.h"

namespace ModbusTcp
{

IRegisterModel::~IRegisterModel() = default;

} // namespace ModbusTcp
