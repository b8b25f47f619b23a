#pragma once

namespace SparkplugMqtt
{

/// Ends the wait of a thread that polls descriptors.
///
/// Threads: any thread may call `Wake`; the polling thread calls the rest.
class Waker final
{
public:
    /// Throws `Zu::Status::FAILURE` if the system has no descriptor left.
    Waker();
    ~Waker();
    Waker(Waker const&) = delete;
    Waker& operator=(Waker const&) = delete;

    /// Makes the descriptor readable until `Clear`.
    void Wake() noexcept;

    void Clear() noexcept;

    int Descriptor() const
    {
        return descriptor;
    }

private:
    int const descriptor;
};

} // namespace SparkplugMqtt
