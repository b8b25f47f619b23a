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
    /// An answer as received; header names keep their case.
    struct Answer
    {
        uint32 status = 0;
        std::string head;
        std::string body;

        /// Whether the head has this line.
        bool Has(std::string const& line) const;
    };

    /// Connects from `source`, an address of this machine.
    explicit TestConnection(uint16 port, char const* source = "127.0.0.1");
    ~TestConnection();

    TestConnection(TestConnection const&) = delete;
    TestConnection& operator=(TestConnection const&) = delete;

    void Write(std::string const& bytes);
    void EndWriting();

    /// The next answer, with a body of the announced length. Empty if the other side closes the connection or sends
    /// nothing in time.
    std::optional<Answer> ReadAnswer(bool hasBody = true);

    /// One request with the usual head, and its answer.
    std::optional<Answer> Send(std::string const& method, std::string const& target, std::string const& body = {},
                               std::string const& moreHeaders = {});

    /// Reads up to the end of `mark` and returns all bytes. If the other side closes the connection or sends nothing in
    /// time, returns the bytes received so far.
    std::string ReadUntil(std::string const& mark);

    /// Whether the other side closes the connection without sending another byte.
    bool IsClosed();

private:
    bool ReadMore();

    int socket = -1;
    std::string received;
};

} // namespace ZuTest
