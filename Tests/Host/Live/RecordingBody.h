#pragma once

#include "Support/CallLog.h"
#include "ZuRest/IBodySink.h"

#include <atomic>
#include <string>
#include <utility>

namespace ZuHost
{

/// Records the parts of a body; its end as "end".
class RecordingBody final : public ZuRest::IBodySink
{
public:
    bool IsOpen() const override
    {
        return isOpen;
    }

    bool IsReady() const override
    {
        return isReady;
    }

    void Send(std::string part) override
    {
        parts.Add(part);
    }

    void End() override
    {
        isOpen = false;
        parts.Add("end");
    }

    ZuTest::CallLog parts;
    std::atomic<bool> isOpen{true};
    std::atomic<bool> isReady{true};
};

} // namespace ZuHost
