#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuPipe/PipeDataType.h"
#include "wApi/wExport.h"

namespace ZuPipe
{

/// A form in which data of the pipeline comes.
class ZUPLATFORM_API PipeDataFormatProps final : public Zu::Params::Group
{
public:
    PipeDataFormatProps();
    ~PipeDataFormatProps() override;

    PipeDataFormatProps(PipeDataFormatProps const&) = delete;
    PipeDataFormatProps& operator=(PipeDataFormatProps const&) = delete;

    Zu::Params::Value<PipeDataType> type;
    Zu::Params::Value<bool> arrayed; ///< several of them in one message
};

} // namespace ZuPipe
