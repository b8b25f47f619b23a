#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuPipe
{

/// The kind of data in a result of the pipeline. The numbers are those of the result types. The enumeration is exported
/// because a template over a hidden type is hidden too.
enum class ZUPLATFORM_API PipeDataType : int32
{
    NONE = 0,
    STAMP = 11,
    MEASUREMENT = 19
};

} // namespace ZuPipe

extern template class Zu::Properties::Value<ZuPipe::PipeDataType>;
extern template class Zu::Params::Value<ZuPipe::PipeDataType>;

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
