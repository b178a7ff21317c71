#pragma once

#include <QString>

/// A realistic marker list: a header line and `count` records with varied names,
/// comments (some spanning two lines), timecodes and colours. Deterministic.
QString generateMarkerList(int count);
