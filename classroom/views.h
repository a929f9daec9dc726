#pragma once

/// What a logger's cell shows. Those that stand in no list of views act on no cell; they are values that a
/// stored file may name.
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
    VIEW_SIMULATION,
    VIEW_THERMO
};
