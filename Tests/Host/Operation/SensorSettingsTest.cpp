#include "Host/Operation/SensorSettings.h"

#include "Host/Jobs/DocumentStore.h"
#include "Host/Operation/SensorDesk.h"
#include "Host/Sensor/SimulatedPart.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <thread>

namespace ZuHost
{

using Json = nlohmann::json;
using ZuCommon::PersistDomain;
using ZuTest::RefusalOf;

class SensorSettingsTest : public SensorDesk
{
protected:
    /// The document that a save of the job stores.
    std::string Saved(PersistDomain domain, std::string const& name)
    {
        DocumentStore store;
        settings.SavePersistDomain(domain, store);
        return store.Take().at(name);
    }

    void Load(PersistDomain domain, std::string const& name, std::string const& text)
    {
        settings.LoadPersistDomain(domain, DocumentStore(DocumentStore::Files{{name, text}}));
    }

    /// The decision of the largest height, which is 25, in the next frames.
    uint8 DecisionOfHeight()
    {
        Sensor& sensor = module.UsedSensor();
        sensor.Start();
        while (sensor.Frames().Newest() == nullptr)
        {
            std::this_thread::yield();
        }
        uint8 const decision = sensor.Frames().Newest()->results[0].decision;
        sensor.Stop();
        return decision;
    }
};

TEST_F(SensorSettingsTest, LeaveEveryValueGoodAtFirst)
{
    EXPECT_EQ(settings.Limits()["zMax"], (Json{{"enabled", false}, {"minimum", 0.0}, {"maximum", 0.0}}));
    EXPECT_EQ(settings.Limits().size(), 5u);
    EXPECT_EQ(DecisionOfHeight(), 1);
}

TEST_F(SensorSettingsTest, MakeTheDecisionByLimits)
{
    settings.ChangeLimits({{"zMax", {{"enabled", true}, {"minimum", 20}, {"maximum", 24.5}}}});
    EXPECT_EQ(DecisionOfHeight(), 0);

    settings.ChangeLimits({{"zMax", {{"maximum", 25}}}});
    EXPECT_EQ(DecisionOfHeight(), 1);
    EXPECT_EQ(settings.Limits()["zMax"]["minimum"], 20);

    settings.ChangeLimits({{"zMax", {{"enabled", false}, {"maximum", 21}}}});
    EXPECT_EQ(DecisionOfHeight(), 1);
}

TEST_F(SensorSettingsTest, RefuseAMinimumAboveTheMaximumAndChangeNothing)
{
    uint64 const modified = registry.ModificationCount();

    auto const refusal = RefusalOf([&] {
        settings.ChangeLimits({{"zMin", {{"maximum", 9}}}, {"width", {{"minimum", 2}, {"maximum", 1}}}});
    });

    EXPECT_EQ(refusal, (ZuTest::Refusal{-997, "The minimum of width is above its maximum."}));
    EXPECT_EQ(settings.Limits()["zMin"]["maximum"], 0);
    EXPECT_EQ(registry.ModificationCount(), modified);
}

TEST_F(SensorSettingsTest, BelongToTheJob)
{
    settings.ChangeLimits({{"points", {{"enabled", true}, {"minimum", 1}, {"maximum", 2}}}});
    EXPECT_EQ(registry.ModificationCount(), 1u);
    std::string const saved = Saved(PersistDomain::JOB, "sensor/config.json");

    DocumentStore none;
    settings.InitPersistDomain(PersistDomain::JOB, none);
    EXPECT_FALSE(settings.Limits()["points"]["enabled"]);
    Load(PersistDomain::JOB, "sensor/config.json", saved);
    EXPECT_TRUE(settings.Limits()["points"]["enabled"]);
    EXPECT_EQ(settings.Limits()["points"]["maximum"], 2);

    settings.LoadPersistDomain(PersistDomain::JOB, none); // a job without limits
    EXPECT_FALSE(settings.Limits()["points"]["enabled"]);
}

TEST_F(SensorSettingsTest, ApplyNoLimitsOfADocumentThatIsNotValid)
{
    for (char const* const text :
         {"7", R"({"version":"2","zu:control":{"parameters":{}}})", R"({"version":"1"})",
          R"({"version":"1","zu:control":{"parameters":{"zMax":{"enabled":true,"minimum":2,"maximum":1}}}})",
          R"({"version":"1","zu:control":{"parameters":{"zMax":{"enabled":"yes"}}}})"})
    {
        settings.ChangeLimits({{"zMax", {{"enabled", true}, {"minimum", 1}, {"maximum", 2}}}});
        ZuTest::LogRecorder log;

        Load(PersistDomain::JOB, "sensor/config.json", text);

        EXPECT_FALSE(settings.Limits()["zMax"]["enabled"]) << text;
        ASSERT_FALSE(log.Lines().empty()) << text;
    }
}

TEST_F(SensorSettingsTest, KeepTheAuthorityWithTheHost)
{
    settings.ChangeAuthority({{"rest", 1}, {"idleSeconds", 30}});
    EXPECT_EQ(authority.Get(), (ControlAuthority::Settings{RestAuthority::WHEN_IDLE, 30}));
    EXPECT_EQ(registry.ModificationCount(), 1u);
    std::string const saved = Saved(PersistDomain::PROTOCOL, "sensor/authority.json");

    DocumentStore none;
    settings.InitPersistDomain(PersistDomain::PROTOCOL, none);
    EXPECT_EQ(authority.Get(), ControlAuthority::Settings());
    Load(PersistDomain::PROTOCOL, "sensor/authority.json", saved);
    EXPECT_EQ(authority.Get(), (ControlAuthority::Settings{RestAuthority::WHEN_IDLE, 30}));
}

TEST_F(SensorSettingsTest, RefuseAnAuthorityThatDoesNotExist)
{
    EXPECT_EQ(RefusalOf([&] { settings.ChangeAuthority({{"rest", 3}}); }).status, Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(RefusalOf([&] { settings.ChangeAuthority({{"idleSeconds", 0}}); }).status, Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(RefusalOf([&] { settings.ChangeAuthority({{"idleSeconds", 3601}}); }).status, Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(authority.Get(), ControlAuthority::Settings());
}

TEST_F(SensorSettingsTest, KeepRestAwayWhereTheAuthorityCannotBeRead)
{
    Load(PersistDomain::PROTOCOL, "sensor/authority.json", R"({"version":"1","zu:control":{"parameters":{"rest":9}}})");

    EXPECT_EQ(authority.Get().rest, RestAuthority::NEVER);
}

TEST_F(SensorSettingsTest, SaveAnAuthorityOfANewerVersionAsItWasUntilAClientSetsOne)
{
    std::string const newer = R"({"version":"2","zu:control":{"parameters":{"rest":1}}})";
    Load(PersistDomain::PROTOCOL, "sensor/authority.json", newer);
    EXPECT_EQ(Saved(PersistDomain::PROTOCOL, "sensor/authority.json"), newer);

    EXPECT_EQ(RefusalOf([&] { settings.ChangeAuthority({{"rest", 3}}); }).status, Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(Saved(PersistDomain::PROTOCOL, "sensor/authority.json"), newer);

    settings.ChangeAuthority({{"rest", 1}, {"idleSeconds", 30}});
    EXPECT_EQ(Saved(PersistDomain::PROTOCOL, "sensor/authority.json"),
              R"({"version":"1","zu:control":{"parameters":{"idleSeconds":30,"rest":1}}})");
}

TEST_F(SensorSettingsTest, ForgetAnAuthorityOfANewerVersionWithTheSettings)
{
    std::string const newer = R"({"version":"2","zu:control":{"parameters":{"rest":1}}})";
    std::string const standard = Saved(PersistDomain::PROTOCOL, "sensor/authority.json");
    DocumentStore none;

    Load(PersistDomain::PROTOCOL, "sensor/authority.json", newer);
    settings.InitPersistDomain(PersistDomain::PROTOCOL, none);
    EXPECT_EQ(Saved(PersistDomain::PROTOCOL, "sensor/authority.json"), standard);

    Load(PersistDomain::PROTOCOL, "sensor/authority.json", newer);
    Load(PersistDomain::PROTOCOL, "sensor/authority.json", standard);
    EXPECT_EQ(Saved(PersistDomain::PROTOCOL, "sensor/authority.json"), standard);
}

} // namespace ZuHost
