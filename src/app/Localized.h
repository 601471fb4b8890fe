#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>

// Looks a user-visible English text up in the loaded translation; the text
// itself when there is no entry. Texts passed here are marked for lupdate with
// QT_TRANSLATE_NOOP("Narv", ...) at the call site, or through localized().
QString localized(const char *text);

#define NARV_TR(text) localized(QT_TRANSLATE_NOOP("Narv", text))

// Installs the program's translation tables for `locale`: English first, as the
// base every locale falls back to (it turns the kept key "Wrok" into "Work"),
// then the locale's own table over it when there is one. Returns the tables
// installed, e.g. {"en", "zh_CN"}. Call once, after the application object exists.
QStringList loadTranslations(const QLocale &locale = QLocale::system());
