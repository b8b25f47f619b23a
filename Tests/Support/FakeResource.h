#pragma once

#include "ZuApi/Exception.h"
#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/ICallableResource.h"
#include "ZuRest/IStreamReceiver.h"
#include "ZuRest/IUpdatableResource.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"
#include "ZuRest/StreamResourceBase.h"

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ZuTest
{

/// A resource with behaviour set by the test: it offers an interface only if the function for it is set.
class FakeResource final : public ZuRest::DocumentResourceBase,
                           public ZuRest::ICallableResource,
                           public ZuRest::StreamResourceBase,
                           public ZuRest::IUpdatableResource
{
public:
    using Json = nlohmann::json;
    using RequestInfo = ZuRest::RequestInfo;

    std::function<Json(RequestInfo const&, ZuRest::ResponseInfo&)> document;
    std::function<void(RequestInfo const&, Json const&)> update;
    std::function<Json(RequestInfo const&, Json const&)> invoke;
    bool isStreamable = false;
    std::vector<ZuRest::IStreamReceiver*> receivers; ///< by stream id; null once the stream is stopped

    ZuRest::IDocumentResource* DocumentProvider() override
    {
        return document ? this : nullptr;
    }

    ZuRest::ICallableResource* CallableProvider() override
    {
        return invoke ? this : nullptr;
    }

    ZuRest::IStreamableResource* StreamableProvider() override
    {
        return isStreamable ? this : nullptr;
    }

    Json Document(RequestInfo const& request, ZuRest::ResponseInfo& response) override
    {
        return document(request, response);
    }

    void UpdateDocument(RequestInfo const& request, Json const& body) override
    {
        update ? update(request, body) : DocumentResourceBase::UpdateDocument(request, body);
    }

    bool IsUpdatable() const noexcept override
    {
        return static_cast<bool>(update);
    }

    Json Invoke(RequestInfo const& request, Json const& body) override
    {
        return invoke(request, body);
    }

    uint32 StartStream(ZuRest::IStreamReceiver* receiver, RequestInfo const& /*request*/) override
    {
        receivers.push_back(receiver);
        return static_cast<uint32>(receivers.size() - 1);
    }

    void StopStream(uint32 streamId) override
    {
        if (streamId >= receivers.size() || receivers[streamId] == nullptr)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT);
        }
        receivers[streamId] = nullptr;
    }

    /// Sets `shown` as the document of every request.
    void Show(Json shown)
    {
        document = [shown = std::move(shown)](RequestInfo const&, ZuRest::ResponseInfo&) { return shown; };
    }
};

} // namespace ZuTest
