#pragma once

#include "time/RationalTime.h"
#include "xml/FCPXMLDtd.h"
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
        /// Where the clip begins on the timeline, in frames.
        double offset = 0;
        /// Where the clip's own time begins, in seconds.
        double start = 0;
        /// The timeline range it covers, [begins, ends), exactly as written; none when
        /// its offset or duration cannot be read.
        std::optional<RationalTime> begins;
        std::optional<RationalTime> ends;
    };

    /// Reads the "offset", "start" and "duration" of each clip (absent ones are 0).
    FCPXClipRanges(const QList<XmlNode> &clips, double fps);

    /// The first clip in document order whose range holds the time; nullptr when none
    /// does. Logarithmic when the offsets are in timeline order, as storylines are;
    /// otherwise every clip is looked at.
    const Clip *clipAt(const RationalTime &time) const;

private:
    std::vector<Clip> m_clips;
    /// For each clip, the furthest end among it and the clips before it. Empty when
    /// the clips are out of order (or hold unreadable times) and a scan is needed.
    std::vector<RationalTime> m_reach;
};

/// Inserts new markers into clips where the DTD of the document's version wants them:
/// after the last child its content model places before markers, else before the
/// first of the markers' group or behind it, else at the end.
///
/// While a clip holds any element placed before markers, each new marker goes directly
/// after the last of them, so the markers of one import land in reverse order there.
/// That is the order the editor has always received and is kept.
class FCPXMarkerInsertion
{
public:
    explicit FCPXMarkerInsertion(const FCPXMLDtd &dtd) : m_dtd(dtd) {}

    /// Makes a marker element (or another of the markers' group, such as a chapter
    /// marker) with the attributes as written into the clip, without a parser; nil when
    /// a text needs one (see XmlNode::insertNewElement).
    XmlNode insertNew(const XmlNode &clip, const QList<XmlNode::AttributeText> &attributes,
                      const QString &element = QStringLiteral("marker"));
    /// Inserts a copy of a parsed marker element into the clip; the inserted node.
    XmlNode insert(const XmlNode &clip, const XmlNode &marker);

    /// Checks every clip that received markers, and the markers, against the DTD: a
    /// null string when all fit, else the validator's message. Costs what was
    /// touched, not the document.
    QString check() const;

private:
    /// The neighbour a new marker goes next to; both nil means at the end.
    struct Place
    {
        XmlNode after;
        XmlNode before;
    };
    Place placeIn(const XmlNode &clip) const;
    const Place &placeFor(const XmlNode &clip);
    XmlNode inserted(const XmlNode &marker);

    const FCPXMLDtd &m_dtd;
    // Markers are placed neither before nor after themselves, so a clip's place stays
    // valid while markers are added to it.
    QHash<XmlNode, Place> m_places;
    /// The clips that received markers and the markers, in the order they came.
    QList<XmlNode> m_changed;
};
