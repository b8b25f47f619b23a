#include "ZuControl/ControlProtocol/RegisterBlockCategory.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuControl::ControlProtocol::RegisterBlockCategory);
