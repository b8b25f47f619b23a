#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuPipe/PipeDataType.h"
#include "wApi/wExport.h"

namespace ZuPipe
{

/// A data format of the pipeline.
class ZUPLATFORM_API PipeDataFormatProps final : public Zu::Params::Group
{
public:
    PipeDataFormatProps();
    ~PipeDataFormatProps() override;

    PipeDataFormatProps(PipeDataFormatProps const&) = delete;
    PipeDataFormatProps& operator=(PipeDataFormatProps const&) = delete;

    Zu::Params::Value<PipeDataType> type;
    Zu::Params::Value<bool> arrayed; ///< one message carries several values
};

} // namespace ZuPipe
