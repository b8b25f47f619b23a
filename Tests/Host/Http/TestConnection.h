#pragma once

#include "wApi/wTypes.h"

#include <optional>
#include <string>

namespace ZuTest
{

/// A client that writes bytes and reads answers, over a real socket. Every read has a bound of thirty seconds.
class TestConnection final
{
public:
    /// An answer as it came, its header names as they stand.
    struct Answer
    {
        uint32 status = 0;
        std::string head;
        std::string body;

        /// Whether the head has this line.
        bool Has(std::string const& line) const;
    };

    explicit TestConnection(uint16 port);
    ~TestConnection();

    TestConnection(TestConnection const&) = delete;
    TestConnection& operator=(TestConnection const&) = delete;

    void Write(std::string const& bytes);
    void EndWriting();

    /// The next answer, its body by its length; nothing when the other side closes or stays silent.
    std::optional<Answer> ReadAnswer(bool hasBody = true);

    /// One request with the usual head, and its answer.
    std::optional<Answer> Send(std::string const& method, std::string const& target, std::string const& body = {},
                               std::string const& moreHeaders = {});

    /// Reads until `mark` has come and gives all up to its end; what came when the other side closes or stays silent.
    std::string ReadUntil(std::string const& mark);

    /// True when the other side closes without a further byte.
    bool IsClosed();

private:
    bool ReadMore();

    int socket = -1;
    std::string received;
};

} // namespace ZuTest
