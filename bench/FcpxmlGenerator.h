#pragma once

#include <QByteArray>

/// A realistic library-form FCPXML document (1.8, 25 fps) whose primary storyline
/// holds `clipCount` story elements: asset clips, clips with video, gaps, titles and
/// transitions, many with markers, keywords, connected clips and filters. Deterministic.
QByteArray generateFcpxml(int clipCount);

/// The clip count that makes generateFcpxml about `megabytes` long.
int clipCountForSize(double megabytes);
