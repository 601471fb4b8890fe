#pragma once

#include <QString>

// Looks a user-visible English text up in the loaded translation; the text
// itself when there is no entry. Texts passed here are marked for lupdate with
// QT_TRANSLATE_NOOP("Narv", ...) at the call site, or through localized().
QString localized(const char *text);

#define NARV_TR(text) localized(QT_TRANSLATE_NOOP("Narv", text))
