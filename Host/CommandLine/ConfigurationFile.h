#pragma once

#include "Host/CommandLine/OptionForms.h"

#include <filesystem>
#include <string>
#include <vector>

namespace ZuHost
{

/// A configuration file in TOML 1.0, read. A key of the file is the name of an option.
struct ConfigurationFile
{
    static constexpr uint64 MAX_BYTES = 1024 * 1024;

    std::vector<GivenOption> given; ///< in the order of the file
    std::vector<std::string>
        faults; ///< a sentence each, with the file and the line; a file with faults must not be used

    /// Reads a file and judges each value. A file that cannot be read, or is no TOML, has one fault.
    static ConfigurationFile Read(std::filesystem::path const& file);
};

} // namespace ZuHost
