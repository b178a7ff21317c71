#include "ImportSettings.h"

#include "support/QFLog.h"

namespace {
const QString filenameKey = QStringLiteral("filename");
const QString clearKey = QStringLiteral("clearExistingMarkers");
const QString offsetKey = QStringLiteral("frameOffset");
const QString unitKey = QStringLiteral("frameOffsetUnitIndex");
const QString xpathKey = QStringLiteral("sequenceXPath");
const QString todoKey = QStringLiteral("todoMarkersEnabled");
const QString uuidKey = QStringLiteral("uuid");
} // namespace

QVariantMap ImportSettings::toVariantMap() const
{
    QVariantMap map{{filenameKey, filename},
                    {clearKey, clearExistingMarkers},
                    {offsetKey, frameOffset},
                    {unitKey, int(frameOffsetUnit)}};
    if (sequenceXPath)
        map.insert(xpathKey, *sequenceXPath);
    if (todoMarkersEnabled)
        map.insert(todoKey, *todoMarkersEnabled);
    if (uuid)
        map.insert(uuidKey, *uuid);
    return map;
}

ImportSettings ImportSettings::fromVariantMap(const QVariantMap &map)
{
    ImportSettings settings;
    settings.filename = map.value(filenameKey).toString();
    settings.clearExistingMarkers = map.value(clearKey).toBool();
    settings.frameOffset = map.value(offsetKey).toLongLong();
    settings.frameOffsetUnit = offsetUnitForIndex(map.value(unitKey).toLongLong());
    if (map.contains(xpathKey))
        settings.sequenceXPath = map.value(xpathKey).toString();
    if (map.contains(todoKey))
        settings.todoMarkersEnabled = map.value(todoKey).toBool();
    if (map.contains(uuidKey))
        settings.uuid = map.value(uuidKey).toString();
    return settings;
}

qint64 ImportSettings::offsetInFrames(qint64 timebase) const
{
    // Unsigned, so that an absurd offset wraps instead of overflowing.
    const auto times = [this](quint64 factor) { return qint64(quint64(frameOffset) * factor); };
    switch (frameOffsetUnit) {
    case OffsetUnit::Seconds:
        return times(quint64(timebase));
    case OffsetUnit::Minutes:
        return times(quint64(timebase) * 60);
    case OffsetUnit::Hours:
        return times(quint64(timebase) * 3600);
    case OffsetUnit::Frames:
        break;
    }
    return frameOffset;
}

OffsetUnit offsetUnitForIndex(qint64 index)
{
    return index >= 0 && index <= qint64(OffsetUnit::Hours) ? OffsetUnit(index)
                                                            : OffsetUnit::Frames;
}

bool ImportSettings::cancelled(qsizetype done, qsizetype total) const
{
    if (!progress || progress(done, total))
        return false;
    QFLog::appendLog(u"Import cancelled");
    return true;
}
