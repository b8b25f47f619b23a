#pragma once

#include "Support/CallLog.h"
#include "ZuControl/Control/ControlModuleEnviron.h"

namespace ZuTest
{

class FakeUpdateGate final : public ZuControl::IUpdateGate
{
public:
    explicit FakeUpdateGate(CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    void BeginUpdate(bool exclusive) override
    {
        calls.Add(exclusive ? "BeginUpdate(true)" : "BeginUpdate(false)");
    }

    void EndUpdate() override
    {
        calls.Add("EndUpdate");
    }

private:
    CallLog& calls;
};

} // namespace ZuTest
