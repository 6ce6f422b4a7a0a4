#pragma once

/// Four numbers that belong together, for example two frequency limits and two azimuths.
struct QuadFloat {
    QuadFloat() = default;
    QuadFloat(double v1, double v2, double v3, double v4)
        : first(v1)
        , second(v2)
        , third(v3)
        , fourth(v4) {}

    bool operator==(const QuadFloat&) const = default;

    double first = 0.0;
    double second = 0.0;
    double third = 0.0;
    double fourth = 0.0;
};
