#include "xml/QFFCPXMLMarkerReader.h"

#include "time/QFFCPXMLParser.h"

#include "support/QFFormat.h"
#include "time/FrameRate.h"
#include "time/QFNumberReader.h"
#include "xml/FCPXTimelineRate.h"
#include "xml/QFXMLParser.h"
#include "xml/XmlDocument.h"

#include <QRegularExpression>
#include <QSet>

#include <cmath>

namespace {

/// The rate of the first project's sequence, its timecode starting where it does.
FrameRate readFrameRate(const XmlNode &document)
{
    const FCPXTimelineRate timeline = FCPXTimelineRate::of(
        document, QFXMLParser::nodeForQuery(
                      QStringLiteral("./fcpxml[1]/library[1]//project[1]/sequence[1]"), document));
    FrameRate rate = timeline.rate;
    rate.startFrame = QFNumberReader::toUInt64(std::ceil(timeline.startFrames));
    return rate;
}

double secondsOf(const QString &query, const XmlNode &node)
{
    return QFFCPXMLParser::secondsFromTimeString(QFXMLParser::stringValueForQuery(query, node));
}

/// Rewrites the hour against a reference hour: equal gives 0, below adds it, above
/// stays. The separators all become ":".
QString withRelativeHour(const QString &timecode, qint64 relativeHour)
{
    static const QRegularExpression separators(QStringLiteral("[:;]"));
    QStringList fields = timecode.split(separators);
    const qint64 hour =
        QFNumberReader::toInt32(double(QFNumberReader::leadingInteger(fields.first())));
    qint64 newHour = hour;
    if (hour == relativeHour)
        newHour = 0;
    else if (hour < relativeHour)
        newHour = hour + relativeHour;
    fields.removeFirst();
    return QFFormat::format(u"%@%i:%@", newHour < 10 ? QStringLiteral("0") : QStringLiteral(""),
                            newHour, fields.join(u':'));
}

} // namespace

QList<QVariantMap> QFFCPXMLMarkerReader::markersFromXMLFile(const QString &path, bool useTimecode,
                                                            bool stripDuplicates,
                                                            bool mainStorylineOnly,
                                                            qint64 relativeHour)
{
    QList<QVariantMap> markers;
    const std::unique_ptr<XmlDocument> parsed = XmlDocument::fromFile(path);
    if (!parsed)
        return markers;
    const XmlNode document = parsed->node();
    const FrameRate rate = useTimecode ? readFrameRate(document) : FrameRate();

    const QString markerQuery =
        mainStorylineOnly
            ? QStringLiteral("./fcpxml[1]/library[1]//project[1]/sequence[1]/spine[1]/(clip | "
                             "ref-clip | video | mc-clip | title | transition | gap)/marker")
            : QStringLiteral("./fcpxml[1]/library[1]//project[1]/sequence[1]/spine[1]//(clip | "
                             "ref-clip | video | mc-clip | title | transition | gap)/marker");
    QSet<double> seenTimes;
    for (const XmlNode &marker : QFXMLParser::nodesForQuery(markerQuery, document)) {
        const QString text =
            QFXMLParser::stringValueForQuery(QStringLiteral("./@value[1]"), marker);
        const double markerStart = secondsOf(QStringLiteral("./@start[1]"), marker);
        const double clipStart = secondsOf(QStringLiteral("./../@start[1]"), marker);
        if (clipStart > markerStart)
            continue; // before the used part of the clip
        const double clipDuration = secondsOf(QStringLiteral("./../@duration[1]"), marker);
        if (markerStart > clipStart + clipDuration)
            continue; // after it
        const double clipOffset = secondsOf(QStringLiteral("./../@offset[1]"), marker);
        const double time = markerStart - clipStart + clipOffset;

        const bool seen = seenTimes.contains(time);
        seenTimes.insert(time);
        if (stripDuplicates && seen)
            continue;

        QVariantMap record;
        if (!text.isNull()) {
            record.insert(QStringLiteral("name"), text);
            if (useTimecode) {
                QString timecode =
                    rate.timecodeFromFrames(QFNumberReader::toUInt64(rate.fps * time));
                if (relativeHour >= 0)
                    timecode = withRelativeHour(timecode, relativeHour);
                record.insert(QStringLiteral("startTimecode"), timecode);
            } else {
                record.insert(QStringLiteral("seconds"), time);
            }
        }
        markers << record;
    }
    return markers;
}
