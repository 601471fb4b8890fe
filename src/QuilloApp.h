#pragma once

// The program's entry type: owns the application object and the delegate,
// runs the event loop until Quit (or SIGTERM/SIGINT).
class QuilloApp {
public:
    static int main(int argc, char **argv);
};
