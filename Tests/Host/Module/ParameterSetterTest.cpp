#include "Host/Module/ParameterSetter.h"

#include "Host/Module/InstanceFixture.h"
#include "ZuApi/Params/Value.h"

namespace ZuHost
{

namespace
{

class ParameterSetterTest : public ZuTest::InstanceFixture
{
protected:
    ParameterSetterTest()
    {
        protocol->params.Register("port", "Port", port);
        protocol->params.Register("address", "Address", address);
        protocol->params.Register("fast", "Fast", fast);
        record.Register("depth", "Depth", depth);
        protocol->params.Register("record", "Record", record);
    }

    void Set(std::string const& key, std::string const& value)
    {
        SetParameter(*instance, {"Fake", key, value});
    }

    void ExpectRefusal(std::string const& key, std::string const& value, std::string const& begin)
    {
        try
        {
            Set(key, value);
            ADD_FAILURE() << key << " took " << value;
        }
        catch (Zu::Exception const& exception)
        {
            EXPECT_EQ(exception.Status(), Zu::Status::BAD_ARGUMENT);
            EXPECT_EQ(std::string(exception.what()).substr(0, begin.size()), begin);
        }
    }

    Zu::Params::Value<uint16> port{1502};
    Zu::Params::Value<std::string> address{"127.0.0.1"};
    Zu::Params::Value<bool> fast{false};
    Zu::Params::Group record;
    Zu::Params::Value<double> depth{0.5};
};

} // namespace

TEST_F(ParameterSetterTest, SetsAValueAndLetsTheProtocolTakeItOver)
{
    Set("port", "1503");

    EXPECT_EQ(port.Get(), 1503);
    auto const made = calls.All();
    EXPECT_EQ(made.front(), "BeginUpdate(true)");
    EXPECT_EQ(made.back(), "EndUpdate");
    EXPECT_EQ(calls.Count("ParamsUpdate"), 1u);
}

TEST_F(ParameterSetterTest, SetsValuesOfEveryKind)
{
    Set("fast", "true");
    Set("address", "::1");
    Set("record.depth", "2.25");

    EXPECT_TRUE(fast.Get());
    EXPECT_EQ(address.Get(), "::1");
    EXPECT_EQ(depth.Get(), 2.25);
    EXPECT_EQ(port.Get(), 1502);
}

TEST_F(ParameterSetterTest, TakesATextAsItStands)
{
    for (char const* const text : {"5", "true", "\"quoted\"", ""})
    {
        Set("address", text);

        EXPECT_EQ(address.Get(), text);
    }
}

TEST_F(ParameterSetterTest, RefusesAParameterThatIsNone)
{
    for (char const* const key : {"colour", "record.colour", "port.depth", "", "record."})
    {
        ExpectRefusal(key, "1", std::string("option '--param': there is no parameter Fake.") + key);
    }
    EXPECT_EQ(calls.Count("ParamsUpdate"), 0u);
}

TEST_F(ParameterSetterTest, RefusesAValueThatIsNone)
{
    ExpectRefusal("port", "70000", "option '--param': '70000' is no value for Fake.port (");
    ExpectRefusal("port", "-1", "option '--param': '-1' is no value for Fake.port (");
    ExpectRefusal("port", "many", "option '--param': 'many' is no value for Fake.port");
    ExpectRefusal("port", "\"1\"", "option '--param': '\"1\"' is no value for Fake.port (");
    ExpectRefusal("fast", "1", "option '--param': '1' is no value for Fake.fast (");

    EXPECT_EQ(port.Get(), 1502);
    EXPECT_EQ(calls.Count("ParamsUpdate"), 0u);
    EXPECT_EQ(calls.Count("BeginUpdate(true)"), calls.Count("EndUpdate")); // no bracket is left open
}

TEST_F(ParameterSetterTest, SaysWhichParameterTheProtocolCannotTakeOver)
{
    protocol->on["ParamsUpdate"] = [] { ZU_THROW(Zu::Status::FULL, "the port is taken"); };

    try
    {
        Set("port", "1503");
        FAIL() << "nothing was thrown";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), Zu::Status::FULL);
        EXPECT_STREQ(exception.what(), "option '--param': Fake.port cannot be '1503' (the port is taken)");
    }
    EXPECT_EQ(calls.Count("EndUpdate"), 1u);
}

} // namespace ZuHost
