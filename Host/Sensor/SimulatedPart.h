#pragma once

#include "Host/Sensor/ProfileSource.h"

#include <random>

namespace ZuHost
{

/// A conveyor that carries stepped blocks of one size under a laser line, with a gap between them.
///
///     z 25      ____   ____        upper step, |x| <= 20, parted by a slot, |x| < 4, from which no light comes back
///     z 10   __|    |_|    |__     lower step, |x| <= 30
///     z  0       =======           belt, |x| <= 10, seen only in the gap: the block hides it
///
/// Each block begins with a stretch of the lower step only, followed by a stretch with both steps, then the gap. When the
/// conveyor stands still, every profile shows both steps. All numbers are exact in binary, so each measurement has
/// exactly one correct value.
class SimulatedPart final : public IProfileSource
{
public:
    // Millimetres.
    static constexpr double POINT_SPACING = 0.125;
    static constexpr double BELT_HALF_WIDTH = 10;
    static constexpr double LOWER_HALF_WIDTH = 30;
    static constexpr double LOWER_HEIGHT = 10;
    static constexpr double UPPER_HALF_WIDTH = 20;
    static constexpr double UPPER_HEIGHT = 25;
    static constexpr double SLOT_HALF_WIDTH = 4;

    // Frames; the conveyor moves by the same length in each.
    static constexpr uint64 LOWER_FRAMES = 80;
    static constexpr uint64 BOTH_FRAMES = 80;
    static constexpr uint64 GAP_FRAMES = 40;
    static constexpr uint64 FRAMES_PER_BLOCK = LOWER_FRAMES + BOTH_FRAMES + GAP_FRAMES;

    enum class Conveyor
    {
        MOVES,
        STANDS_STILL
    };

    /// A part without noise.
    explicit SimulatedPart(Conveyor newConveyor);

    /// A moving conveyor. `newNoiseDeviation`: standard deviation of the Gaussian noise on each z, in millimetres; 0 for none. The same
    /// seed gives the same noise. Throws `Zu::Status::BAD_ARGUMENT` for a deviation that is negative or not finite.
    explicit SimulatedPart(double newNoiseDeviation = 0, uint64 noiseSeed = 1);

    SharedProfile ProfileAt(uint64 frame) override;
    LineRange Line() const override;

private:
    SimulatedPart(Conveyor newConveyor, double newNoiseDeviation, uint64 noiseSeed);

    SharedProfile const& ExactProfileAt(uint64 frame) const;

    Conveyor const conveyor;
    double const noiseDeviation;
    SharedProfile const lower;
    SharedProfile const both;
    SharedProfile const gap;
    std::mt19937_64 random;
};

} // namespace ZuHost
