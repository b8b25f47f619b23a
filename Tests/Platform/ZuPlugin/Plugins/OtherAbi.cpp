// Claims to be built with another JSON library. Reports when any of its code runs.

#include "ZuPlugin/IPlugin.h"
#include "wApi/wTypes.h"

#include <cstdlib>
#include <memory>

namespace
{

bool const RAN = setenv("ZU_TEST_OTHER_ABI_RAN", "1", 1) == 0;

} // namespace

#define EXPORTED __attribute__((visibility("default")))

extern "C"
{
    EXPORTED extern char const ZuPlugin_AbiText[];
    char const ZuPlugin_AbiText[] = OTHER_ABI_TEXT;

    EXPORTED char const* ZuPlugin_Abi()
    {
        return ZuPlugin_AbiText;
    }

    EXPORTED uint64 ZuPlugin_Count()
    {
        return RAN ? 1 : 0;
    }

    EXPORTED wStatus ZuPlugin_At(uint64, std::shared_ptr<ZuPlugin::IPlugin>&)
    {
        return Zu::Status::NOT_FOUND;
    }
}
