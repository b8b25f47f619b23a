#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace ZuCtl
{

/// One named sensor of the file.
struct NamedSensor
{
    std::string url;
    std::string token;                   ///< empty: none
    std::filesystem::path tokenFile;     ///< empty: none
    std::filesystem::path authorityFile; ///< empty: the authorities of the system
    std::string fingerprint;             ///< empty: none
};

/// The file of sensors: names, addresses and tokens in TOML.
///
///     default = "line1"
///     [sensors.line1]
///     url = "https://10.0.0.7:8443"
///     token = "zc_..."
///
/// Relative file names count from the folder of the file.
class SensorsFile final
{
public:
    /// Throws `Failure`: `ExitStatus::LOCAL_FILE` if the file cannot be read, others can read it, or it is no TOML, has an
    /// unknown key or a value of another type. The text names file, line and what is wrong.
    static SensorsFile Read(std::filesystem::path const& file);

    /// Reads the file at its usual place. Without a file it is empty. Throws as `Read`.
    static SensorsFile ReadUsual();

    /// `$XDG_CONFIG_HOME/zucontrol/sensors.toml`, else `~/.config/zucontrol/sensors.toml`.
    static std::filesystem::path UsualPlace();

    std::string const& DefaultName() const noexcept; ///< empty: none
    /// Throws `Failure` with `ExitStatus::USAGE` if there is none of this name; the text names the known ones.
    NamedSensor const& Find(std::string const& name) const;

private:
    std::filesystem::path file;
    std::string defaultName;
    std::map<std::string, NamedSensor> sensors;
};

} // namespace ZuCtl
