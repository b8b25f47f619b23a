#pragma once

#include "Support/FakeProtocol.h"
#include "Support/FakeScanResults.h"
#include "Support/FakeUpdateGate.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlInstance.h"

#include <gtest/gtest.h>

namespace ZuTest
{

/// An instance of the type "Fake" around a protocol that records its calls.
class InstanceFixture : public testing::Test
{
protected:
    InstanceFixture() : protocol(std::make_shared<FakeProtocol>(calls, 100))
    {
        info.SetTypeName("Fake");
        ZuControl::ControlInstanceParams params{&info, &gate, &scanResults, &problems, protocol};
        instance = std::make_unique<ZuControl::ControlInstance>(params);
        calls.Clear();
    }

    CallLog calls;
    ZuControl::ControlInfo info;
    FakeUpdateGate gate{calls};
    FakeScanResults scanResults{calls};
    ZuCommon::ProblemsManager problems;
    std::shared_ptr<FakeProtocol> protocol;
    std::unique_ptr<ZuControl::ControlInstance> instance;
};

} // namespace ZuTest
