#include "Host/Module/PersistRegistry.h"

#include "Host/Jobs/DocumentStore.h"
#include "ZuApi/Exception.h"
#include "ZuControl/Control/IControlManager.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

using ZuCommon::IPersistStore;
using ZuCommon::PersistDomain;

class OtherHandler final : public ZuCommon::IPersistHandler
{
public:
    std::string Component() override
    {
        return "Other";
    }

    void InitPersistDomain(PersistDomain /*domain*/, IPersistStore& /*store*/) override
    {
    }

    void LoadPersistDomain(PersistDomain /*domain*/, IPersistStore const& /*store*/) override
    {
    }

    void SavePersistDomain(PersistDomain /*domain*/, IPersistStore& /*store*/) override
    {
    }
};

class CountingHandler final : public ZuCommon::IPersistHandler
{
public:
    std::string Component() override
    {
        return "Counting";
    }

    void InitPersistDomain(PersistDomain domain, IPersistStore& /*store*/) override
    {
        Note("init ", domain);
    }

    void LoadPersistDomain(PersistDomain domain, IPersistStore const& /*store*/) override
    {
        Note("load ", domain);
    }

    void SavePersistDomain(PersistDomain domain, IPersistStore& /*store*/) override
    {
        Note("save ", domain);
    }

    std::vector<std::string> calls;

private:
    void Note(char const* call, PersistDomain domain)
    {
        calls.push_back(call + std::to_string(static_cast<int>(domain)));
    }
};

class Manager final : public ZuControl::IControlManager
{
public:
    std::string Component() override
    {
        return "ControlManager";
    }

    void InitPersistDomain(PersistDomain /*domain*/, IPersistStore& /*store*/) override
    {
    }

    void LoadPersistDomain(PersistDomain /*domain*/, IPersistStore const& /*store*/) override
    {
    }

    void SavePersistDomain(PersistDomain /*domain*/, IPersistStore& /*store*/) override
    {
    }

    std::vector<std::string> List() const override
    {
        return {};
    }

    ZuControl::IControlInstance& GetInstance(std::string const& /*typeName*/) override
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }

    CallbackId AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> /*handler*/) override
    {
        return {};
    }

    void RemovePersistenceLoadEventHandler(CallbackId /*id*/) override
    {
    }
};

} // namespace

TEST(PersistRegistry, FindsTheManagerAmongThoseThatHaveRegistered)
{
    PersistRegistry registry;
    OtherHandler other;
    Manager manager;

    uint64 const otherId = registry.Register(other, "other");
    uint64 const managerId = registry.Register(manager, "");

    EXPECT_NE(otherId, managerId);
    EXPECT_EQ(&registry.Controls(), &manager);
    registry.Deregister(otherId);
    EXPECT_EQ(&registry.Controls(), &manager);
}

TEST(PersistRegistry, HasNoManagerBeforeAndBehindItsRegistration)
{
    PersistRegistry registry;
    Manager manager;
    EXPECT_THROW(registry.Controls(), Zu::Exception);

    registry.Deregister(registry.Register(manager, ""));

    EXPECT_THROW(registry.Controls(), Zu::Exception);
    registry.Deregister(7); // an id that was never given out is ignored
}

TEST(PersistRegistry, HasAllThatHaveRegisteredGoThroughAnOperation)
{
    PersistRegistry registry;
    CountingHandler first;
    CountingHandler second;
    DocumentStore store;
    registry.Register(first, "first");
    uint64 const id = registry.Register(second, "second");

    registry.Init(PersistDomain::PROTOCOL, store);
    registry.Load(PersistDomain::JOB, store);
    registry.Deregister(id);
    registry.Save(PersistDomain::JOB, store);

    EXPECT_EQ(first.calls, (std::vector<std::string>{"init 1", "load 2", "save 2"}));
    EXPECT_EQ(second.calls, (std::vector<std::string>{"init 1", "load 2"}));
}

TEST(PersistRegistry, TellsOneOfEachModification)
{
    PersistRegistry registry;
    Manager manager;
    unsigned told = 0;
    registry.SetModifiedHandler([&] {
        ++told;
        EXPECT_EQ(registry.ModificationCount(), told) << "counted before it is told, and under no lock";
    });

    registry.MarkModified(manager, PersistDomain::JOB, 0);
    registry.MarkModified(manager, PersistDomain::JOB, 0);
    registry.SetModifiedHandler({});
    registry.MarkModified(manager, PersistDomain::JOB, 0);

    EXPECT_EQ(told, 2U);
}

TEST(PersistRegistry, CountsWhatIsModified)
{
    PersistRegistry registry;
    Manager manager;
    registry.Register(manager, "");

    registry.MarkModified(manager, PersistDomain::JOB, 0);
    registry.MarkModified(manager, PersistDomain::JOB, 0);

    EXPECT_EQ(registry.ModificationCount(), 2u);
}

} // namespace ZuHost
