#pragma once

#include "Support/CallLog.h"
#include "ZuApi/Exception.h"
#include "ZuCommon/Persistence.h"
#include "ZuControl/Control/ControlModuleEnviron.h"

#include <string>

namespace ZuTest
{

/// Answers as the test has set, and records the questions.
class FakeDeployment final : public ZuControl::IDeploymentQuery
{
public:
    bool IsPhysicalSensor() override
    {
        return Asked("physical sensor", physicalSensor);
    }

    bool IsPhysicalBrackle() override
    {
        return Asked("physical brackle", physicalBrackle);
    }

    bool IsVirtualSensor() override
    {
        return Asked("virtual sensor", virtualSensor);
    }

    bool IsVirtualBrackle() override
    {
        return Asked("virtual brackle", virtualBrackle);
    }

    bool IsTavrinServiceApp() override
    {
        return Asked("service app", tavrinServiceApp);
    }

    CallLog asked;
    bool physicalSensor = false;
    bool physicalBrackle = false;
    bool virtualSensor = false;
    bool virtualBrackle = false;
    bool tavrinServiceApp = false;

private:
    bool Asked(char const* question, bool answer)
    {
        asked.Add(question);
        return answer;
    }
};

/// Records registrations and marks.
class FakePersistRegistry final : public ZuControl::IPersistRegistry
{
public:
    explicit FakePersistRegistry(CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    uint64 Register(ZuCommon::IPersistHandler& handler, std::string const& name) override
    {
        calls.Add("Register(" + handler.Component() + ",'" + name + "')");
        return 17;
    }

    void Deregister(uint64 id) override
    {
        calls.Add("Deregister(" + std::to_string(id) + ")");
        if (failing)
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "not registered");
        }
    }

    void MarkModified(ZuCommon::IPersistHandler& /*handler*/, ZuCommon::PersistDomain domain,
                      uint64 /*reserved*/) override
    {
        calls.Add("MarkModified(" + std::to_string(static_cast<int32>(domain)) + ")");
    }

    bool failing = false;

private:
    CallLog& calls;
};

} // namespace ZuTest
