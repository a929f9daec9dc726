#pragma once

/// What a logger's cell shows. Only the first two act on a cell so far; the others are values that a stored
/// file may name.
enum views
{
    VIEW_GRAPH,
    VIEW_BAR,
    VIEW_TABLE,
    VIEW_TABLE_GRAPH,
    VIEW_METER,
    VIEW_MAP,
    VIEW_NEW_METER,
    VIEW_METER_GRAPH,
    VIEW_SIMULATION
};
