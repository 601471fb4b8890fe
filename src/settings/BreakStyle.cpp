#include "settings/BreakStyle.h"

#include "app/Localized.h"

std::optional<BreakStyle> BreakStyles::fromRawValue(qint64 raw)
{
    switch (raw) {
    case 0:
        return BreakStyle::default_;
    case 1:
        return BreakStyle::relaxation;
    case 2:
        return BreakStyle::struggle;
    default:
        return std::nullopt;
    }
}

QString BreakStyles::desc(BreakStyle style)
{
    switch (style) {
    case BreakStyle::relaxation:
        return NARV_TR("Relaxation");
    case BreakStyle::struggle:
        return NARV_TR("Struggle");
    case BreakStyle::default_:
        break;
    }
    return NARV_TR("Default");
}

const QList<BreakStyle> &BreakStyles::all()
{
    static const QList<BreakStyle> styles{BreakStyle::default_, BreakStyle::relaxation,
                                          BreakStyle::struggle};
    return styles;
}

// The texts below are content, not interface text: they are shown as they are,
// in every language.
const QStringList &BreakStyles::prompts(BreakStyle style)
{
    static const QStringList defaultPrompts{
        QStringLiteral("给你的眼睛一个小小的暂停，它们会感激你的关心。"),
        QStringLiteral("放松眼睛，让它们重新获得清晰和舒适。"),
        QStringLiteral("用手掌轻轻地遮住眼睛，给它们一个片刻的安宁。"),
        QStringLiteral("别忘了活动一下脖子，释放一下肩颈的紧张感。"),
        QStringLiteral("时不时地转动一下脖子，让肌肉得到放松。"),
        QStringLiteral("活动脖子，缓解长时间坐姿带来的不适。"),
        QStringLiteral("长时间低头工作后，抬头仰望一下，舒展一下脖子。"),
        QStringLiteral("长时间坐着，腰部容易变得僵硬，适时起身走动一下吧。"),
        QStringLiteral("给你的腰部一个小小的休息，稍微弯曲和伸展它。"),
        QStringLiteral("活动腰部，让它得到放松，减少长时间坐姿带来的不适。"),
        QStringLiteral("保持正确的坐姿，用椅子的靠背支撑腰部，避免过度疲劳。"),
    };
    static const QStringList relaxationPrompts{
        QStringLiteral("今天心情放假，工作也跟着轻松一下。"),
        QStringLiteral("世界那么大，工作那么小，今天就随意点吧。"),
        QStringLiteral("认真工作好累，今天就偷个懒吧。"),
        QStringLiteral("认真工作是好事，但今天我选择开开小差。"),
        QStringLiteral("今天我是自由自在的小懒猫，不想太认真。"),
        QStringLiteral("工作再认真，也得给自己点轻松的时间。"),
        QStringLiteral("慢慢来，工作不急，我要慢悠悠地躺着。"),
        QStringLiteral("工作是认真的，但今天我选择放个假。"),
        QStringLiteral("偷偷告诉你，今天的工作我只做了一半。"),
        QStringLiteral("谁说工作要认真，今天我要放松一下。"),
    };
    static const QStringList strugglePrompts{
        QStringLiteral("精益求精，全力以赴，无愧于自己的努力。"),
        QStringLiteral("一丝不苟，恪尽职守，全心全意投入工作。"),
        QStringLiteral("脚踏实地，认真钻研，每一份努力都值得尊重。"),
        QStringLiteral("敬业拼搏，兢兢业业，把每一天都当作展示实力的机会。"),
        QStringLiteral("不懈追求卓越，不间断进取，只有努力才能铸就成功。"),
        QStringLiteral("工作是责任，也是荣誉，全神贯注，全情投入。"),
        QStringLiteral("不计较付出，只追求结果，每一步都决定着未来的高度。"),
        QStringLiteral("刻苦努力，认真琢磨，精益求精才能走向巅峰。"),
        QStringLiteral("每一个细节都值得重视，每一份工作都值得认真对待。"),
        QStringLiteral("严谨治事，用心经营，工作中的每一份认真都是成功的基石。"),
    };
    switch (style) {
    case BreakStyle::relaxation:
        return relaxationPrompts;
    case BreakStyle::struggle:
        return strugglePrompts;
    case BreakStyle::default_:
        break;
    }
    return defaultPrompts;
}

const QStringList &BreakStyles::newDayPrompts(BreakStyle style)
{
    static const QStringList defaultPrompts{
        QStringLiteral("一个新的清晨，又是新的开始。"),
        QStringLiteral("太阳升起，新的一天在等着你。"),
        QStringLiteral("早安！新的一天已经来临。"),
        QStringLiteral("新的一天，新的希望。"),
        QStringLiteral("今天是个崭新的开始。"),
        QStringLiteral("醒来的时候，新的一天已经到来。"),
        QStringLiteral("迎接新的一天，让它充满美好。"),
        QStringLiteral("时光流转，又是一个新的日子。"),
        QStringLiteral("新的一天，新的机会。"),
        QStringLiteral("新的一天，带着微笑迎接它吧。"),
    };
    static const QStringList relaxationPrompts{
        QStringLiteral("新的一天，但我还是想继续假装在睡觉。"),
        QStringLiteral("虽然是新的一天，但我的工作情绪还在昨天。"),
        QStringLiteral("新的一天，继续挣扎在工作的迷雾中。"),
        QStringLiteral("不想认真工作，就让我继续装成在思考人生。"),
        QStringLiteral("新的一天，新的拖延计划。"),
        QStringLiteral("不想认真工作，可以有无限的理由。"),
        QStringLiteral("新的一天，新的机会假装努力。"),
        QStringLiteral("工作？让我先喝杯咖啡，调整一下。"),
        QStringLiteral("新的一天，我还是选择继续假装努力。"),
        QStringLiteral("新的一天，但我还是有点懒。"),
    };
    static const QStringList strugglePrompts{
        QStringLiteral("新的一天，新的开始，我要全力以赴，认真工作。"),
        QStringLiteral("每个新的早晨都是一个全新的机会，我会充满激情地去认真工作。"),
        QStringLiteral("新的一天，新的目标，我会用行动证明我的决心和努力。"),
        QStringLiteral("今天的太阳升起，带来新的机遇，我会抓住每个机会，认真工作。"),
        QStringLiteral("无论前路如何，我都会坚定地朝着目标前进，认真工作。"),
        QStringLiteral("新的一天，新的挑战，我会全力以赴，不留遗憾。"),
        QStringLiteral("每个新的一天都是为了更好的明天，我会认真努力，不放弃。"),
        QStringLiteral("不论风雨，我都会坚持，努力工作，创造美好的未来。"),
        QStringLiteral("新的一天，我会积极乐观地面对，用心去工作，迎接新的挑战。"),
        QStringLiteral("每天都是一个宝贵的礼物，我会充分利用每一天，认真工作，不虚度时光。"),
    };
    switch (style) {
    case BreakStyle::relaxation:
        return relaxationPrompts;
    case BreakStyle::struggle:
        return strugglePrompts;
    case BreakStyle::default_:
        break;
    }
    return defaultPrompts;
}
