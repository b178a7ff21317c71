#include "FCPXPlacement.h"

#include "time/QFFCPXMLParser.h"

#include <algorithm>
#include <cmath>

FCPXClipRanges::FCPXClipRanges(const QList<XmlNode> &clips, double fps)
{
    m_clips.reserve(size_t(clips.size()));
    bool ordered = true;
    for (const XmlNode &element : clips) {
        Clip clip;
        clip.element = element;
        QString offset, start, duration;
        element.attributeValues({{"offset", &offset}, {"start", &start}, {"duration", &duration}});
        clip.offset = QFFCPXMLParser::secondsFromTimeString(offset) * fps;
        clip.start = QFFCPXMLParser::secondsFromTimeString(start);
        clip.begins = RationalTime::fromTimeString(offset);
        const auto length = RationalTime::fromTimeString(duration);
        if (clip.begins && length)
            clip.ends = clip.begins->plus(*length);
        if (!clip.ends || (!m_clips.empty() && *clip.begins < *m_clips.back().begins))
            ordered = false;
        m_clips.push_back(clip);
    }
    if (!ordered)
        return;
    m_reach.reserve(m_clips.size());
    for (const Clip &clip : m_clips)
        m_reach.push_back(m_reach.empty() ? *clip.ends : std::max(m_reach.back(), *clip.ends));
}

const FCPXClipRanges::Clip *FCPXClipRanges::clipAt(const RationalTime &time) const
{
    if (m_reach.size() != m_clips.size()) {
        const auto found = std::find_if(m_clips.begin(), m_clips.end(), [&time](const Clip &c) {
            return c.ends && *c.begins <= time && time < *c.ends;
        });
        return found == m_clips.end() ? nullptr : &*found;
    }
    // Clips before `starting` begin at or before the time; the first clip whose reach
    // passes it is the first that ends after it, and it holds the time when it also
    // begins in time.
    const auto starting =
        std::upper_bound(m_clips.begin(), m_clips.end(), time,
                         [](const RationalTime &t, const Clip &clip) { return t < *clip.begins; });
    const auto reaching = std::upper_bound(m_reach.begin(), m_reach.end(), time);
    const auto index = reaching - m_reach.begin();
    return index < starting - m_clips.begin() ? &m_clips[size_t(index)] : nullptr;
}

FCPXMarkerInsertion::Place FCPXMarkerInsertion::placeIn(const XmlNode &clip) const
{
    const FCPXMLDtd::MarkerOrder &order = m_dtd.markerOrder(clip.name());
    Place place;
    for (XmlNode child = clip.childAt(0); child; child = child.nextSibling()) {
        const QString name = child.name();
        if (name.isNull())
            continue;
        if (order.before.contains(name))
            place.after = child;
        else if (!place.before && order.after.contains(name))
            place.before = child;
    }
    return place;
}

const FCPXMarkerInsertion::Place &FCPXMarkerInsertion::placeFor(const XmlNode &clip)
{
    auto found = m_places.find(clip);
    if (found == m_places.end()) {
        found = m_places.insert(clip, placeIn(clip));
        m_changed.append(clip);
    }
    return *found;
}

XmlNode FCPXMarkerInsertion::inserted(const XmlNode &marker)
{
    if (marker)
        m_changed.append(marker);
    return marker;
}

XmlNode FCPXMarkerInsertion::insertNew(const XmlNode &clip,
                                       const QList<XmlNode::AttributeText> &attributes,
                                       const QString &marker)
{
    const Place &place = placeFor(clip);
    if (place.after)
        return inserted(
            XmlNode(place.after).insertNewElement(XmlNode::Place::After, marker, attributes));
    if (place.before)
        return inserted(
            XmlNode(place.before).insertNewElement(XmlNode::Place::Before, marker, attributes));
    return inserted(XmlNode(clip).insertNewElement(XmlNode::Place::LastChild, marker, attributes));
}

XmlNode FCPXMarkerInsertion::insert(const XmlNode &clip, const XmlNode &marker)
{
    const Place &place = placeFor(clip);
    if (place.after)
        return inserted(XmlNode(place.after).insertSiblingAfter(marker));
    if (place.before)
        return inserted(XmlNode(place.before).insertSiblingBefore(marker));
    return inserted(XmlNode(clip).addChild(marker));
}

QString FCPXMarkerInsertion::check() const
{
    return m_dtd.checkElements(m_changed);
}
