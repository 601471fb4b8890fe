#include "TrayIconFallback.h"

#include "MenuIcons.h"
#include "app/AppInfo.h"
#include "app/IconFont.h"
#include "statusbar/StatusBarController.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

using StatusBarController::MenuItem;

namespace {
const char *idProperty = "narvMenuId";

void applyItem(QAction *action, const MenuItem &item)
{
    // A lone "&" would turn into a mnemonic.
    action->setText(QString(item.title).replace(u'&', QStringLiteral("&&")));
    action->setIcon(MenuIcons::icon(item.image));
    action->setEnabled(item.isEnabled());
}
} // namespace

TrayIconFallback::TrayIconFallback(QObject *parent) : ClassicTrayIcon(parent)
{
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48})
        icon.addPixmap(
            QPixmap::fromImage(IconFont::loadIcon(IconFont::narv, size, QColor(0x3d, 0x9b, 0xd6))));
    m_icon = new QSystemTrayIcon(icon, this);
    m_menu = new QMenu;
    m_icon->setContextMenu(m_menu);
    // A left click opens the menu too, as the StatusNotifierItem does.
    connect(m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason r) {
        if (r == QSystemTrayIcon::Trigger && m_menu)
            m_menu->popup(QCursor::pos());
    });
    setTitle(QString());
    rebuildMenu();
}

TrayIconFallback::~TrayIconFallback()
{
    delete m_menu;
}

bool TrayIconFallback::isAvailable()
{
    return qobject_cast<QApplication *>(QCoreApplication::instance()) &&
           QSystemTrayIcon::isSystemTrayAvailable();
}

void TrayIconFallback::show()
{
    m_icon->show();
}

void TrayIconFallback::hide()
{
    m_icon->hide();
}

bool TrayIconFallback::isVisible() const
{
    return m_icon->isVisible();
}

void TrayIconFallback::setTitle(const QString &title)
{
    m_icon->setToolTip(title.isEmpty() ? AppInfo::name() : AppInfo::name() + u' ' + title);
}

QString TrayIconFallback::toolTip() const
{
    return m_icon->toolTip();
}

void TrayIconFallback::rebuildMenu()
{
    if (!m_menu)
        return;
    m_menu->clear();
    for (const MenuItem &item : StatusBarController::menu()) {
        if (item.separator) {
            m_menu->addSeparator();
            continue;
        }
        QAction *action = m_menu->addAction(QString());
        action->setProperty(idProperty, item.id);
        applyItem(action, item);
        if (!item.keyEquivalent.isEmpty())
            action->setShortcut(QKeySequence(QStringLiteral("Ctrl+") + item.keyEquivalent));
        const int id = item.id;
        connect(action, &QAction::triggered, this, [id] { StatusBarController::activate(id); });
    }
}

void TrayIconFallback::updateItem(int id)
{
    const MenuItem *item = StatusBarController::itemWithId(id);
    if (!item || !m_menu)
        return;
    for (QAction *action : m_menu->actions()) {
        if (action->property(idProperty).toInt() == id)
            applyItem(action, *item);
    }
}
