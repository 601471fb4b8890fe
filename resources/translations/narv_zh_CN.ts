<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>Narv</name>
    <message>
        <source>%1 %2 is the newest version available.</source>
        <translation>%1 %2 已是最新版本。</translation>
    </message>
    <message>
        <source>A new version is available</source>
        <translation>有新版本可用</translation>
    </message>
    <message>
        <source>About</source>
        <translation>关于</translation>
    </message>
    <message>
        <source>About Narv</source>
        <translation>关于 Narv</translation>
    </message>
    <message>
        <source>App version</source>
        <translation>应用版本</translation>
    </message>
    <message>
        <source>Auto check update for Narv</source>
        <translation>自动检查 Narv 更新</translation>
    </message>
    <message>
        <source>Break</source>
        <translation>休息</translation>
    </message>
    <message>
        <source>Break Prompts</source>
        <translation>休息提示语</translation>
    </message>
    <message>
        <source>Break Style</source>
        <translation>休息风格</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Check for Updates</source>
        <translation>检查更新</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Custom break prompt</source>
        <translation>自定义休息提示语</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>默认</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>删除</translation>
    </message>
    <message>
        <source>Device model</source>
        <translation>设备型号</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>完成</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>下载</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>编辑</translation>
    </message>
    <message>
        <source>Enable</source>
        <translation>启用</translation>
    </message>
    <message>
        <source>Enable drink water reminder</source>
        <translation>启用喝水提醒</translation>
    </message>
    <message>
        <source>End time</source>
        <translation>结束时间</translation>
    </message>
    <message>
        <source>Every</source>
        <translation>每</translation>
    </message>
    <message>
        <source>Feedback</source>
        <translation>反馈</translation>
    </message>
    <message>
        <source>Finished/ml</source>
        <translation>已喝/毫升</translation>
    </message>
    <message>
        <source>Force for long breaks(skip button will not display)</source>
        <translation>强制长休息（不显示跳过按钮）</translation>
    </message>
    <message>
        <source>General</source>
        <translation>通用</translation>
    </message>
    <message>
        <source>Hour</source>
        <translation>时</translation>
    </message>
    <message>
        <source>Interval</source>
        <translation>间隔</translation>
    </message>
    <message>
        <source>It's time to drink water!</source>
        <translation>该喝水啦！</translation>
    </message>
    <message>
        <source>Launch at login</source>
        <translation>登录时启动</translation>
    </message>
    <message>
        <source>Long Break Options</source>
        <translation>长休息选项</translation>
    </message>
    <message>
        <source>Minute</source>
        <translation>分</translation>
    </message>
    <message>
        <source>Mode</source>
        <translation>模式</translation>
    </message>
    <message>
        <source>New Day</source>
        <translation>新的一天</translation>
    </message>
    <message>
        <source>New Feature:</source>
        <translation>新功能：</translation>
    </message>
    <message>
        <source>New prompt</source>
        <translation>新提示语</translation>
    </message>
    <message>
        <source>Next break at %1</source>
        <translation>下次休息：%1</translation>
    </message>
    <message>
        <source>Next drink in</source>
        <translation>距下次喝水</translation>
    </message>
    <message>
        <source>Not in work time!</source>
        <translation>不在工作时间！</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>选项</translation>
    </message>
    <message>
        <source>Other Options</source>
        <translation>其他选项</translation>
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
        <source>Quit</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>Relaxation</source>
        <translation>放松</translation>
    </message>
    <message>
        <source>Release Notes</source>
        <translation>更新说明</translation>
    </message>
    <message>
        <source>Remain/ml</source>
        <translation>剩余/毫升</translation>
    </message>
    <message>
        <source>Restart timer after Mac awake</source>
        <translation>解锁屏幕后重新开始计时</translation>
    </message>
    <message>
        <source>Restore the built-in prompts</source>
        <translation>恢复内置提示语</translation>
    </message>
    <message>
        <source>Schedule</source>
        <translation>时间安排</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>设置</translation>
    </message>
    <message>
        <source>Short Break Options</source>
        <translation>短休息选项</translation>
    </message>
    <message>
        <source>Show a new day prompt</source>
        <translation>显示新一天的问候</translation>
    </message>
    <message>
        <source>Show time in StatusBar</source>
        <translation>在状态栏显示时间</translation>
    </message>
    <message>
        <source>Skip</source>
        <translation>跳过</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>软件更新</translation>
    </message>
    <message>
        <source>Start options</source>
        <translation>启动选项</translation>
    </message>
    <message>
        <source>Start time</source>
        <translation>开始时间</translation>
    </message>
    <message>
        <source>StatusBar options</source>
        <translation>状态栏选项</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Stop timer after Mouse stop for 5 mins</source>
        <translation>鼠标静止 5 分钟后停止计时</translation>
    </message>
    <message>
        <source>Struggle</source>
        <translation>奋斗</translation>
    </message>
    <message>
        <source>Style</source>
        <translation>风格</translation>
    </message>
    <message>
        <source>System version</source>
        <translation>系统版本</translation>
    </message>
    <message>
        <source>Target</source>
        <translation>目标</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>文字</translation>
    </message>
    <message>
        <source>The update check failed</source>
        <translation>检查更新失败</translation>
    </message>
    <message>
        <source>Timing</source>
        <translation>定时</translation>
    </message>
    <message>
        <source>Update options</source>
        <translation>更新选项</translation>
    </message>
    <message>
        <source>Version %1 (%2)</source>
        <translation>版本 %1 (%2)</translation>
    </message>
    <message>
        <source>Version %1 is out; you have %2.</source>
        <translation>版本 %1 已发布，你正在使用 %2。</translation>
    </message>
    <message>
        <source>Water</source>
        <translation>喝水</translation>
    </message>
    <message>
        <source>Water Reminder</source>
        <translation>喝水提醒</translation>
    </message>
    <message>
        <source>Well Done!</source>
        <translation>干得好！</translation>
    </message>
    <message>
        <source>Workflow</source>
        <translation>工作流程</translation>
    </message>
    <message>
        <source>Wrok</source>
        <translation>工作</translation>
    </message>
    <message>
        <source>You can enable it in the preference panel.</source>
        <translation>可以在设置中启用。</translation>
    </message>
    <message>
        <source>You're up to date</source>
        <translation>已是最新版本</translation>
    </message>
    <message>
        <source>min</source>
        <translation>分钟</translation>
    </message>
    <message>
        <source>mins</source>
        <translation>分钟</translation>
    </message>
    <message>
        <source>ml</source>
        <translation>毫升</translation>
    </message>
    <message>
        <source>seconds</source>
        <translation>秒</translation>
    </message>
    <message>
        <source>short breaks</source>
        <translation>次短休息后</translation>
    </message>
    <message>
        <source> (target %1 ml)</source>
        <translation>（目标 %1 毫升）</translation>
    </message>
    <message>
        <source>30 days</source>
        <translation>30 天</translation>
    </message>
    <message>
        <source>7 days</source>
        <translation>7 天</translation>
    </message>
    <message>
        <source>Breaks taken (and skipped, above)</source>
        <translation>已休息（上方为跳过）</translation>
    </message>
    <message>
        <source>Cannot write %1</source>
        <translation>无法写入 %1</translation>
    </message>
    <message>
        <source>Export CSV</source>
        <translation>导出 CSV</translation>
    </message>
    <message>
        <source>For</source>
        <translation>保留</translation>
    </message>
    <message>
        <source>History</source>
        <translation>历史</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>记录</translation>
    </message>
    <message>
        <source>Keep a history</source>
        <translation>保留历史记录</translation>
    </message>
    <message>
        <source>Open History…</source>
        <translation>打开历史…</translation>
    </message>
    <message>
        <source>Saved as %1</source>
        <translation>已保存为 %1</translation>
    </message>
    <message>
        <source>Time worked</source>
        <translation>工作时长</translation>
    </message>
    <message>
        <source>Today: %1 breaks taken, %2 skipped; %3 min worked; %4 ml of water</source>
        <translation>今天：休息 %1 次，跳过 %2 次；工作 %3 分钟；喝水 %4 毫升</translation>
    </message>
    <message>
        <source>Water (no daily target)</source>
        <translation>喝水（无每日目标）</translation>
    </message>
    <message>
        <source>Water against the target of %1 ml</source>
        <translation>喝水与 %1 毫升目标</translation>
    </message>
    <message>
        <source>breaks</source>
        <translation>次休息</translation>
    </message>
    <message>
        <source>days</source>
        <translation>天</translation>
    </message>
    <message>
        <source>of the target</source>
        <translation>目标占比</translation>
    </message>
    <message>
        <source>Postpone</source>
        <translation>推迟</translation>
    </message>
    <message>
        <source>Interruptions</source>
        <translation>打扰</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Before a break</source>
        <translation>休息之前</translation>
    </message>
    <message>
        <source>Heads-up</source>
        <translation>提前提醒</translation>
    </message>
    <message>
        <source>At most</source>
        <translation>最多</translation>
    </message>
    <message>
        <source>in a row</source>
        <translation>次连续</translation>
    </message>
    <message>
        <source>No break during a call or full-screen work</source>
        <translation>通话或全屏时不休息</translation>
    </message>
    <message>
        <source>Menu and sounds</source>
        <translation>菜单和声音</translation>
    </message>
    <message>
        <source>Offer to pause for a while</source>
        <translation>提供暂停一段时间</translation>
    </message>
    <message>
        <source>Sounds at the start and end of a break</source>
        <translation>休息开始和结束时播放声音</translation>
    </message>
    <message>
        <source>Skip this break</source>
        <translation>跳过这次休息</translation>
    </message>
    <message>
        <source>Break in %1 seconds</source>
        <translation>%1 秒后休息</translation>
    </message>
    <message>
        <source>until %1</source>
        <translation>到 %1</translation>
    </message>
    <message>
        <source>Pause for 30 minutes</source>
        <translation>暂停 30 分钟</translation>
    </message>
    <message>
        <source>Pause for 1 hour</source>
        <translation>暂停 1 小时</translation>
    </message>
    <message>
        <source>Pause until tomorrow</source>
        <translation>暂停到明天</translation>
    </message>
</context>
</TS>
