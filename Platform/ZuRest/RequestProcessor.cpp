#include "ZuRest/RequestProcessor.h"

#include <nlohmann/json.hpp>

namespace ZuRest
{

RequestProcessor::~RequestProcessor() = default;

} // namespace ZuRest
