#include "Host/Sensor/SimulatedPart.h"

#include "ZuApi/Exception.h"

#include <cmath>
#include <utility>

namespace ZuHost
{

namespace
{

/// Points at each spacing from -halfWidth to halfWidth, both included. `heightAt` maps the distance from the middle to
/// the height; a negative height means that nothing is seen.
template <typename HeightAt>
SharedProfile Section(double halfWidth, HeightAt heightAt)
{
    Profile profile;
    int const steps = static_cast<int>(halfWidth / SimulatedPart::POINT_SPACING);
    for (int step = -steps; step <= steps; ++step)
    {
        double const x = step * SimulatedPart::POINT_SPACING;
        if (double const z = heightAt(std::abs(x)); z >= 0)
        {
            profile.push_back({x, z});
        }
    }
    return std::make_shared<Profile const>(std::move(profile));
}

double CheckedDeviation(double deviation)
{
    if (!std::isfinite(deviation) || deviation < 0)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A noise of %g mm is not possible", deviation);
    }
    return deviation;
}

double BothStepsAt(double distance)
{
    if (distance > SimulatedPart::UPPER_HALF_WIDTH)
    {
        return SimulatedPart::LOWER_HEIGHT;
    }
    return distance < SimulatedPart::SLOT_HALF_WIDTH ? -1 : SimulatedPart::UPPER_HEIGHT;
}

} // namespace

SimulatedPart::SimulatedPart(Conveyor newConveyor) : SimulatedPart(newConveyor, 0, 1)
{
}

SimulatedPart::SimulatedPart(double newNoiseDeviation, uint64 noiseSeed)
    : SimulatedPart(Conveyor::MOVES, newNoiseDeviation, noiseSeed)
{
}

SimulatedPart::SimulatedPart(Conveyor newConveyor, double newNoiseDeviation, uint64 noiseSeed)
    : conveyor(newConveyor),
      noiseDeviation(CheckedDeviation(newNoiseDeviation)),
      lower(Section(LOWER_HALF_WIDTH, [](double) { return LOWER_HEIGHT; })),
      both(Section(LOWER_HALF_WIDTH, BothStepsAt)),
      gap(Section(BELT_HALF_WIDTH, [](double) { return 0.0; })),
      random(noiseSeed)
{
}

SharedProfile SimulatedPart::ProfileAt(uint64 frame)
{
    SharedProfile const& exact = ExactProfileAt(frame);
    if (noiseDeviation == 0)
    {
        return exact;
    }
    std::normal_distribution<double> noise(0, noiseDeviation);
    auto noisy = std::make_shared<Profile>(*exact);
    for (ProfilePoint& point : *noisy)
    {
        point.z += noise(random);
    }
    return noisy;
}

LineRange SimulatedPart::Line() const
{
    return {-LOWER_HALF_WIDTH, LOWER_HALF_WIDTH};
}

SharedProfile const& SimulatedPart::ExactProfileAt(uint64 frame) const
{
    if (conveyor == Conveyor::STANDS_STILL)
    {
        return both;
    }
    uint64 const phase = frame % FRAMES_PER_BLOCK;
    return phase < LOWER_FRAMES ? lower : phase < LOWER_FRAMES + BOTH_FRAMES ? both : gap;
}

} // namespace ZuHost
