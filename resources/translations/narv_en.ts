<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>Narv</name>
    <message>
        <source>%1 %2 is the newest version available.</source>
        <translation>%1 %2 is the newest version available.</translation>
    </message>
    <message>
        <source>A new version is available</source>
        <translation>A new version is available</translation>
    </message>
    <message>
        <source>About</source>
        <translation>About</translation>
    </message>
    <message>
        <source>About Narv</source>
        <translation>About Narv</translation>
    </message>
    <message>
        <source>App version</source>
        <translation>App version</translation>
    </message>
    <message>
        <source>Auto check update for Narv</source>
        <translation>Auto check update for Narv</translation>
    </message>
    <message>
        <source>Break</source>
        <translation>Break</translation>
    </message>
    <message>
        <source>Break Prompts</source>
        <translation>Break Prompts</translation>
    </message>
    <message>
        <source>Break Style</source>
        <translation>Break Style</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Check for Updates</source>
        <translation>Check for Updates</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>Custom break prompt</source>
        <translation>Custom break prompt</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>Default</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Device model</source>
        <translation>Device model</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Done</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Download</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Edit</translation>
    </message>
    <message>
        <source>Enable</source>
        <translation>Enable</translation>
    </message>
    <message>
        <source>Enable drink water reminder</source>
        <translation>Enable drink water reminder</translation>
    </message>
    <message>
        <source>End time</source>
        <translation>End time</translation>
    </message>
    <message>
        <source>Every</source>
        <translation>Every</translation>
    </message>
    <message>
        <source>Feedback</source>
        <translation>Feedback</translation>
    </message>
    <message>
        <source>Finished/ml</source>
        <translation>Finished/ml</translation>
    </message>
    <message>
        <source>Force for long breaks(skip button will not display)</source>
        <translation>Force for long breaks(skip button will not display)</translation>
    </message>
    <message>
        <source>General</source>
        <translation>General</translation>
    </message>
    <message>
        <source>Hour</source>
        <translation>Hour</translation>
    </message>
    <message>
        <source>Interval</source>
        <translation>Interval</translation>
    </message>
    <message>
        <source>It's time to drink water!</source>
        <translation>It's time to drink water!</translation>
    </message>
    <message>
        <source>Launch at login</source>
        <translation>Launch at login</translation>
    </message>
    <message>
        <source>Long Break Options</source>
        <translation>Long Break Options</translation>
    </message>
    <message>
        <source>Minute</source>
        <translation>Minute</translation>
    </message>
    <message>
        <source>Mode</source>
        <translation>Mode</translation>
    </message>
    <message>
        <source>New Day</source>
        <translation>New Day</translation>
    </message>
    <message>
        <source>New Feature:</source>
        <translation>New Feature:</translation>
    </message>
    <message>
        <source>New prompt</source>
        <translation>New prompt</translation>
    </message>
    <message>
        <source>Next break at %1</source>
        <translation>Next break at %1</translation>
    </message>
    <message>
        <source>Next drink in</source>
        <translation>Next drink in</translation>
    </message>
    <message>
        <source>Not in work time!</source>
        <translation>Not in work time!</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>Options</translation>
    </message>
    <message>
        <source>Other Options</source>
        <translation>Other Options</translation>
    </message>
    <message>
        <source>Out of hours</source>
        <translation>Out of hours</translation>
    </message>
    <message>
        <source>Please use Chinese or English in your mail, if you can.</source>
        <translation>Please use Chinese or English in your mail, if you can.</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quit</translation>
    </message>
    <message>
        <source>Relaxation</source>
        <translation>Relaxation</translation>
    </message>
    <message>
        <source>Release Notes</source>
        <translation>Release Notes</translation>
    </message>
    <message>
        <source>Remain/ml</source>
        <translation>Remain/ml</translation>
    </message>
    <message>
        <source>Restart timer after Mac awake</source>
        <translation>Restart timer after screen unlock</translation>
    </message>
    <message>
        <source>Restore the built-in prompts</source>
        <translation>Restore the built-in prompts</translation>
    </message>
    <message>
        <source>Schedule</source>
        <translation>Schedule</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Settings</translation>
    </message>
    <message>
        <source>Short Break Options</source>
        <translation>Short Break Options</translation>
    </message>
    <message>
        <source>Show a new day prompt</source>
        <translation>Show a new day prompt</translation>
    </message>
    <message>
        <source>Show time in StatusBar</source>
        <translation>Show time in StatusBar</translation>
    </message>
    <message>
        <source>Skip</source>
        <translation>Skip</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>Software Update</translation>
    </message>
    <message>
        <source>Start options</source>
        <translation>Start options</translation>
    </message>
    <message>
        <source>Start time</source>
        <translation>Start time</translation>
    </message>
    <message>
        <source>StatusBar options</source>
        <translation>StatusBar options</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>Stop timer after Mouse stop for 5 mins</source>
        <translation>Stop timer after Mouse stop for 5 mins</translation>
    </message>
    <message>
        <source>Struggle</source>
        <translation>Struggle</translation>
    </message>
    <message>
        <source>Style</source>
        <translation>Style</translation>
    </message>
    <message>
        <source>System version</source>
        <translation>System version</translation>
    </message>
    <message>
        <source>Target</source>
        <translation>Target</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>The update check failed</source>
        <translation>The update check failed</translation>
    </message>
    <message>
        <source>Timing</source>
        <translation>Timing</translation>
    </message>
    <message>
        <source>Update options</source>
        <translation>Update options</translation>
    </message>
    <message>
        <source>Version %1 (%2)</source>
        <translation>Version %1 (%2)</translation>
    </message>
    <message>
        <source>Version %1 is out; you have %2.</source>
        <translation>Version %1 is out; you have %2.</translation>
    </message>
    <message>
        <source>Water</source>
        <translation>Water</translation>
    </message>
    <message>
        <source>Water Reminder</source>
        <translation>Water Reminder</translation>
    </message>
    <message>
        <source>Well Done!</source>
        <translation>Well Done!</translation>
    </message>
    <message>
        <source>Workflow</source>
        <translation>Workflow</translation>
    </message>
    <message>
        <source>Wrok</source>
        <translation>Work</translation>
    </message>
    <message>
        <source>You can enable it in the preference panel.</source>
        <translation>You can enable it in the preference panel.</translation>
    </message>
    <message>
        <source>You're up to date</source>
        <translation>You're up to date</translation>
    </message>
    <message>
        <source>min</source>
        <translation>min</translation>
    </message>
    <message>
        <source>mins</source>
        <translation>mins</translation>
    </message>
    <message>
        <source>ml</source>
        <translation>ml</translation>
    </message>
    <message>
        <source>seconds</source>
        <translation>seconds</translation>
    </message>
    <message>
        <source>short breaks</source>
        <translation>short breaks</translation>
    </message>
    <message>
        <source> (target %1 ml)</source>
        <translation> (target %1 ml)</translation>
    </message>
    <message>
        <source>30 days</source>
        <translation>30 days</translation>
    </message>
    <message>
        <source>7 days</source>
        <translation>7 days</translation>
    </message>
    <message>
        <source>Breaks taken (and skipped, above)</source>
        <translation>Breaks taken (and skipped, above)</translation>
    </message>
    <message>
        <source>Cannot write %1</source>
        <translation>Cannot write %1</translation>
    </message>
    <message>
        <source>Export CSV</source>
        <translation>Export CSV</translation>
    </message>
    <message>
        <source>For</source>
        <translation>For</translation>
    </message>
    <message>
        <source>History</source>
        <translation>History</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Keep</translation>
    </message>
    <message>
        <source>Keep a history</source>
        <translation>Keep a history</translation>
    </message>
    <message>
        <source>Open History…</source>
        <translation>Open History…</translation>
    </message>
    <message>
        <source>Saved as %1</source>
        <translation>Saved as %1</translation>
    </message>
    <message>
        <source>Time worked</source>
        <translation>Time worked</translation>
    </message>
    <message>
        <source>Today: %1 breaks taken, %2 skipped; %3 min worked; %4 ml of water</source>
        <translation>Today: %1 breaks taken, %2 skipped; %3 min worked; %4 ml of water</translation>
    </message>
    <message>
        <source>Water (no daily target)</source>
        <translation>Water (no daily target)</translation>
    </message>
    <message>
        <source>Water against the target of %1 ml</source>
        <translation>Water against the target of %1 ml</translation>
    </message>
    <message>
        <source>breaks</source>
        <translation>breaks</translation>
    </message>
    <message>
        <source>days</source>
        <translation>days</translation>
    </message>
    <message>
        <source>of the target</source>
        <translation>of the target</translation>
    </message>
    <message>
        <source>Postpone</source>
        <translation>Postpone</translation>
    </message>
    <message>
        <source>Interruptions</source>
        <translation>Interruptions</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Off</translation>
    </message>
    <message>
        <source>Before a break</source>
        <translation>Before a break</translation>
    </message>
    <message>
        <source>Heads-up</source>
        <translation>Heads-up</translation>
    </message>
    <message>
        <source>At most</source>
        <translation>At most</translation>
    </message>
    <message>
        <source>in a row</source>
        <translation>in a row</translation>
    </message>
    <message>
        <source>No break during a call or full-screen work</source>
        <translation>No break during a call or full-screen work</translation>
    </message>
    <message>
        <source>Menu and sounds</source>
        <translation>Menu and sounds</translation>
    </message>
    <message>
        <source>Offer to pause for a while</source>
        <translation>Offer to pause for a while</translation>
    </message>
    <message>
        <source>Sounds at the start and end of a break</source>
        <translation>Sounds at the start and end of a break</translation>
    </message>
    <message>
        <source>Skip this break</source>
        <translation>Skip this break</translation>
    </message>
    <message>
        <source>Break in %1 seconds</source>
        <translation>Break in %1 seconds</translation>
    </message>
    <message>
        <source>until %1</source>
        <translation>until %1</translation>
    </message>
    <message>
        <source>Pause for 30 minutes</source>
        <translation>Pause for 30 minutes</translation>
    </message>
    <message>
        <source>Pause for 1 hour</source>
        <translation>Pause for 1 hour</translation>
    </message>
    <message>
        <source>Pause until tomorrow</source>
        <translation>Pause until tomorrow</translation>
    </message>
</context>
</TS>
