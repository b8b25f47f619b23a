#include "ZuControl/Persistence/InstanceWithStore.h"

namespace ZuControl
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using Lines = std::vector<ZuTest::LogLine>;

/// Loads refuse a document of a wrong form before they change the instance; the effect on the enabled state.
class PersistControlFormatTest : public InstanceWithStore
{
protected:
    PersistControlFormatTest()
    {
        Build({.map = MapKind::STANDARD, .assemblies = 1});
        instance->Enable(true);
        Forget();
    }

    void StoreText(std::string const& text)
    {
        store.files[PATH] = text;
    }

    Refusal Loaded()
    {
        return RefusalOf([this] { Load(); });
    }

    void ExpectUntouched()
    {
        EXPECT_EQ(hooks.calls.All(), Calls{});
        EXPECT_TRUE(instance->IsEnabled());
    }

    /// The calls of a reset that keeps the enabled state.
    Calls const reset{"ResetParams",
                      "Map.Clear",
                      "OutputsUpdate",
                      "UpdateOutputMap(100)",
                      "ConfigureDefaultRegisterAssembly",
                      "r0.ResetRegisterAssembly",
                      "r0.Add"};
};

TEST_F(PersistControlFormatTest, DoesNothingAtAllWhereThereIsNoDocument)
{
    EXPECT_EQ(Loaded(), (Refusal{1, ""}));

    ExpectUntouched();
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(PersistControlFormatTest, PassesOnWhatTheStoreThrows)
{
    StoreText("{}");
    store.on["Read"] = [] { ZU_THROW(-998, "worn out"); };

    EXPECT_EQ(Loaded(), (Refusal{-998, "worn out"}));

    ExpectUntouched();
    EXPECT_TRUE(log.Lines().empty());
}

class PersistControlNoForm : public PersistControlFormatTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlNoForm, RefusesWhatHasNoSettingsAheadOfTheVersion)
{
    StoreText(GetParam());

    EXPECT_EQ(Loaded(), (Refusal{-984, "No saved information found in service x configuration file."}));

    ExpectUntouched();
    EXPECT_EQ(log.Lines(), (Lines{ZuTest::UserWarning("No saved information found in service x configuration file. No "
                                                      "changes made to service.")}));
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlNoForm,
                         testing::Values("[]", "{}", "null", "7", "\"zu:control\"", R"(["zu:control"])",
                                         R"({"version":"1"})", R"({"version":2})"));

TEST_F(PersistControlFormatTest, RefusesSettingsWithoutAVersion)
{
    StoreText(R"({"zu:control":{"enabled":false}})");

    EXPECT_EQ(Loaded(), (Refusal{-984, "Unsupported configuration file format for service x."}));

    ExpectUntouched();
    EXPECT_EQ(log.Lines(), (Lines{ZuTest::UserWarning("Unsupported configuration file format for service x. Manual "
                                                      "configuration for service may be needed.")}));
}

class PersistControlOtherVersion : public PersistControlFormatTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlOtherVersion, ComparesVersionsByTheirText)
{
    Store({{"version", GetParam()}, {"zu:control", Json::object()}});

    EXPECT_EQ(Loaded(), (Refusal{-989, std::string("Unsupported configuration file version for service x. expected: 1 "
                                                   "actual: ") +
                                           GetParam()}));

    ExpectUntouched();
    EXPECT_EQ(log.Lines(), (Lines{ZuTest::UserWarning("Unsupported configuration file version for service x. Manual "
                                                      "configuration for service may be needed.")}));
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlOtherVersion, testing::Values("2", "1.0", "", "1 ", "01", "%s%n"));

TEST_F(PersistControlFormatTest, RefusesAVersionThatGoesOnBehindANul)
{
    StoreText(R"({"version":"1\u0000x","zu:control":{"enabled":false}})");

    EXPECT_EQ(Loaded(), (Refusal{-989, "Unsupported configuration file version for service x. expected: 1 actual: "
                                       "1\\u0000x"}));

    ExpectUntouched();
}

class PersistControlVersionType : public PersistControlFormatTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlVersionType, RaisesTheTypeErrorOfTheLibraryBeforeTheReset)
{
    StoreText(GetParam());

    try
    {
        Load();
        FAIL();
    }
    catch (Json::type_error const& error)
    {
        EXPECT_EQ(error.id, 302);
    }

    ExpectUntouched();
    EXPECT_TRUE(log.Lines().empty());
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlVersionType,
                         testing::Values(R"({"version":1,"zu:control":{}})", R"({"version":null,"zu:control":{}})",
                                         R"({"version":["1"],"zu:control":{}})"));

class PersistControlNoJson : public PersistControlFormatTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlNoJson, PassesOnTheParseErrorOfTheLibrary)
{
    StoreText(GetParam());

    EXPECT_THROW(Load(), Json::parse_error);

    ExpectUntouched();
    EXPECT_TRUE(log.Lines().empty());
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlNoJson,
                         testing::Values("", "{", R"({"version":"1","zu:control":{}}x)", "\"\xff\"",
                                         R"({"version":"1","zu:control":{},})"));

class PersistControlNoState : public PersistControlFormatTest, public testing::WithParamInterface<char const*>
{
};

TEST_P(PersistControlNoState, DisablesAServiceWhoseDocumentDoesNotSayWhetherItRuns)
{
    StoreText(std::string(R"({"version":"1","zu:control":)") + GetParam() + "}");

    EXPECT_EQ(Loaded(), (Refusal{1, ""}));

    Calls expected = reset;
    expected.insert(expected.end(), {"RemoveResultHandler(100)", "Stop"});
    EXPECT_EQ(hooks.calls.All(), expected);
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(log.Lines(),
              (Lines{ZuTest::UserWarning("Missing enable/disable setting in configuration file for service x. Service "
                                         "will be disabled. Manual configuration for service may be needed."),
                     ZuTest::Warning("ZuControl::PersistControl::LoadControlInstance",
                                     "Missing enable/disable setting in configuration file for service x.")}));
}

INSTANTIATE_TEST_SUITE_P(Every, PersistControlNoState,
                         testing::Values("{}", "null", "[]", "3", "\"enabled\"", R"(["enabled"])"));

TEST_F(PersistControlFormatTest, LeavesByTheTypeErrorForAnEnabledStateThatIsNoBoolean)
{
    StoreText(R"({"version":"1","zu:control":{"enabled":1,"parameters":{"port":7},"parametersVersion":"1"}})");

    EXPECT_THROW(Load(), Json::type_error);

    EXPECT_EQ(hooks.calls.All(), reset);
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(protocol->params.port.Get(), 1000);
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(PersistControlFormatTest, NeverStopsAServiceThatRunsAndIsToRun)
{
    StoreText(R"({"version":"1","zu:control":{"enabled":true}})");

    EXPECT_EQ(Loaded(), (Refusal{1, ""}));

    EXPECT_EQ(hooks.calls.All(), reset);
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(PersistControlFormatTest, StartsAServiceBehindAllItsSettings)
{
    instance->Enable(false);
    Forget();
    StoreText(R"({"version":"1","zu:control":{"enabled":true,"parameters":{},"parametersVersion":"1"}})");

    Load();

    Calls expected = reset;
    expected.insert(expected.end(), {"BeginUpdate", "Params", "ParamsUpdate", "EndUpdate", "Start"});
    Calls const made = hooks.calls.All();
    ASSERT_GE(made.size(), expected.size());
    EXPECT_EQ(Calls(made.begin(), made.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
    EXPECT_TRUE(instance->IsEnabled());
}

TEST_F(PersistControlFormatTest, PassesOnWhatAResetThrowsWithoutAWord)
{
    StoreText(R"({"version":"1","zu:control":{"enabled":false}})");
    hooks.on["OutputsUpdate"] = [] { ZU_THROW(-996); };

    EXPECT_EQ(Loaded(), (Refusal{-996, ""}));

    EXPECT_EQ(hooks.calls.All(), (Calls{"ResetParams", "Map.Clear", "OutputsUpdate"}));
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_TRUE(log.Lines().empty());
}

} // namespace ZuControl
