#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The mood of the built-in texts. (`default` is a C++ keyword, hence `default_`.)
enum class BreakStyle : qint64 { default_ = 0, relaxation = 1, struggle = 2 };

namespace BreakStyles {
// Exactly 0, 1 and 2 name a style.
std::optional<BreakStyle> fromRawValue(qint64 raw);
inline qint64 rawValue(BreakStyle style)
{
    return qint64(style);
}
// The display name, translated.
QString desc(BreakStyle style);
// The built-in texts; never empty.
const QStringList &prompts(BreakStyle style);
const QStringList &newDayPrompts(BreakStyle style);
const QList<BreakStyle> &all();
} // namespace BreakStyles
