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

/// A shared object on disk, read as data: none of its code runs.
///
/// Whatever the bytes are, nothing outside of the file is touched; what does not add up is refused with -984 and a text that
/// says why, in words that fit behind the file's name.
class ZUPLATFORM_API ElfText final
{
public:
    /// Opens and checks the file: a whole shared object for this machine with a table of symbols. Throws -999 when it
    /// cannot be read.
    explicit ElfText(std::string const& path);
    ~ElfText();

    ElfText(ElfText const&) = delete;
    ElfText& operator=(ElfText const&) = delete;

    /// Whether it offers a function of this name.
    bool HasFunction(std::string_view name) const;

    /// The constant text of this name, up to its NUL. Throws -999 when the file offers none.
    std::string Text(std::string_view name);

private:
    static constexpr uint64 MAX_TABLE_BYTES = uint64{64} << 20;
    static constexpr uint64 MAX_TEXT_BYTES = 1024;

    void ReadHeader();
    void ReadSegments();
    void ReadSymbols();
    Elf64_Shdr FindSymbolSection(std::vector<Elf64_Shdr> const& sections) const;

    /// Throws unless the range lies in the file.
    void CheckRange(uint64 offset, uint64 size) const;

    template <typename Record>
    std::vector<Record> ReadRecords(uint64 offset, uint64 count);

    std::string_view NameOf(Elf64_Sym const& symbol) const;
    Elf64_Sym const* FindDefined(std::string_view name, unsigned char type) const;

    std::ifstream file;
    uint64 fileSize = 0;
    Elf64_Ehdr header{};
    std::vector<Elf64_Phdr> segments; // those that are loaded
    std::vector<Elf64_Sym> symbols;
    std::vector<char> names;
};

} // namespace ZuPlugin
