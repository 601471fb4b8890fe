#include "StatusNotifierItem.h"

#include "DBusMenuExporter.h"
#include "IconTheme.h"
#include "MainLoopBus.h"
#include "app/AppInfo.h"
#include "app/Log.h"
#include "app/TickPath.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMap>

// interfaces.qrc sits in a static library: naming its initializer pulls it
// into the program. Q_INIT_RESOURCE has to be used outside any namespace.
static void initInterfacesResource()
{
    Q_INIT_RESOURCE(interfaces);
}

namespace {
// a(iiay)
void writeImages(DBusMessageIter *it, const DBusImageList &images)
{
    DBusMessageIter array;
    dbus_message_iter_open_container(it, DBUS_TYPE_ARRAY, "(iiay)", &array);
    for (const DBusImage &image : images) {
        DBusMessageIter s;
        dbus_message_iter_open_container(&array, DBUS_TYPE_STRUCT, nullptr, &s);
        const dbus_int32_t w = image.width;
        const dbus_int32_t h = image.height;
        dbus_message_iter_append_basic(&s, DBUS_TYPE_INT32, &w);
        dbus_message_iter_append_basic(&s, DBUS_TYPE_INT32, &h);
        DBusMessageIter bytes;
        const auto *data = reinterpret_cast<const unsigned char *>(image.data.constData());
        dbus_message_iter_open_container(&s, DBUS_TYPE_ARRAY, "y", &bytes);
        dbus_message_iter_append_fixed_array(&bytes, DBUS_TYPE_BYTE, &data, int(image.data.size()));
        dbus_message_iter_close_container(&s, &bytes);
        dbus_message_iter_close_container(&array, &s);
    }
    dbus_message_iter_close_container(it, &array);
}

// What each property is, by the interface file: its signature and how it is written.
struct Property {
    const char *name;
    const char *signature;
};
constexpr Property properties[] = {
    {"Category", "s"},
    {"Id", "s"},
    {"Title", "s"},
    {"Status", "s"},
    {"WindowId", "i"},
    {"IconThemePath", "s"},
    {"IconName", "s"},
    {"IconPixmap", "a(iiay)"},
    {"OverlayIconName", "s"},
    {"OverlayIconPixmap", "a(iiay)"},
    {"AttentionIconName", "s"},
    {"AttentionIconPixmap", "a(iiay)"},
    {"AttentionMovieName", "s"},
    {"ToolTip", "(sa(iiay)ss)"},
    {"ItemIsMenu", "b"},
    {"Menu", "o"},
    {"XAyatanaLabel", "s"},
    {"XAyatanaLabelGuide", "s"},
    {"XAyatanaOrderingIndex", "u"},
};
} // namespace

QString introspectionXml(const QString &interfaceFile)
{
    static const bool initialized = (initInterfacesResource(), true);
    Q_UNUSED(initialized);
    QFile file(QStringLiteral(":/narv/tray/") + interfaceFile);
    QString xml;
    if (file.open(QIODevice::ReadOnly))
        xml = QString::fromUtf8(file.readAll());
    // The <interface> element of the file, without its <node> around it.
    const qsizetype begin = xml.indexOf(QLatin1String("<interface"));
    const qsizetype end = xml.lastIndexOf(QLatin1String("</interface>"));
    const QString interface =
        begin >= 0 && end > begin ? xml.mid(begin, end - begin + 12) : QString();
    return QStringLiteral(
               "<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\"\n"
               " \"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">\n<node>\n  ") +
           interface +
           QStringLiteral(
               "\n  <interface name=\"org.freedesktop.DBus.Properties\">\n"
               "    <method name=\"Get\"><arg name=\"interface_name\" type=\"s\" direction=\"in\"/>"
               "<arg name=\"property_name\" type=\"s\" direction=\"in\"/>"
               "<arg name=\"value\" type=\"v\" direction=\"out\"/></method>\n"
               "    <method name=\"GetAll\"><arg name=\"interface_name\" type=\"s\" "
               "direction=\"in\"/><arg name=\"values\" type=\"a{sv}\" "
               "direction=\"out\"/></method>\n"
               "    <method name=\"Set\"><arg name=\"interface_name\" type=\"s\" direction=\"in\"/>"
               "<arg name=\"property_name\" type=\"s\" direction=\"in\"/>"
               "<arg name=\"value\" type=\"v\" direction=\"in\"/></method>\n"
               "    <signal name=\"PropertiesChanged\"><arg type=\"s\"/><arg type=\"a{sv}\"/>"
               "<arg type=\"as\"/></signal>\n"
               "  </interface>\n"
               "  <interface name=\"org.freedesktop.DBus.Introspectable\">\n"
               "    <method name=\"Introspect\"><arg name=\"xml_data\" type=\"s\" "
               "direction=\"out\"/></method>\n"
               "  </interface>\n"
               "  <interface name=\"org.freedesktop.DBus.Peer\">\n"
               "    <method name=\"Ping\"/>\n"
               "    <method name=\"GetMachineId\"><arg name=\"machine_uuid\" type=\"s\" "
               "direction=\"out\"/></method>\n"
               "  </interface>\n</node>\n");
}

StatusNotifierItem::StatusNotifierItem(MainLoopBus *bus, QObject *parent)
    : QObject(parent), m_bus(bus)
{
    m_pixmaps = emblemPixmaps();
    // Once our icon is installed into the icon theme, panels can draw it at
    // any size themselves; until then they have the pixmaps.
    if (IconTheme::current().has(AppInfo::identifier()))
        m_iconName = AppInfo::identifier();

    m_serviceName =
        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    QString error;
    m_exported = m_bus->registerObject(QString::fromLatin1(objectPath), [this](DBusMessage *call) {
        return handle(call);
    }) && m_bus->requestName(m_serviceName, &error);
    if (!m_exported) {
        LOG_WARNING(QStringLiteral("could not put the status item on the session bus: %1")
                        .arg(error.isEmpty() ? QStringLiteral("the object path is taken") : error));
        return;
    }

    m_bus->watchName(QString::fromLatin1(watcherService), [this](const QString &newOwner) {
        const bool present = !newOwner.isEmpty();
        Q_EMIT watcherChanged(present);
        if (present)
            registerWithWatcher();
        else
            LOG_INFO(QStringLiteral("the StatusNotifierWatcher went away"));
    });
    if (watcherPresent())
        registerWithWatcher();
}

DBusImageList StatusNotifierItem::emblemPixmaps()
{
    // "<size>.argb", as make_tray_images wrote them.
    QMap<int, QByteArray> bySize;
    const QDir folder(QStringLiteral(":/narv/tray/emblem"));
    for (const QString &name : folder.entryList(QDir::Files)) {
        const int size = QStringView(name).chopped(5).toInt();
        QFile file(folder.filePath(name));
        if (size > 0 && name.endsWith(QLatin1String(".argb")) && file.open(QIODevice::ReadOnly))
            bySize.insert(size, file.readAll());
    }
    DBusImageList images;
    for (auto it = bySize.cbegin(); it != bySize.cend(); ++it) {
        if (it.value().size() == qsizetype(it.key()) * it.key() * 4)
            images.append({it.key(), it.key(), it.value()});
    }
    if (images.isEmpty())
        LOG_WARNING(QStringLiteral("the status item's emblem is missing from the program: "
                                   "panels show it blank"));
    return images;
}

StatusNotifierItem::~StatusNotifierItem()
{
    if (m_exported && m_bus)
        m_bus->unregisterObject(QString::fromLatin1(objectPath));
}

bool StatusNotifierItem::watcherPresent() const
{
    return m_bus && m_bus->nameHasOwner(QString::fromLatin1(watcherService));
}

void StatusNotifierItem::registerWithWatcher()
{
    DBusMessage *call = dbus_message_new_method_call(watcherService, "/StatusNotifierWatcher",
                                                     watcherService, "RegisterStatusNotifierItem");
    DBusMessageIter it;
    dbus_message_iter_init_append(call, &it);
    DBusWrite::string(&it, m_serviceName);
    const QString service = m_serviceName;
    m_bus->callAsync(call, [service](DBusMessage *reply) {
        if (!reply || dbus_message_get_type(reply) == DBUS_MESSAGE_TYPE_ERROR) {
            const char *text = nullptr;
            if (reply)
                dbus_message_get_args(reply, nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
            LOG_WARNING(QStringLiteral("the StatusNotifierWatcher refused the status item: %1")
                            .arg(text ? QString::fromUtf8(text) : QStringLiteral("no answer")));
            return;
        }
        LOG_INFO(QStringLiteral("status item registered as ") + service);
    });
}

DBusToolTip StatusNotifierItem::toolTip() const
{
    // No pixmaps: panels show the item's own icon.
    return {m_iconName, {}, AppInfo::name(), m_toolTip};
}

NARV_TICK_PATH void StatusNotifierItem::setLabel(const QString &label)
{
    if (label == m_label)
        return;
    m_label = label;
    // Every second while counting: the same frame as a second ago with other
    // digits (see MainLoopBus::sendTextSignal).
    if (m_exported && m_bus)
        m_bus->sendTextSignal(objectPath, interfaceName, "XAyatanaNewLabel",
                              {m_label, labelGuide()});
}

void StatusNotifierItem::setToolTip(const QString &text)
{
    if (text == m_toolTip)
        return;
    m_toolTip = text;
    // Panels read the tooltip back when told; Plasma reads every property,
    // the emblem's pixmaps included. That is why this is not the label.
    if (m_exported && m_bus)
        m_bus->sendTextSignals(objectPath, interfaceName, {{"NewToolTip", {}}});
}

bool StatusNotifierItem::writeProperty(DBusMessageIter *it, const QString &name) const
{
    const Property *property = nullptr;
    for (const Property &p : properties) {
        if (name == QLatin1String(p.name))
            property = &p;
    }
    if (!property)
        return false;
    DBusMessageIter v;
    dbus_message_iter_open_container(it, DBUS_TYPE_VARIANT, property->signature, &v);
    if (name == u"Category") {
        DBusWrite::string(&v, QStringLiteral("ApplicationStatus"));
    } else if (name == u"Id") {
        DBusWrite::string(&v, AppInfo::identifier());
    } else if (name == u"Title") {
        DBusWrite::string(&v, AppInfo::name());
    } else if (name == u"Status") {
        DBusWrite::string(&v, QStringLiteral("Active"));
    } else if (name == u"WindowId") {
        const dbus_int32_t none = 0;
        dbus_message_iter_append_basic(&v, DBUS_TYPE_INT32, &none);
    } else if (name == u"IconName") {
        DBusWrite::string(&v, m_iconName);
    } else if (name == u"IconPixmap") {
        writeImages(&v, m_pixmaps);
    } else if (name == u"OverlayIconPixmap" || name == u"AttentionIconPixmap") {
        writeImages(&v, {});
    } else if (name == u"ToolTip") {
        const DBusToolTip tip = toolTip();
        DBusMessageIter s;
        dbus_message_iter_open_container(&v, DBUS_TYPE_STRUCT, nullptr, &s);
        DBusWrite::string(&s, tip.iconName);
        writeImages(&s, tip.iconPixmap);
        DBusWrite::string(&s, tip.title);
        DBusWrite::string(&s, tip.description);
        dbus_message_iter_close_container(&v, &s);
    } else if (name == u"ItemIsMenu") {
        // The item is a menu: panels open it themselves.
        const dbus_bool_t yes = true;
        dbus_message_iter_append_basic(&v, DBUS_TYPE_BOOLEAN, &yes);
    } else if (name == u"Menu") {
        DBusWrite::objectPath(&v, QString::fromLatin1(DBusMenuExporter::objectPath));
    } else if (name == u"XAyatanaLabel") {
        DBusWrite::string(&v, m_label);
    } else if (name == u"XAyatanaLabelGuide") {
        DBusWrite::string(&v, labelGuide());
    } else if (name == u"XAyatanaOrderingIndex") {
        const dbus_uint32_t first = 0;
        dbus_message_iter_append_basic(&v, DBUS_TYPE_UINT32, &first);
    } else {
        DBusWrite::string(&v, QString()); // the icon theme path and the other names: none
    }
    dbus_message_iter_close_container(it, &v);
    return true;
}

DBusMessage *StatusNotifierItem::handle(DBusMessage *call)
{
    const char *interface = dbus_message_get_interface(call);
    const QString member = QString::fromUtf8(dbus_message_get_member(call));
    const QString iface = QString::fromUtf8(interface ? interface : "");
    DBusMessageIter args;
    dbus_message_iter_init(call, &args);

    if (iface == u"org.freedesktop.DBus.Introspectable" && member == u"Introspect") {
        DBusMessage *reply = dbus_message_new_method_return(call);
        DBusMessageIter it;
        dbus_message_iter_init_append(reply, &it);
        DBusWrite::string(&it, introspectionXml(QStringLiteral("org.kde.StatusNotifierItem.xml")));
        return reply;
    }
    if (iface == u"org.freedesktop.DBus.Properties") {
        const QString asked = DBusRead::next(&args).toString();
        if (asked != QLatin1String(interfaceName) && !(member == u"GetAll" && asked.isEmpty()))
            return dbus_message_new_error(call, DBUS_ERROR_UNKNOWN_INTERFACE,
                                          "no such interface here");
        DBusMessage *reply = dbus_message_new_method_return(call);
        DBusMessageIter it;
        dbus_message_iter_init_append(reply, &it);
        if (member == u"Get") {
            if (!writeProperty(&it, DBusRead::next(&args).toString())) {
                dbus_message_unref(reply);
                return dbus_message_new_error(call, DBUS_ERROR_UNKNOWN_PROPERTY,
                                              "no such property");
            }
            return reply;
        }
        if (member == u"GetAll") {
            DBusMessageIter array;
            dbus_message_iter_open_container(&it, DBUS_TYPE_ARRAY, "{sv}", &array);
            for (const Property &p : properties) {
                DBusMessageIter entry;
                dbus_message_iter_open_container(&array, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
                DBusWrite::string(&entry, QString::fromLatin1(p.name));
                writeProperty(&entry, QString::fromLatin1(p.name));
                dbus_message_iter_close_container(&array, &entry);
            }
            dbus_message_iter_close_container(&it, &array);
            return reply;
        }
        dbus_message_unref(reply);
        if (member == u"Set")
            return dbus_message_new_error(call, DBUS_ERROR_PROPERTY_READ_ONLY,
                                          "the item's properties are read-only");
        return nullptr;
    }
    // ContextMenu, Activate, SecondaryActivate and Scroll: the item is a menu
    // and panels open it themselves, so clicks need nothing from us.
    if (iface.isEmpty() || iface == QLatin1String(interfaceName)) {
        for (const char *method : {"ContextMenu", "Activate", "SecondaryActivate", "Scroll"}) {
            if (member == QLatin1String(method))
                return dbus_message_new_method_return(call);
        }
    }
    return nullptr;
}
