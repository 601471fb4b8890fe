#include "TrayBackend.h"

#include "ClassicTray.h"
#include "app/Log.h"

#include <QCoreApplication>

#include <utility>

TrayBackend::TrayBackend()
{
    m_item = new StatusNotifierItem(QCoreApplication::instance());
    QObject::connect(m_item, &StatusNotifierItem::watcherChanged, m_item,
                     [this](bool present) { useFallback(!present); });
    m_item->start();
}

TrayBackend::~TrayBackend()
{
    delete m_fallback;
    delete m_item;
}

void TrayBackend::install()
{
    StatusBarController::setBackendFactory([] { return std::make_unique<TrayBackend>(); });
}

void TrayBackend::useFallback(bool use)
{
    if (!use) {
        m_saidNoItem = false;
        if (m_fallback)
            m_fallback->setVisible(false);
        return;
    }
    if (!m_fallback) {
        if (!ClassicTray::isAvailable()) {
            // A watcher was there at start (it has gone since), so no
            // QApplication was made.
            if (!std::exchange(m_saidNoItem, true))
                LOG_NOTICE(QStringLiteral("no StatusNotifierWatcher, and this Narv started "
                                          "without the classic tray icon: no status item until "
                                          "a panel starts"));
            return;
        }
        m_fallback = ClassicTray::createIcon(QCoreApplication::instance());
        if (!m_fallback) {
            LOG_WARNING(QStringLiteral("no StatusNotifierWatcher and no system tray: Narv runs "
                                       "without its status item until a panel starts"));
            return;
        }
        LOG_INFO(QStringLiteral("no StatusNotifierWatcher: using the classic tray icon"));
        m_fallback->setTitle(m_title);
    }
    m_fallback->setVisible(true);
}

void TrayBackend::setTitle(const QString &title)
{
    m_title = title;
    if (m_item)
        m_item->setLabel(title);
    if (m_fallback)
        m_fallback->setTitle(title);
}

void TrayBackend::setToolTip(const QString &text)
{
    if (m_item)
        m_item->setToolTip(text);
}

void TrayBackend::setPauseItem(const QString &, const QString &)
{
    const StatusBarController::MenuItem *pause =
        StatusBarController::itemWithTag(StatusBarController::Tag::pause);
    if (pause)
        menuItemChanged(pause->id);
}

void TrayBackend::menuLayoutChanged()
{
    if (m_item && m_item->menuExporter())
        m_item->menuExporter()->layoutChanged();
    if (m_fallback)
        m_fallback->rebuildMenu();
}

void TrayBackend::menuItemChanged(int id)
{
    if (m_item && m_item->menuExporter())
        m_item->menuExporter()->itemChanged(id);
    if (m_fallback)
        m_fallback->updateItem(id);
}
