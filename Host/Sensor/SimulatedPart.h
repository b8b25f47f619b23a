#pragma once

#include "Host/Sensor/IProfileSource.h"

#include <random>

namespace ZuHost
{

/// A conveyor that carries stepped blocks of one size under a laser line, one behind the other with a gap between them.
///
///     z 25      ____   ____        upper step, |x| <= 20, parted by a slot, |x| < 4, from which no light comes back
///     z 10   __|    |_|    |__     lower step, |x| <= 30
///     z  0       =======           belt, |x| <= 10, seen only in the gap: the block hides it
///
/// The block comes with a stretch on which it has its lower step only, then the stretch with both, then the gap. All
/// numbers are exact in binary, so that each measurement has one right value.
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

    // Frames; the conveyor moves on by the same length with each.
    static constexpr uint64 LOWER_FRAMES = 80;
    static constexpr uint64 BOTH_FRAMES = 80;
    static constexpr uint64 GAP_FRAMES = 40;
    static constexpr uint64 FRAMES_PER_BLOCK = LOWER_FRAMES + BOTH_FRAMES + GAP_FRAMES;

    /// `newNoiseDeviation`: standard deviation, in millimetres, of the Gaussian noise on each z; 0 is none. The same seed
    /// gives the same noise. Throws -997 for a deviation that is negative or not finite.
    explicit SimulatedPart(double newNoiseDeviation = 0, uint64 noiseSeed = 1);

    ProfileView ProfileAt(uint64 frame) override;

private:
    double const noiseDeviation;
    Profile const lower;
    Profile const both;
    Profile const gap;
    std::mt19937_64 random;
    Profile noisy; // kept for its memory
};

} // namespace ZuHost
