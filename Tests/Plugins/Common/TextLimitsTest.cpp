#include "Plugins/Common/TextLimits.h"
#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

namespace PluginCommon
{

using nlohmann::json;
using Zu::Properties::JsonSerializer;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

struct Texts final : public Zu::Params::Group
{
public:
    Texts() : Group("")
    {
        Register("name", "Name", name);
        Register("free", "Free", free);
    }

    ~Texts() override
    {
        Deregister("free");
        Deregister("name");
    }

    LimitedText name{4};
    Zu::Params::Value<std::string> free;
};

/// Records that it was called.
class Actions
{
public:
    virtual ~Actions() = default;

    virtual std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const&)
    {
        called += id;
        return nullptr;
    }

    std::string called;
};

TEST(LimitedText, RefusesALongerText)
{
    Texts texts;

    JsonSerializer::Validate(texts, json{{"name", "four"}});
    EXPECT_EQ(RefusalOf([&] {
                  JsonSerializer::Validate(texts, json{{"name", "fives"}});
              }),
              (Refusal{-997, "Name was set to be longer than its maximum length."}));
}

TEST(LimitedText, ShowsItsLimitInTheSchema)
{
    Texts const texts;

    EXPECT_EQ(JsonSerializer::SerializeSchema(texts).at("properties").at("name").at("maxLength"), 4);
}

TEST(LimitedText, TakesAnyTextThatTheProgramSets)
{
    Texts texts;

    texts.name.Set("from a job");

    EXPECT_EQ(texts.name.Get(), "from a job");
}

TEST(LimitedActions, RefuseArgumentsWithALongText)
{
    Texts texts;
    LimitedActions<Actions> actions;
    texts.free.Set(std::string(MOST_TEXT_BYTES, 'x'));
    actions.InvokeAction("a", texts);
    texts.free.Set(std::string(MOST_TEXT_BYTES + 1, 'x'));

    EXPECT_EQ(RefusalOf([&] { actions.InvokeAction("b", texts); }),
              (Refusal{-997, "\"free\" has more than 256 bytes"}));
    EXPECT_EQ(RefusalOf([&] { actions.CheckArguments(texts); }), (Refusal{-997, "\"free\" has more than 256 bytes"}));

    EXPECT_EQ(actions.called, "a");
}

} // namespace PluginCommon
