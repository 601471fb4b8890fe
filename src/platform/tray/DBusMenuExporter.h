#pragma once

#include "DBusTypes.h"

#include <QObject>

// Publishes StatusBarController::menu() over com.canonical.dbusmenu at
// /MenuBar, the way panels read a status item's menu, and runs the item a
// panel reports clicked. The menu is flat: item 0 is the root, the menu's
// items are its children.
class DBusMenuExporter : public QObject {
    Q_OBJECT
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)
public:
    static constexpr const char *objectPath = "/MenuBar";

    explicit DBusMenuExporter(QObject *parent = nullptr);

    // Items were inserted or removed: a new revision of the layout.
    void layoutChanged() { Q_EMIT LayoutUpdated(++m_revision, 0); }
    // The item's title or icon changed.
    void itemChanged(int id);

    uint version() const { return 3; }
    QString textDirection() const;
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

    // The protocol's methods, called through the adaptor.
    bool AboutToShow(int) { return false; } // the layout is always current
    QList<int> AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors);
    void Event(int id, const QString &eventId, const QDBusVariant &, uint);
    QList<int> EventGroup(const DBusMenuEventList &events);
    DBusMenuItemList GetGroupProperties(const QList<int> &ids, const QStringList &propertyNames);
    uint GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                   DBusMenuLayoutItem &layout);
    QDBusVariant GetProperty(int id, const QString &name);

Q_SIGNALS:
    void ItemsPropertiesUpdated(const DBusMenuItemList &updatedProps,
                                const DBusMenuItemKeysList &removedProps);
    void LayoutUpdated(uint revision, int parent);

private:
    uint m_revision = 1;
};
