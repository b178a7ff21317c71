#pragma once

#include <QString>
#include <QtGlobal>

#include <compare>
#include <optional>

/// An exact FCPX time: numerator / denominator seconds, the denominator positive.
/// Clip boundaries are compared in it, so that a marker on a cut lands in one clip
/// whatever the rate.
struct RationalTime
{
    qint64 numerator = 0;
    qint64 denominator = 1;

    /// "a/bs", "as" or "a.bs"; an absent (null) string is 0s. Nothing for other text,
    /// a zero denominator or values beyond 64 bits.
    static std::optional<RationalTime> fromTimeString(const QString &timeString);

    /// A whole number of frames of the given frame duration; nothing beyond 64 bits.
    static std::optional<RationalTime> frames(qint64 count, const RationalTime &frameDuration);

    /// Nothing when the sum leaves 64 bits.
    std::optional<RationalTime> plus(const RationalTime &other) const;

    friend std::strong_ordering operator<=>(const RationalTime &a, const RationalTime &b);
    friend bool operator==(const RationalTime &a, const RationalTime &b)
    {
        return (a <=> b) == std::strong_ordering::equal;
    }
};
