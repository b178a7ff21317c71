#pragma once

// A test of an import that may hand its result to the editor: a private home and log,
// and a workspace that records what it was asked to open instead of opening it.

#include "LoggedTest.h"
#include "Recorders.h"

class HandOffTest : public LoggedTest
{
protected:
    RecordingWorkspace workspace;
};
