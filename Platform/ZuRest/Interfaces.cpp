// The destructors of this folder's interfaces.

#include "ZuRest/IBodySink.h"
#include "ZuRest/ICallableResource.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/IDocumentResource.h"
#include "ZuRest/IFeedResource.h"
#include "ZuRest/IFormattedResource.h"
#include "ZuRest/IPreviewResource.h"
#include "ZuRest/IPromptResource.h"
#include "ZuRest/IResource.h"
#include "ZuRest/IStreamReceiver.h"
#include "ZuRest/IStreamableResource.h"
#include "ZuRest/IUpdatableResource.h"
#include "ZuRest/RequestProcessor.h"

#include <nlohmann/json.hpp>

namespace ZuRest
{

IBodySink::~IBodySink() = default;

ICallableResource::~ICallableResource() = default;

IContentResource::~IContentResource() = default;

IDocumentResource::~IDocumentResource() = default;

IFormattedResource::~IFormattedResource() = default;

IFeedResource::~IFeedResource() = default;

IPromptResource::~IPromptResource() = default;

ISubjectResource::~ISubjectResource() = default;

IResource::~IResource() = default;

IStreamReceiver::~IStreamReceiver() = default;

IStreamableResource::~IStreamableResource() = default;

IUpdatableResource::~IUpdatableResource() = default;

RequestProcessor::~RequestProcessor() = default;

} // namespace ZuRest
