#pragma once

#include "xml/XmlNode.h"

#include <QHash>
#include <QList>

#include <vector>

/// The clips of an FCPX storyline with their timeline ranges, read once per import,
/// and the search for the clip under a marker.
class FCPXClipRanges
{
public:
    struct Clip
    {
        XmlNode element;
        /// Where the clip begins and ends on the timeline, in frames: it covers
        /// [offset, end).
        double offset = 0;
        double end = 0;
        /// Where the clip's own time begins, in seconds.
        double start = 0;
    };

    /// Reads the "offset", "start" and "duration" of each clip (absent ones are 0).
    FCPXClipRanges(const QList<XmlNode> &clips, double fps);

    /// The first clip in document order whose range holds the position; nullptr when
    /// none does. Logarithmic when the offsets are in timeline order, as storylines
    /// are; otherwise every clip is looked at.
    const Clip *clipAt(double position) const;

private:
    std::vector<Clip> m_clips;
    /// For each clip, the furthest end among it and the clips before it. Empty when
    /// the clips are out of order (or hold unreadable times) and a scan is needed.
    std::vector<double> m_reach;
};

/// Inserts new markers into clips where the FCPXML element order wants them: after
/// the clip's story elements and adjustments, before its ratings, keywords and
/// metadata; filters after the markers of a clip but before those of a transition.
///
/// While a clip holds any story element or adjustment, each new marker goes directly
/// after the last of them, so the markers of one import land in reverse order there.
/// That is the order the editor has always received and is kept.
class FCPXMarkerInsertion
{
public:
    /// Makes a marker element with the attributes as written into the clip, without a
    /// parser; nil when a text needs one (see XmlNode::insertNewElement).
    XmlNode insertNew(const XmlNode &clip, const QList<XmlNode::AttributeText> &attributes);
    /// Inserts a copy of a parsed marker element into the clip; the inserted node.
    XmlNode insert(const XmlNode &clip, const XmlNode &marker);

private:
    /// The neighbour a new marker goes next to; both nil means at the end.
    struct Place
    {
        XmlNode after;
        XmlNode before;
    };
    static Place placeIn(const XmlNode &clip);
    const Place &placeFor(const XmlNode &clip);

    // Markers are neither story elements nor ratings, so a clip's place stays valid
    // while markers are added to it.
    QHash<XmlNode, Place> m_places;
};
