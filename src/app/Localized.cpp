#include "app/Localized.h"

#include "app/Log.h"

#include <QCoreApplication>
#include <QTranslator>

QString localized(const char *text)
{
    return QCoreApplication::translate("Narv", text);
}

QStringList loadTranslations(const QLocale &locale)
{
    QStringList loaded;
    auto install = [&loaded](const QString &name) {
        auto *translator = new QTranslator(QCoreApplication::instance());
        if (translator->load(QStringLiteral(":/i18n/narv_") + name) &&
            QCoreApplication::installTranslator(translator)) {
            loaded.append(name);
            return true;
        }
        delete translator;
        return false;
    };
    if (!install(QStringLiteral("en")))
        LOG_WARNING(QStringLiteral("the English translation table is missing; menu texts show "
                                   "their keys"));
    // "zh_CN", then "zh": the first table that exists wins; English needs no second table.
    for (const QString &name : locale.uiLanguages()) {
        const QString tableName = QString(name).replace(u'-', u'_');
        if (tableName.startsWith(QStringLiteral("en")))
            break;
        if (install(tableName))
            break;
    }
    return loaded;
}
