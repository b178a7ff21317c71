#include "support/QFOSDetect.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

struct VersionCase
{
    QFOSDetect::Version running;
    bool expected;
};

TEST(QFOSDetect, ThresholdsAndText)
{
    const VersionCase cases[] = {{{10, 9, 4}, false}, {{10, 9, 5}, true},  {{10, 10, 0}, true},
                                 {{11, 0, 0}, true},  {{10, 8, 9}, false}, {{9, 99, 99}, false}};
    for (const VersionCase &c : cases) {
        QFOSDetect::setVersionForTesting(c.running);
        EXPECT_EQ(QFOSDetect::isOSVersionAtLeast(10, 9, 5), c.expected)
            << QFOSDetect::osVersionString().toStdString();
    }
    QFOSDetect::setVersionForTesting(QFOSDetect::Version{10, 15, 7});
    EXPECT_EQ(QFOSDetect::osVersionString(), "10.15.7");
    EXPECT_EQ(QFOSDetect::osxVersion(), "10.15.7");
    EXPECT_TRUE(QFOSDetect::isSierraOrHigher());
    QFOSDetect::setVersionForTesting(QFOSDetect::Version{10, 6, 8});
    EXPECT_TRUE(QFOSDetect::isSnowLeopardOrHigher());
    EXPECT_FALSE(QFOSDetect::isLionOrHigher());
    QFOSDetect::setVersionForTesting(QFOSDetect::Version{});
    EXPECT_EQ(QFOSDetect::osVersionString(), "0.0.0");
    QFOSDetect::setVersionForTesting(std::nullopt);
    EXPECT_GT(QFOSDetect::version().major, 0); // the running kernel
}

} // namespace
