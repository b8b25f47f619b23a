#pragma once

#include <filesystem>
#include <string>

namespace ZuCtl
{

/// Reads a file with a secret. Throws `Failure` with `ExitStatus::LOCAL_FILE` if it cannot be read, belongs to another user
/// than the caller and root, is no regular file, or can be read or written by others than its owner.
std::string ReadPrivateFile(std::filesystem::path const& file);

/// The first line of such a file, without spaces around it. Throws as `ReadPrivateFile`, also if the line is empty.
std::string ReadSecret(std::filesystem::path const& file);

/// Reads any file. Throws `Failure` with `ExitStatus::LOCAL_FILE`.
std::string ReadWholeFile(std::filesystem::path const& file);

/// Throws `Failure` with `ExitStatus::LOCAL_FILE` if there is a file of this name, unless `mayReplace`, and if the name is
/// that of a link, a folder or a device.
void CheckFileToWrite(std::filesystem::path const& file, bool mayReplace);

/// Writes a file that only the caller can read. The file appears under its name when it is complete, on the disk.
/// Throws `Failure` with `ExitStatus::LOCAL_FILE`, also as `CheckFileToWrite`.
void WritePrivateFile(std::filesystem::path const& file, std::string const& bytes, bool mayReplace);

} // namespace ZuCtl
