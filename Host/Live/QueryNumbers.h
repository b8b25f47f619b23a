#pragma once

#include "wApi/wTypes.h"

#include <map>
#include <string>

namespace ZuHost
{

/// The numbers in the query of a request. A number above its range counts as the largest one; each operation throws
/// `Zu::Status::BAD_ARGUMENT` with a sentence for a number below its range and for a text that is no number.
class QueryNumbers final
{
public:
    /// `query`: "rate=5&points=100". "schema=true" is no number and is passed over.
    explicit QueryNumbers(std::string const& query);
    ~QueryNumbers();

    QueryNumbers(QueryNumbers const&) = delete;
    QueryNumbers& operator=(QueryNumbers const&) = delete;

    /// Returns `usual` if the query does not have the number.
    double Take(std::string const& key, double least, double most, double usual);

    /// The same for a whole number.
    uint64 TakeCount(std::string const& key, uint64 least, uint64 most, uint64 usual);

    /// Throws if the query has a parameter that no call above has taken.
    void CheckAllTaken() const;

private:
    std::map<std::string, std::string> texts;
};

} // namespace ZuHost
