#include "ZuApi/Params/Palette.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuTest::Colour);
