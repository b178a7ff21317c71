#include "AppController.h"

// Every menu lives in a document window, so there is nothing to add once launched.
void AppController::platformDidFinishLaunching() {}

bool AppController::quitsWithoutDocuments() const
{
    return true;
}
