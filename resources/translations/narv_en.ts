<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>Narv</name>
    <message>
        <source>Stop</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>Wrok</source>
        <translation>Work</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Settings</translation>
    </message>
    <message>
        <source>Check for Updates</source>
        <translation>Check for Updates</translation>
    </message>
    <message>
        <source>Feedback</source>
        <translation>Feedback</translation>
    </message>
    <message>
        <source>About</source>
        <translation>About</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quit</translation>
    </message>
    <message>
        <source>Water</source>
        <translation>Water</translation>
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
        <source>App version</source>
        <translation>App version</translation>
    </message>
    <message>
        <source>Device model</source>
        <translation>Device model</translation>
    </message>
    <message>
        <source>System version</source>
        <translation>System version</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>Software Update</translation>
    </message>
    <message>
        <source>A new version is available</source>
        <translation>A new version is available</translation>
    </message>
    <message>
        <source>Version %1 is out; you have %2.</source>
        <translation>Version %1 is out; you have %2.</translation>
    </message>
    <message>
        <source>Release Notes</source>
        <translation>Release Notes</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Download</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>You're up to date</source>
        <translation>You're up to date</translation>
    </message>
    <message>
        <source>%1 %2 is the newest version available.</source>
        <translation>%1 %2 is the newest version available.</translation>
    </message>
    <message>
        <source>The update check failed</source>
        <translation>The update check failed</translation>
    </message>
</context>
</TS>
