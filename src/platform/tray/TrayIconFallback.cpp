#include "TrayIconFallback.h"

#include "MenuIcons.h"
#include "app/AppInfo.h"
#include "app/IconFont.h"
#include "statusbar/StatusBarController.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>

using StatusBarController::MenuItem;

// menu.qrc sits in a static library: naming its initializer pulls it into
// the module. Q_INIT_RESOURCE has to be used outside any namespace.
static void initIconsResource()
{
    Q_INIT_RESOURCE(menu);
}

namespace {
const char *idProperty = "narvMenuId";

// The symbol as the icon theme Qt uses here draws it (a QApplication has the
// desktop's platform theme), else our own drawing, which a QIcon scales to
// whatever the menu asks; a null icon for an unknown symbol.
QIcon menuIcon(const QString &symbol)
{
    static const bool initialized = (initIconsResource(), true);
    Q_UNUSED(initialized);
    const QString name = MenuIcons::themeName(symbol);
    if (!name.isEmpty() && QIcon::hasThemeIcon(name))
        return QIcon::fromTheme(name);
    const QString bundled = QStringLiteral(":/narv/icons/menu/") + symbol + QStringLiteral(".svg");
    if (symbol.isEmpty() || !QFile::exists(bundled))
        return {};
    return QIcon(bundled);
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
