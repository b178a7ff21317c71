#pragma once

#include "time/FrameRate.h"
#include "xml/XmlNode.h"

#include <QString>

/// The rate of a Final Cut Pro X timeline, as the import and the marker reader both
/// read it: the frame duration of the sequence's format (in a project-form document's
/// own resources, else in the document's; the document's first format when the
/// sequence names none there), drop frame when its tcFormat is "DF", and where its
/// timecode starts.
struct FCPXTimelineRate
{
    FrameRate rate;
    QString formatId;
    /// As written: the duration of every marker the import writes.
    QString frameDuration;
    /// tcStart in frames at the rate.
    double startFrames = 0;

    static FCPXTimelineRate of(const XmlNode &document, const XmlNode &sequence);
};
