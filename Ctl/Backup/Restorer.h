#pragma once

#include "Ctl/Connection/Sensor.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>

namespace ZuCtl
{

/// Brings a backup onto a sensor: jobs, the control authority, then tokens and users with new secrets.
///
/// A step that the sensor refuses does not end the others. Jobs and tokens that the sensor has besides those of the backup
/// stay. The first token or user closes a sensor that was open to its machine; the restorer goes on with a token of its own,
/// which it revokes at the end.
class Restorer final
{
public:
    using ShowStep = std::function<void(nlohmann::json const& step)>;

    /// The sensor and the backup outlive the restorer. `newShowStep` gets each step when it has ended.
    Restorer(Sensor& newSensor, nlohmann::json const& newBackup, ShowStep newShowStep);

    void RestoreJobs();
    void RestoreSettings();

    /// Makes tokens and users. Throws `Failure` if the sensor cannot be reached any more; `Secrets` then has those of the
    /// callers that were made.
    void RestoreCallers();

    /// The new secrets: "tokens" and "users", each by its name.
    nlohmann::json const& Secrets() const noexcept;

    /// All steps: "step", "result" ("done" or "failed") and, for a failed one, "text".
    nlohmann::json const& Steps() const noexcept;
    bool HasFailed() const noexcept;

private:
    bool Try(std::string const& step, std::function<void()> const& work);
    void EndInterimToken() noexcept;
    void RestoreTokens();
    void RestoreUsers();
    void AddUser(nlohmann::json const& user);

    Sensor& sensor;
    nlohmann::json const& backup;
    ShowStep showStep;
    nlohmann::json steps = nlohmann::json::array();
    nlohmann::json secrets = {{"tokens", nlohmann::json::object()}, {"users", nlohmann::json::object()}};
    bool hasFailed = false;
};

} // namespace ZuCtl
