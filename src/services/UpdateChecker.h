#pragma once

// Checks for a newer release; installed at start-up when the build has one.
class UpdateChecker {
public:
    virtual ~UpdateChecker() = default;
    // A check the user asked for: reports "up to date" and errors too.
    virtual void checkForUpdates() = 0;
};
