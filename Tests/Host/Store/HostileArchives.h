#pragma once

#include <string>

/// Job files as a hostile author makes them: a few KiB each, which cost a reader without bounds minutes.
namespace ZuTest
{

/// A constraint of the table takes minutes to evaluate.
std::string ArchiveWithSlowCheck();

/// Another table has such a constraint. An index over the schema hides that table from a reader of the schema.
std::string ArchiveWithHiddenCheck();

/// Each page of the table's tree names the next page 100 times: 10^16 rows.
std::string ArchiveWithEndlessRows();

/// The same for the tree of the schema.
std::string ArchiveWithEndlessSchema();

/// `rows` rows that hold nothing and claim `bytes` bytes each.
std::string ArchiveOfClaims(unsigned rows, unsigned bytes);

} // namespace ZuTest
