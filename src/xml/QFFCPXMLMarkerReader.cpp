// The marker reader of QFFCPXMLParser lives with the XML layer it queries through.

#include "time/QFFCPXMLParser.h"

#include "support/QFFormat.h"
#include "time/QFNumberReader.h"
#include "time/QFTimecode.h"
#include "xml/QFXMLParser.h"
#include "xml/XmlDocument.h"

#include <QRegularExpression>
#include <QSet>

#include <cmath>

namespace {

struct TimecodeSettings
{
    double fps = 30.0;
    int timebase = 30;
    bool ntsc = false;
    bool dropFrame = false;
    quint64 startFrame = 0;
};

TimecodeSettings readTimecodeSettings(const XmlNode &document)
{
    TimecodeSettings settings;
    // The first format of the resources, whichever one the sequence uses.
    const QString frameDuration = QFXMLParser::stringValueForQuery(
        QStringLiteral("./fcpxml[1]/resources[1]/format/@frameDuration[1]"), document);
    settings.fps = QFFCPXMLParser::fpsFromFrameDuration(frameDuration);
    settings.timebase = QFNumberReader::toInt32(std::ceil(settings.fps));
    settings.ntsc = settings.timebase > settings.fps;
    settings.dropFrame =
        QFXMLParser::stringValueForQuery(
            QStringLiteral("./fcpxml[1]/library[1]//project[1]/sequence[1]/@tcFormat[1]"),
            document) == u"DF";
    const double start = QFFCPXMLParser::secondsFromTimeString(QFXMLParser::stringValueForQuery(
        QStringLiteral("./fcpxml[1]/library[1]//project[1]/sequence[1]/@tcStart"), document));
    settings.startFrame = QFNumberReader::toUInt64(std::ceil(settings.fps * start));
    return settings;
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

QList<QVariantMap> QFFCPXMLParser::markersFromXMLFile(const QString &path, bool useTimecode,
                                                      bool stripDuplicates, bool mainStorylineOnly,
                                                      qint64 relativeHour)
{
    QList<QVariantMap> markers;
    const std::unique_ptr<XmlDocument> parsed = XmlDocument::fromFile(path);
    if (!parsed)
        return markers;
    const XmlNode document = parsed->node();
    const TimecodeSettings settings =
        useTimecode ? readTimecodeSettings(document) : TimecodeSettings();

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
                const quint64 frames = QFNumberReader::toUInt64(settings.fps * time);
                QString timecode =
                    QFTimecode::timecodeFromFrameCount(frames, settings.timebase, settings.ntsc,
                                                       settings.dropFrame, settings.startFrame);
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
