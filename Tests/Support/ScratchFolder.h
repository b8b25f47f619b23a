#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace ZuTest
{

/// A new temporary folder. The destructor deletes it with its content.
class ScratchFolder final
{
public:
    ScratchFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "zu-test-XXXXXX").string();
        path = mkdtemp(pattern.data());
    }

    ~ScratchFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }

    ScratchFolder(ScratchFolder const&) = delete;
    ScratchFolder& operator=(ScratchFolder const&) = delete;

    std::filesystem::path operator/(std::string const& name) const
    {
        return path / name;
    }

    std::filesystem::path path;
};

inline std::string BytesOf(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

inline void WriteBytes(std::filesystem::path const& file, std::string const& bytes)
{
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

} // namespace ZuTest
