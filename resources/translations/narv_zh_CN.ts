<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>Narv</name>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Wrok</source>
        <translation>工作</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>设置</translation>
    </message>
    <message>
        <source>Check for Updates</source>
        <translation>检查更新</translation>
    </message>
    <message>
        <source>Feedback</source>
        <translation>反馈</translation>
    </message>
    <message>
        <source>About</source>
        <translation>关于</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>Water</source>
        <translation>喝水</translation>
    </message>
    <message>
        <source>Out of hours</source>
        <translation>非工作时间</translation>
    </message>
    <message>
        <source>Please use Chinese or English in your mail, if you can.</source>
        <translation>如果可以，请用中文或英文写邮件。</translation>
    </message>
    <message>
        <source>App version</source>
        <translation>应用版本</translation>
    </message>
    <message>
        <source>Device model</source>
        <translation>设备型号</translation>
    </message>
    <message>
        <source>System version</source>
        <translation>系统版本</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>软件更新</translation>
    </message>
    <message>
        <source>A new version is available</source>
        <translation>有新版本可用</translation>
    </message>
    <message>
        <source>Version %1 is out; you have %2.</source>
        <translation>版本 %1 已发布，你正在使用 %2。</translation>
    </message>
    <message>
        <source>Release Notes</source>
        <translation>更新说明</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>下载</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>You're up to date</source>
        <translation>已是最新版本</translation>
    </message>
    <message>
        <source>%1 %2 is the newest version available.</source>
        <translation>%1 %2 已是最新版本。</translation>
    </message>
    <message>
        <source>The update check failed</source>
        <translation>检查更新失败</translation>
    </message>
</context>
</TS>
