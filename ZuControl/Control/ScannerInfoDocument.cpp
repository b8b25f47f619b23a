#include "ZuControl/Control/ScannerInfoDocument.h"

#include "ZuControl/Control/JsonNumber.h"

#include <limits>
#include <nlohmann/json.hpp>

namespace ZuControl::ScannerInfoDocument
{

namespace
{

constexpr int64 NO_ENCODER = std::numeric_limits<int64>::min();
constexpr uint64 NO_TIME = ~uint64{0};

} // namespace

void Read(nlohmann::json const& document, IControlScanEngineInterface::ScannerStateInfo& info)
{
    nlohmann::json const* const laser = JsonNumber::FindPresent(document, "laserEnabled");
    info.laserEnabled = laser == nullptr || laser->get<bool>();
    nlohmann::json const* const encoder = JsonNumber::FindPresent(document, "currentEncoderValue");
    info.currentEncoderValue = encoder != nullptr ? JsonNumber::ToInt64(*encoder) : NO_ENCODER;
    nlohmann::json const* const time = JsonNumber::FindPresent(document, "currentSyncTime");
    info.currentSyncTime = time != nullptr ? (JsonNumber::ToUint64(*time) * 1000) >> 10 : NO_TIME;
}

} // namespace ZuControl::ScannerInfoDocument
