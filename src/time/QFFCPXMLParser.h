#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

/// Final Cut Pro X documents: rational time values ("1001/30000s", "3600s").
///
/// Stateless. An absent (null) string means time zero; malformed numbers read as 0
/// and a zero denominator gives the double division's infinity or not-a-number.
class QFFCPXMLParser
{
public:
    QFFCPXMLParser() = delete;

    /// Seconds of a time string: "a/bs" gives a / b, "as" gives a, anything else 0.
    static double secondsFromTimeString(const QString &timeString);

    /// Whole frames of a time string whose numerator counts in units of frameDuration
    /// (the frame duration's numerator); the denominator is not read.
    static quint64 framesFromTimeString(const QString &timeString, quint64 frameDuration);

    /// Frames per second of a frame duration: "a/bs" gives b / a; a one-part duration
    /// is returned as it stands (not its reciprocal).
    static double fpsFromFrameDuration(const QString &frameDuration);

    /// The frame duration's numerator (1001 for "1001/30000s"); 0 when absent.
    static qint64 multiplierFromFrameDuration(const QString &frameDuration);
};
