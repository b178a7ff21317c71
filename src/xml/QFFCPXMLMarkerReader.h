#pragma once

#include <QList>
#include <QString>
#include <QVariantMap>

/// The reverse of the FCPX import: the markers a Final Cut Pro X document holds, read
/// back with their places on the timeline. The time values are read as QFFCPXMLParser
/// reads them; the reader lives with the XML layer it queries through.
class QFFCPXMLMarkerReader
{
public:
    QFFCPXMLMarkerReader() = delete;

    /// The markers on the clips of the first project's sequence of a library-form
    /// .fcpxml file, in document order: {"name", "seconds"} records, or {"name",
    /// "startTimecode"} with useTimecode (a marker without a value gives an empty
    /// record). Only markers within the used part of their clip count, both ends
    /// included. mainStorylineOnly leaves out connected clips and nested storylines;
    /// stripDuplicates keeps one marker per timeline time; a relativeHour of 0 or more
    /// rewrites the timecode's hour. An unreadable file gives an empty list.
    static QList<QVariantMap> markersFromXMLFile(const QString &path, bool useTimecode,
                                                 bool stripDuplicates = false,
                                                 bool mainStorylineOnly = true,
                                                 qint64 relativeHour = -1);
};
