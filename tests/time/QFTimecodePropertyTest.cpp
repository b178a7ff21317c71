// Properties over whole ranges of frames rather than single examples.

#include "time/QFTimecode.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class NonDropRoundTrip : public testing::TestWithParam<int>
{
};

// Every frame of 48 hours prints and reads back; hours wrap at 24, so the second
// day reads back as the first.
TEST_P(NonDropRoundTrip, EveryFrameOfTwoDays)
{
    const int timebase = GetParam();
    const quint64 day = quint64(timebase) * 3600 * 24;
    quint64 failures = 0;
    for (quint64 n = 0; n < 2 * day && failures < 5; ++n) {
        const QString text = QFTimecode::timecodeFromFrameCount(n, timebase, false, false, 0);
        const quint64 back = QFTimecode::frameCountFromTimecode(text, timebase, false, false, 0);
        if (back != n % day) {
            ADD_FAILURE() << "frame " << n << " printed " << text.toStdString() << " read " << back;
            ++failures;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, NonDropRoundTrip, testing::Values(24, 25, 30, 60));

// The drop-frame rule written out in whole-number arithmetic, independently of the
// floating-point form the class uses: D numbers dropped a minute, blocks of ten
// whole-rate minutes, nine drops a block.
struct DropRule
{
    quint64 timebase;
    quint64 dropped() const { return (timebase + 7) / 15; } // round(timebase / 15)
    quint64 add(quint64 n) const
    {
        const quint64 block = 600 * timebase;
        const quint64 q = n / block, r = n % block;
        const quint64 base = n + 9 * dropped() * q;
        if (r <= dropped())
            return base;
        return base + dropped() * ((r - dropped()) / (60 * timebase - dropped()));
    }
    quint64 subtract(quint64 n) const
    {
        const quint64 a = add(n) - n;
        return add(a) + n - 2 * a;
    }
    QString label(quint64 display) const
    {
        const quint64 seconds = display / timebase;
        return QString::asprintf("%02llu:%02llu:%02llu;%02llu", (seconds / 3600) % 24,
                                 (seconds / 60) % 60, seconds % 60, display % timebase);
    }
};

class DropFrameMinuteBoundaries : public testing::TestWithParam<int>
{
};

TEST_P(DropFrameMinuteBoundaries, FirstTwoHoursFollowTheRule)
{
    const DropRule rule{quint64(GetParam())};
    const quint64 minute = 60 * rule.timebase;
    for (quint64 m = 0; m < 120; ++m) {
        // Printing: the real frames around the point where the display reaches minute m.
        const quint64 crossing = m * minute - std::min(m * minute, rule.dropped() * (m - m / 10));
        for (quint64 n = crossing > 3 ? crossing - 3 : 0; n <= crossing + 3; ++n) {
            EXPECT_EQ(QFTimecode::timecodeFromFrameCount(n, rule.timebase, true, true, 0),
                      rule.label(rule.add(n)))
                << "frame " << n;
        }
        // Reading: the labels of the first frames of minute m, the dropped ones included.
        for (quint64 f = 0; f <= 2 * rule.dropped() + 1; ++f) {
            const quint64 display = m * minute + f;
            const QString text = rule.label(display);
            EXPECT_EQ(QFTimecode::frameCountFromTimecode(text, rule.timebase, true, true, 0),
                      rule.subtract(display))
                << text.toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, DropFrameMinuteBoundaries, testing::Values(30, 60));

} // namespace
