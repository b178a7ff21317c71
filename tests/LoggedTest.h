#pragma once

// A test with a private home and a fresh log in it, for components that report
// through the log.

#include "support/QFLog.h"

#include "TempHome.h"

#include <gtest/gtest.h>

class LoggedTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QFLog::resetForTesting();
        QFLog::createNewLog(QString(), true);
    }
    void TearDown() override { QFLog::resetForTesting(); }

    /// Everything logged so far.
    QString log() const
    {
        QFLog::finishWriting();
        return QString::fromUtf8(TempHome::read(QFLog::sharedController().currentLogPath()));
    }

    TempHome home;
};
