#include "ZuControl/Persistence/InstanceWithStore.h"

#include "ZuControl/Control/IControlActionTarget.h"

#include <stdexcept>

namespace ZuControl
{

using ZuCommon::PersistDomain;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using Lines = std::vector<ZuTest::LogLine>;

/// The documents that a save writes, and the log lines and the store after a failed save.
class PersistControlSaveTest : public InstanceWithStore
{
protected:
    /// Saves over an older document and expects that the older document is unchanged. Returns the refusal.
    Refusal Refused()
    {
        store.files[PATH] = "older";
        Forget();
        Refusal const refusal = RefusalOf([this] { Save(); });
        EXPECT_EQ(store.files.at(PATH), "older");
        EXPECT_TRUE(store.written.empty());
        return refusal;
    }

    static ZuTest::LogLine Dev(std::string const& function, std::string const& text)
    {
        return ZuTest::Error("ZuControl::PersistControl::" + function, text);
    }
};

TEST_F(PersistControlSaveTest, HoldsEachLockOnlyWhileItsPartIsRead)
{
    Build({.map = MapKind::STANDARD, .assemblies = 2});

    Save();

    EXPECT_EQ(hooks.calls.All(), (Calls{"Params", "Map.BeginLock", "Map.OutputMap", "Map.EndLock", "r0.BeginLock",
                                        "r0.Properties", "r0.EndLock", "r1.BeginLock", "r1.Properties", "r1.EndLock"}));
}

TEST_F(PersistControlSaveTest, LeavesOutWhatTheProtocolDoesNotHave)
{
    Build({});

    Save();

    EXPECT_EQ(store.files.at(PATH),
              R"({"version":"1","zu:control":{"enabled":false,"parameters":{"limits":{"high":0.5,"low":-5},"mask":0,)"
              R"("name":"default","port":1000,"secure":false},"parametersVersion":"1"}})");
}

TEST_F(PersistControlSaveTest, WritesTextsAsTheyAreAndWithoutEscapes)
{
    Build({});
    protocol->params.name.Set("Gr\xc3\xb6\xc3\x9f"
                              "e \xe2\x82\xac \xf0\x9f\x98\x80 \"\n");

    Save();

    EXPECT_NE(store.files.at(PATH).find("\"name\":\"Gr\xc3\xb6\xc3\x9f"
                                        "e \xe2\x82\xac \xf0\x9f\x98\x80 \\\"\\n\""),
              std::string::npos);
    EXPECT_EQ(store.files.at(PATH).find('\n'), std::string::npos);
}

TEST_F(PersistControlSaveTest, WritesNothingForATextThatIsNotUtf8)
{
    Build({});
    protocol->params.name.Set("\xff");
    store.files[PATH] = "older";
    Forget();

    try
    {
        Save();
        FAIL();
    }
    catch (Json::type_error const& error)
    {
        EXPECT_EQ(error.id, 316);
    }

    EXPECT_EQ(store.files.at(PATH), "older");
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(PersistControlSaveTest, PassesOnWhatTheStoreThrows)
{
    Build({});
    store.on["Write"] = [] { ZU_THROW(-998, "disk full"); };

    EXPECT_EQ(Refused(), (Refusal{-998, "disk full"}));

    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(PersistControlSaveTest, SaysThatParametersCannotBeSaved)
{
    Build({.map = MapKind::STANDARD, .assemblies = 1});
    hooks.on["Params"] = [] { ZU_THROW(-1000, "torn"); };

    EXPECT_EQ(Refused(), (Refusal{-1000, "Error saving parameters for service x"}));

    EXPECT_EQ(log.LinesWithShortTraces(),
              (Lines{ZuTest::UserWarning("Error saving parameters for service x. Please check the parameter settings."),
                     Dev("SaveControlInstanceParams", "EXCEPTION THROWN: "), ZuTest::CaughtEntry(-1000, "torn"),
                     ZuTest::BackTrace()}));
    EXPECT_EQ(hooks.calls.All(), Calls{"Params"});
}

TEST_F(PersistControlSaveTest, GivesAForeignExceptionTheStatusOfNone)
{
    Build({});
    hooks.on["Params"] = [] { throw std::runtime_error("torn"); };

    EXPECT_EQ(Refused(), (Refusal{0, "Error saving parameters for service x"}));

    EXPECT_EQ(log.LinesWithShortTraces().at(2), ZuTest::CaughtForeign("torn"));
}

TEST_F(PersistControlSaveTest, ReleasesTheLockOfAMapThatCannotBeSaved)
{
    Build({.map = MapKind::STANDARD, .assemblies = 1});
    hooks.on["Map.OutputMap"] = [] { ZU_THROW(-1000, "torn"); };

    EXPECT_EQ(Refused(), (Refusal{0, "Error saving connections for service x"}));

    EXPECT_EQ(log.LinesWithShortTraces(),
              (Lines{ZuTest::UserWarning("Error saving connections for service x. Please check the connections."),
                     Dev("SaveControlInstanceOutputs", "Error saving connections for service x"),
                     ZuTest::CaughtEntry(-1000, "torn"), ZuTest::BackTrace()}));
    EXPECT_EQ(hooks.calls.All(), (Calls{"Params", "Map.BeginLock", "Map.OutputMap", "Map.EndLock"}));
}

TEST_F(PersistControlSaveTest, KeepsTheStatusOfALockOfTheMapThatFails)
{
    Build({.map = MapKind::STANDARD, .assemblies = 1});
    hooks.on["Map.BeginLock"] = [] { ZU_THROW(-993, "stuck"); };

    EXPECT_EQ(Refused(), (Refusal{-993, "Error locking/unlocking connections for service x"}));

    EXPECT_EQ(log.LinesWithShortTraces(), (Lines{Dev("SaveControlInstanceOutputs", "EXCEPTION THROWN: "),
                                                 ZuTest::CaughtEntry(-993, "stuck"), ZuTest::BackTrace()}));
    EXPECT_EQ(hooks.calls.All(), (Calls{"Params", "Map.BeginLock"}));
}

TEST_F(PersistControlSaveTest, LetsAFailingReleaseOfTheMapGoBeforeItsOwnFailure)
{
    Build({.map = MapKind::STANDARD});
    hooks.on["Map.OutputMap"] = [] { ZU_THROW(-1000, "torn"); };
    hooks.on["Map.EndLock"] = [] { ZU_THROW(-993, "stuck"); };

    EXPECT_EQ(Refused(), (Refusal{-993, "Error locking/unlocking connections for service x"}));

    EXPECT_EQ(log.LinesWithShortTraces(),
              (Lines{ZuTest::UserWarning("Error saving connections for service x. Please check the connections."),
                     Dev("SaveControlInstanceOutputs", "Error saving connections for service x"),
                     ZuTest::CaughtEntry(-1000, "torn"), ZuTest::BackTrace(),
                     Dev("SaveControlInstanceOutputs", "EXCEPTION THROWN: "), ZuTest::CaughtEntry(-993, "stuck"),
                     ZuTest::BackTrace()}));
}

TEST_F(PersistControlSaveTest, ReleasesTheLockOfAnAssemblyThatCannotBeSavedAndEndsTheList)
{
    Build({.assemblies = 3});
    hooks.on["r1.Properties"] = [] { ZU_THROW(-1000, "torn"); };

    EXPECT_EQ(Refused(), (Refusal{0, "Error saving connection map for service x"}));

    EXPECT_EQ(log.LinesWithShortTraces(),
              (Lines{ZuTest::UserWarning("Error saving connection map for service x. Please check the connection map."),
                     Dev("SaveControlInstanceRegisterAssembly", "Error saving connection map for service x"),
                     ZuTest::CaughtEntry(-1000, "torn"), ZuTest::BackTrace()}));
    EXPECT_EQ(hooks.calls.All(), (Calls{"Params", "r0.BeginLock", "r0.Properties", "r0.EndLock", "r1.BeginLock",
                                        "r1.Properties", "r1.EndLock"}));
}

TEST_F(PersistControlSaveTest, KeepsTheStatusOfALockOfAnAssemblyThatFails)
{
    Build({.assemblies = 2});
    hooks.on["r0.BeginLock"] = [] { ZU_THROW(-993, "stuck"); };

    EXPECT_EQ(Refused(), (Refusal{-993, "Error locking/unlocking or getting list connection map for x"}));

    EXPECT_EQ(log.LinesWithShortTraces(), (Lines{Dev("SaveControlInstanceRegisterAssembly", "EXCEPTION THROWN: "),
                                                 ZuTest::CaughtEntry(-993, "stuck"), ZuTest::BackTrace()}));
    EXPECT_EQ(hooks.calls.All(), (Calls{"Params", "r0.BeginLock"}));
}

// The protocol's own domain

class PersistControlOwnDomain : public PersistControlSaveTest
{
protected:
    PersistControlOwnDomain()
    {
        Build({});
    }

    static constexpr PersistDomain OWN = PersistDomain::PROTOCOL;
};

TEST_F(PersistControlOwnDomain, IsWrittenByTheProtocolAlone)
{
    protocol->ownDocument = {{"since", 3}};

    control.Init(*instance, OWN, store);
    EXPECT_EQ(store.files.at(PATH), R"({"since":3})");
    protocol->ownDocument = Json::array({1});
    control.Save(*instance, OWN, store);
    EXPECT_EQ(store.files.at(PATH), "[1]");
    protocol->ownDocument = nullptr;
    control.Load(*instance, OWN, store);

    EXPECT_EQ(protocol->ownDocument, Json::array({1}));
    EXPECT_EQ(hooks.calls.All(), (Calls{"InitPersistDomain", "SavePersistDomain", "LoadPersistDomain"}));
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(PersistControlOwnDomain, LeavesWhatIsStoredWhereTheProtocolHasNothing)
{
    store.files[PATH] = "older";
    for (char const* const nothing : {"null", "{}", "[]"})
    {
        protocol->ownDocument = Json::parse(nothing);

        control.Init(*instance, OWN, store);
        control.Save(*instance, OWN, store);

        EXPECT_EQ(store.files.at(PATH), "older") << nothing;
    }
    EXPECT_TRUE(store.written.empty());
}

TEST_F(PersistControlOwnDomain, StoresAnEmptyTextAndANought)
{
    for (char const* const something : {"\"\"", "0", "false"})
    {
        protocol->ownDocument = Json::parse(something);

        control.Save(*instance, OWN, store);
        EXPECT_EQ(store.files.at(PATH), something);
        protocol->ownDocument = "forgotten";
        control.Load(*instance, OWN, store);

        EXPECT_EQ(protocol->ownDocument, Json::parse(something));
    }
}

TEST_F(PersistControlOwnDomain, DoesNotTellTheProtocolOfADocumentWithoutContent)
{
    control.Load(*instance, OWN, store);
    for (char const* const nothing : {"null", "{}", "[]"})
    {
        store.files[PATH] = nothing;
        control.Load(*instance, OWN, store);
    }

    EXPECT_EQ(hooks.calls.All(), Calls{});
}

TEST_F(PersistControlOwnDomain, PassesOnWhatIsWrongWithItsDocument)
{
    store.files[PATH] = "{";
    EXPECT_THROW(control.Load(*instance, OWN, store), Json::parse_error);

    hooks.on["LoadPersistDomain"] = [] { ZU_THROW(-984, "not mine"); };
    store.files[PATH] = "[0]";
    EXPECT_EQ(RefusalOf([this] { control.Load(*instance, OWN, store); }), (Refusal{-984, "not mine"}));
    EXPECT_TRUE(log.Lines().empty());
}

// Initialisation, and domains of others

TEST_F(PersistControlSaveTest, InitialisesAJobByItsDefaultsAndWritesNothing)
{
    Build({.map = MapKind::STANDARD, .assemblies = 1});
    protocol->params.port.Set(7);
    instance->Enable(true);
    Forget();

    control.Init(*instance, PersistDomain::JOB, store);

    EXPECT_EQ(hooks.calls.All(), (Calls{"RemoveResultHandler(100)", "Stop", "ResetParams", "Map.Clear", "OutputsUpdate",
                                        "UpdateOutputMap(100)", "ConfigureDefaultRegisterAssembly",
                                        "r0.ResetRegisterAssembly", "r0.Add"}));
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(protocol->params.port.Get(), 1000);
    EXPECT_TRUE(store.files.empty());
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(PersistControlSaveTest, HasNothingToDoWithOtherDomains)
{
    Build({});
    store.files[PATH] = "{";
    store.on["Exists"] = [] { FAIL(); };
    protocol->ownDocument = 1;

    for (int32 const domain : {0, 3, -1})
    {
        control.Init(*instance, PersistDomain{domain}, store);
        control.Load(*instance, PersistDomain{domain}, store);
        control.Save(*instance, PersistDomain{domain}, store);
    }

    EXPECT_EQ(hooks.calls.All(), Calls{});
    EXPECT_EQ(store.files.at(PATH), "{");
    EXPECT_TRUE(log.Lines().empty());
}

} // namespace ZuControl
