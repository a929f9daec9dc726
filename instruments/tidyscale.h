#pragma once

/// Ends of a scale at multiples of a handsome step, as low as the wanted range allows.
struct TidyScale
{
    static constexpr int steps = 8;

    double minimum = 0;
    double maximum = 1;

    /// For a range whose ends are finite; ends the other way round are exchanged, and equal ones get room.
    static TidyScale of(double minimum, double maximum);
    friend bool operator!=(const TidyScale& a, const TidyScale& b)
    {
        return a.minimum != b.minimum || a.maximum != b.maximum;
    }
};
