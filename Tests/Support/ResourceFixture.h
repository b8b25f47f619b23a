#pragma once

#include "Support/CallLog.h"
#include "Support/FakeControlManager.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/Params/Value.h"
#include "ZuRest/IResource.h"
#include "ZuRest/Reference.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ZuTest
{

/// Arguments, or settings: two numbers, of which one has bounds.
struct NumbersGroup final : public Zu::Params::Group
{
    NumbersGroup()
    {
        Register("a", "A", a);
        Register("b", "B", b).SetMinimum(10);
    }

    Zu::Params::Value<uint32> a{1};
    Zu::Params::Value<uint32> b{20};
};

/// An action target with the two actions that a test names. It notes the arguments of a call.
class NumbersActionTarget final : public ZuControl::IControlActionTarget
{
public:
    NumbersActionTarget(CallLog& sharedCalls, std::vector<std::string> actionIds)
        : calls(sharedCalls), ids(std::move(actionIds))
    {
    }

    std::vector<ZuControl::ControlActionInfo> ListActions() const override
    {
        std::vector<ZuControl::ControlActionInfo> actions;
        for (std::string const& id : ids)
        {
            actions.emplace_back(id.c_str(), id.c_str());
        }
        return actions;
    }

    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const override
    {
        if (id == "nothing")
        {
            return nullptr;
        }
        if (std::find(ids.begin(), ids.end(), id) == ids.end())
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "The action '%s' does not exist. No parameters available", id.c_str());
        }
        return std::make_shared<NumbersGroup>();
    }

    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const& args) override
    {
        auto const& numbers = dynamic_cast<NumbersGroup const&>(args);
        calls.Add(id + "(" + std::to_string(numbers.a.Get()) + "," + std::to_string(numbers.b.Get()) + ")");
        if (onInvoke)
        {
            onInvoke();
        }
        return result;
    }

    std::function<void()> onInvoke;
    std::shared_ptr<Zu::Params::Group> result = std::make_shared<Zu::Params::Group>("");

private:
    CallLog& calls;
    std::vector<std::string> const ids;
};

/// For tests of resources: protocols, requests, a response, the notifications and the log.
class ResourceFixture : public testing::Test
{
protected:
    using Json = nlohmann::json;
    using Calls = CallLog::Calls;
    using Keys = ZuRest::RequestInfo::Keys;
    using State = ZuControl::IControlManager::PersistenceLoadOpState;

    static ZuRest::RequestInfo Request(Keys keys, bool wantsSchema = false)
    {
        return {"/", std::move(keys), wantsSchema};
    }

    /// Each reference as "embed key path" or "link key path", with "[]" behind the key of a list.
    static Calls ReferencesOf(ZuRest::ResponseInfo const& response)
    {
        Calls references;
        for (ZuRest::Reference const& reference : response.References())
        {
            EXPECT_TRUE(reference.extra.is_null());
            references.push_back((reference.isEmbedded ? "embed " : "link ") + reference.key +
                                 (reference.asList ? "[] " : " ") + reference.path);
        }
        return references;
    }

    /// Records the notifications of `resource` as "notify 2 /path".
    void Listen(ZuRest::IResource& resource)
    {
        resource.NotificationEvent().Add(
            [this, &resource](ZuRest::IResource& origin, ZuRest::EventType type, std::string const& path) {
                EXPECT_EQ(&origin, &resource);
                calls.Add("notify " + std::to_string(static_cast<uint32>(type)) + " " + path);
            });
    }

    /// The nested exceptions from the outermost to the innermost. An exception that is no Zu::Exception has the status
    /// 0.
    template <typename Action>
    static std::vector<Refusal> CausesOf(Action&& action)
    {
        try
        {
            action();
        }
        catch (std::exception const& exception)
        {
            std::vector<Refusal> causes;
            Collect(exception, causes);
            return causes;
        }
        return {};
    }

    static std::function<void()> Failing(int32 status, std::string text)
    {
        return [status, text] { ZU_THROW(status, "%s", text.c_str()); };
    }

    CallLog calls;
    LogRecorder log;
    FakeControlManager manager{calls};
    ZuRest::ResponseInfo response;

private:
    static void Collect(std::exception const& exception, std::vector<Refusal>& causes)
    {
        causes.push_back({Zu::Exception::StatusOf(exception), exception.what()});
        try
        {
            std::rethrow_if_nested(exception);
        }
        catch (std::exception const& nested)
        {
            Collect(nested, causes);
        }
    }
};

} // namespace ZuTest
