#pragma once

#include "Ctl/Connection/Sensor.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>

namespace ZuCtl
{

constexpr int BACKUP_FORMAT = 1;

/// All of a sensor that REST gives: its jobs, the control authority, users and tokens without their secrets, and the
/// certificate of its authority. Parts that the caller may not read are in the member "missing", a sentence each.
/// `showProgress` is called with the name of each part.
nlohmann::json CollectBackup(Sensor& sensor, std::function<void(std::string const& part)> const& showProgress);

/// Reads the text of a backup. Throws `Failure` with `ExitStatus::LOCAL_FILE` if it is of a newer format or damaged.
nlohmann::json ParseBackup(std::string const& text);

/// The file of a job in a backup.
std::string FileOf(nlohmann::json const& job);

/// What no backup has, a sentence each, with the reason.
nlohmann::json NotCarried();

} // namespace ZuCtl
