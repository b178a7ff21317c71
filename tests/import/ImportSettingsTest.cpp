#include "import/ImportSettings.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(ImportSettings, DictionaryKeysAndOffsetUnits)
{
    ImportSettings s;
    s.filename = u"/a/b.xml"_s;
    s.clearExistingMarkers = true;
    s.frameOffset = -2;
    s.frameOffsetUnit = OffsetUnit::Seconds;
    s.uuid = u"U"_s;
    const QVariantMap map = s.toVariantMap();
    EXPECT_EQ(map.keys(), QStringList({u"clearExistingMarkers"_s, u"filename"_s, u"frameOffset"_s,
                                       u"frameOffsetUnitIndex"_s, u"uuid"_s}));
    const ImportSettings back = ImportSettings::fromVariantMap(map);
    EXPECT_EQ(back.toVariantMap(), map);
    EXPECT_FALSE(back.sequenceXPath);

    const std::tuple<int, qint64, qint64> units[] = {{0, 30, -2},      {1, 30, -60}, {2, 30, -3600},
                                                     {3, 25, -180000}, {7, 30, -2},  {1, 0, 0}};
    for (const auto &[unit, timebase, frames] : units) {
        s.frameOffsetUnit = offsetUnitForIndex(unit);
        EXPECT_EQ(s.offsetInFrames(timebase), frames) << "unit " << unit;
    }
}

} // namespace
