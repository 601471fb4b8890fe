#pragma once

// Start-up and shut-down of the program, in the order the rest relies on.
class AppDelegate {
public:
    // Starts the first work period, then sets up windows, the status item and
    // the system events, and logs the home folder.
    void applicationDidFinishLaunching();
    // Nothing to save: settings are written the moment they change.
    void applicationWillTerminate();
};
