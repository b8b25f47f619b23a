#pragma once

#include "wApi/wTypes.h"

#include <memory>
#include <optional>
#include <string>

struct ssl_ctx_st;
struct ssl_st;

namespace ZuTest
{

/// A client that writes bytes and reads answers, over a real socket, with or without TLS. Every read has a bound of thirty seconds.
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

    /// Connects from `source`, an address of this machine. With `tls`, the handshake is over afterwards: see
    /// `HasTls`.
    explicit TestConnection(uint16 port, char const* source = "127.0.0.1", ssl_ctx_st* tls = nullptr);
    ~TestConnection();

    TestConnection(TestConnection const&) = delete;
    TestConnection& operator=(TestConnection const&) = delete;

    /// Whether the TLS handshake has succeeded.
    bool HasTls() const;

    /// Whether the other side has ended TLS, and not only the TCP connection.
    bool HasTlsEnded() const;

    ssl_st* Tls() const;

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
    std::shared_ptr<ssl_st> tls;
    std::string received;
};

} // namespace ZuTest
