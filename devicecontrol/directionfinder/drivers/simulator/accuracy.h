#pragma once

#include "zancommon/zandomain.h"

namespace Simulator {

/// How well a direction finder measures.
class Accuracy {
public:
    /// Standard deviation of an azimuth, in degrees: what the method cannot do better, and what the noise
    /// adds, which is less with a larger aperture and the more measurements are averaged. \param
    /// signalToNoise ratio of powers, above 0 \param count measurements that are averaged, 1 or more
    static double GetDeviation(EZANMethod method, double signalToNoise, double count);
    /// 1 to 100, from the standard deviation of an azimuth.
    static double GetQuality(double deviation);
};

} // namespace Simulator
