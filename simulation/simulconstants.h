#pragma once

/// Which experiment a scene plays.
enum simulType
{
    SIMUL_FREEFALL = 1,
    SIMUL_PENDULUM = 2
};

constexpr double SIMUL_DT = 0.04; ///< seconds between two samples
constexpr int SCALE = 100;        ///< units of the scene in a metre of the pendulum
/// Short, so that the numbers are those that a class works out on paper.
constexpr double PI = 3.14159;
