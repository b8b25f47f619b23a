#pragma once

#include "Support/FakeControlInstance.h"
#include "ZuControl/Control/IControlManager.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZuTest
{

/// A manager of the instances that the test puts into it.
class FakeControlManager final : public ZuControl::IControlManager
{
public:
    explicit FakeControlManager(CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    FakeControlInstance& Put(std::string const& typeName)
    {
        auto& instance = instances[typeName];
        instance = std::make_unique<FakeControlInstance>(calls, typeName);
        return *instance;
    }

    std::string Component() override
    {
        return "fake";
    }

    void InitPersistDomain(ZuCommon::PersistDomain /*domain*/, ZuCommon::IPersistStore& /*store*/) override
    {
    }

    void LoadPersistDomain(ZuCommon::PersistDomain /*domain*/, ZuCommon::IPersistStore const& /*store*/) override
    {
    }

    void SavePersistDomain(ZuCommon::PersistDomain /*domain*/, ZuCommon::IPersistStore& /*store*/) override
    {
    }

    std::vector<std::string> List() const override
    {
        std::vector<std::string> names;
        for (auto const& [name, instance] : instances)
        {
            names.push_back(name);
        }
        return names;
    }

    ZuControl::IControlInstance& GetInstance(std::string const& typeName) override
    {
        auto const position = instances.find(typeName);
        if (position == instances.end())
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "Control protocol type not recognized: '%s'.", typeName.c_str());
        }
        return *position->second;
    }

    CallbackId AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> handler) override
    {
        return loadEvent.Add(std::move(handler));
    }

    void RemovePersistenceLoadEventHandler(CallbackId id) override
    {
        loadEvent.Remove(id);
    }

    Zu::Event<PersistenceLoadOpState> loadEvent;

private:
    CallLog& calls;
    std::map<std::string, std::unique_ptr<FakeControlInstance>> instances;
};

} // namespace ZuTest
