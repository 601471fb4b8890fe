#include "app/Localized.h"

#include <QCoreApplication>

QString localized(const char *text)
{
    return QCoreApplication::translate("Narv", text);
}
