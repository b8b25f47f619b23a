#pragma once

namespace ZuHost
{

/// A descriptor of the system that is closed at the end.
class Descriptor final
{
public:
    static constexpr int NONE = -1;

    explicit Descriptor(int ownedNumber = NONE) noexcept;
    ~Descriptor();

    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    /// `NONE` when there is none, or none any more.
    int Number() const noexcept;

    void Close() noexcept;

private:
    int number;
};

} // namespace ZuHost
