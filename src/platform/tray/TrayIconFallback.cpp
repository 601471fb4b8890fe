#include "TrayIconFallback.h"

#include "ClassicTray.h"
#include "IconTheme.h"
#include "app/AppInfo.h"
#include "app/IconFont.h"
#include "statusbar/StatusBarController.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QIcon>

using StatusBarController::MenuItem;

namespace {
const char *idProperty = "narvMenuId";

// The symbol as the icon theme Qt uses here draws it (a QApplication has the
// desktop's platform theme), else our own drawing, which a QIcon scales to
// whatever the menu asks; a null icon for an unknown symbol.
QIcon menuIcon(const QString &symbol)
{
    const QString bundled = QStringLiteral(":/narv/icons/menu/") + symbol + QStringLiteral(".svg");
    const QIcon own = symbol.isEmpty() || !QFile::exists(bundled) ? QIcon() : QIcon(bundled);
    const QString name = IconTheme::symbolName(symbol);
    return name.isEmpty() ? own : QIcon::fromTheme(name, own);
}

void applyItem(QAction *action, const MenuItem &item)
{
    // A lone "&" would turn into a mnemonic.
    action->setText(QString(item.title).replace(u'&', QStringLiteral("&&")));
    action->setIcon(menuIcon(item.image));
    action->setEnabled(item.isEnabled());
}
} // namespace

TrayIconFallback::TrayIconFallback(QObject *parent) : ClassicTrayIcon(parent)
{
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48})
        icon.addPixmap(
            QPixmap::fromImage(IconFont::loadIcon(IconFont::narv, size, QColor(0x3d, 0x9b, 0xd6))));
    m_icon.setIcon(icon);
    m_icon.setContextMenu(&m_menu);
    // A left click opens the menu too, as the StatusNotifierItem does.
    connect(&m_icon, &QSystemTrayIcon::activated, this, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger)
            m_menu.popup(QCursor::pos());
    });
    setTitle(QString());
    rebuildMenu();
}

void TrayIconFallback::setTitle(const QString &title)
{
    m_icon.setToolTip(title.isEmpty() ? AppInfo::name() : AppInfo::name() + u' ' + title);
}

void TrayIconFallback::rebuildMenu()
{
    m_menu.clear();
    for (const MenuItem &item : StatusBarController::menu()) {
        if (item.separator) {
            m_menu.addSeparator();
            continue;
        }
        QAction *action = m_menu.addAction(QString());
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
    if (const MenuItem *item = StatusBarController::itemWithId(id)) {
        for (QAction *action : m_menu.actions()) {
            if (action->property(idProperty).toInt() == id)
                applyItem(action, *item);
        }
    }
}

// The module's entry points, looked up by name once it is loaded. The module
// resolves the core's symbols against the program (which exports them), so
// the icon's menu is the program's one menu model.

extern "C" Q_DECL_EXPORT QCoreApplication *narv_classictray_create_application(int &argc,
                                                                               char **argv)
{
    auto *app = new QApplication(argc, argv);
    QGuiApplication::setApplicationDisplayName(AppInfo::name());
    QGuiApplication::setDesktopFileName(AppInfo::identifier());
    // A tray program: closing its last window must not end it.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return app;
}

extern "C" Q_DECL_EXPORT ClassicTrayIcon *narv_classictray_create_icon(QObject *parent)
{
    return QSystemTrayIcon::isSystemTrayAvailable() ? new TrayIconFallback(parent) : nullptr;
}
