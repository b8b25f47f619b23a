#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <elf.h>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace ZuPlugin
{

/// Reads a shared object from disk as data: none of its code runs.
///
/// Any bytes are safe: the class reads nothing outside of the file. It refuses inconsistent contents with
/// `Zu::Status::BAD_FORMAT`. The text of each exception states the reason in words that may follow the file's name.
class ZUPLATFORM_API ElfText final
{
public:
    /// Opens the file and checks that it is a complete shared object for this machine with a symbol table. Throws
    /// `Zu::Status::NOT_FOUND` if the file cannot be read.
    explicit ElfText(std::string const& path);
    ~ElfText();

    ElfText(ElfText const&) = delete;
    ElfText& operator=(ElfText const&) = delete;

    /// Whether the file defines a function of this name.
    bool HasFunction(std::string_view name) const;

    /// Returns the constant text of this name, up to its NUL. Throws `Zu::Status::NOT_FOUND` if the file defines no
    /// such object.
    std::string Text(std::string_view name);

private:
    static constexpr uint64 MAX_TABLE_BYTES = uint64{64} << 20;
    static constexpr uint64 MAX_TEXT_BYTES = 1024;

    void ReadHeader();
    void ReadSegments();
    void ReadSymbols();
    Elf64_Shdr FindSymbolSection(std::vector<Elf64_Shdr> const& sections) const;

    /// Throws `Zu::Status::BAD_FORMAT` unless the range lies in the file.
    void CheckRange(uint64 offset, uint64 size) const;

    template <typename Record>
    std::vector<Record> ReadRecords(uint64 offset, uint64 count);

    std::string_view NameOf(Elf64_Sym const& symbol) const;
    Elf64_Sym const* FindDefined(std::string_view name, unsigned char type) const;

    std::ifstream file;
    uint64 fileSize = 0;
    Elf64_Ehdr header{};
    std::vector<Elf64_Phdr> segments; // the loadable segments
    std::vector<Elf64_Sym> symbols;
    std::vector<char> names;
};

} // namespace ZuPlugin
