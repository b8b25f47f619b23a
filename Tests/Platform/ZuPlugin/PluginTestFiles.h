#pragma once

#include <filesystem>
#include <string>

namespace ZuPlugin
{

/// Where the test plug-in of this name lies.
std::string TestPluginPath(std::string const& name);

std::string ReadFile(std::string const& path);

/// A folder of its own, gone with the object.
class TemporaryFolder final
{
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::string Path(std::string const& name) const;

    /// Writes a file and gives its path.
    std::string Write(std::string const& name, std::string const& bytes) const;

private:
    std::filesystem::path folder;
};

} // namespace ZuPlugin
