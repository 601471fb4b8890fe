#pragma once

#include "DBusMenuTypes.h"

#include <QObject>
#include <QPointer>

#include <dbus/dbus.h>

class MainLoopBus;

namespace StatusBarController {
struct MenuItem;
}

// Publishes StatusBarController::menu() over com.canonical.dbusmenu at
// /MenuBar, the way panels read a status item's menu, and runs the item a
// panel reports clicked. The menu is flat: item 0 is the root, the menu's
// items are its children. It lives on the status item's connection
// (MainLoopBus); the interface is com.canonical.dbusmenu.xml, which is also
// what Introspect returns.
class DBusMenuExporter : public QObject {
    Q_OBJECT
public:
    static constexpr const char *objectPath = "/MenuBar";
    static constexpr const char *interfaceName = "com.canonical.dbusmenu";

    explicit DBusMenuExporter(MainLoopBus *bus, QObject *parent = nullptr);
    ~DBusMenuExporter() override;

    bool isExported() const { return m_exported; }
    // The properties a panel gets for the item: label (with "_" doubled, as
    // the protocol reads one "_" as a mnemonic), enabled, icon, shortcut, and
    // the tag as "x-narv-tag".
    static QVariantMap properties(const StatusBarController::MenuItem &item);

    // Items were inserted or removed: a new revision of the layout.
    void layoutChanged();
    // The item's title or icon changed.
    void itemChanged(int id);
    uint revision() const { return m_revision; }

    uint version() const { return 3; }
    QString textDirection() const;
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

    // The protocol's methods, as handle() calls them.
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors);
    void Event(int id, const QString &eventId);
    QList<int> EventGroup(const QList<QPair<int, QString>> &events);
    DBusMenuItemList GetGroupProperties(const QList<int> &ids, const QStringList &propertyNames);
    uint GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                   DBusMenuLayoutItem &layout);
    QVariant GetProperty(int id, const QString &name);

private:
    DBusMessage *handle(DBusMessage *call);
    bool knows(int id) const;
    void handleEvent(int id, const QString &eventId);

    QPointer<MainLoopBus> m_bus;
    bool m_exported = false;
    uint m_revision = 1;
};
