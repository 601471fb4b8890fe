// Which icons the desktop's icon theme has, without QtGui: the theme named
// where GTK or KDE keep it, and a made-up icon tree in a scratch home.

#include "TestSupport.h"

#include "IconTheme.h"

#include <QTest>

using TestSupport::writeFile;

class TestIconTheme : public QObject {
    Q_OBJECT
    TestSupport::ScratchHome m_home;

private Q_SLOTS:
    void initTestCase()
    {
        // Not /etc/xdg nor /usr/share: the machine's own settings and themes stay out.
        qputenv("XDG_CONFIG_DIRS", (m_home.path() + QStringLiteral("/etc")).toUtf8());
        qputenv("XDG_DATA_DIRS", (m_home.path() + QStringLiteral("/system")).toUtf8());
    }

    void themeName_data()
    {
        QTest::addColumn<QString>("file"); // under ~/.config; the text depends on which
        QTest::addColumn<QByteArray>("desktop");
        QTest::addColumn<QString>("theme");
        QTest::newRow("GTK") << "gtk-3.0/settings.ini" << QByteArray("ubuntu:GNOME") << "Papirus";
        QTest::newRow("GTK, nothing set") << "kdeglobals" << QByteArray("XFCE") << "Adwaita";
        QTest::newRow("KDE") << "kdeglobals" << QByteArray("KDE") << "Oxygen";
        // Plasma does not read GTK's settings.
        QTest::newRow("KDE, GTK's") << "gtk-3.0/settings.ini" << QByteArray("KDE") << "breeze";
    }

    void themeName()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, desktop);
        QFETCH(QString, theme);
        QDir(m_home.path() + QStringLiteral("/config")).removeRecursively();
        qputenv("XDG_CURRENT_DESKTOP", desktop);
        QVERIFY(
            writeFile(m_home.path() + QStringLiteral("/config/") + file,
                      file == QStringLiteral("kdeglobals")
                          ? "[General]\nTheme=Wrong\n[Icons]\nTheme=Oxygen\n"
                          : "[Settings]\ngtk-theme-name=Other\ngtk-icon-theme-name = Papirus\n"));
        QCOMPARE(IconTheme::sessionThemeName(), theme);
    }

    void lookUp()
    {
        // The user's "Fancy" inherits the system's "Base", which has the icon.
        const QString icons = m_home.path() + QStringLiteral("/system/icons/");
        qputenv("XDG_CURRENT_DESKTOP", "GNOME");
        QVERIFY(writeFile(m_home.path() + QStringLiteral("/config/gtk-3.0/settings.ini"),
                          "[Settings]\ngtk-icon-theme-name=Fancy\n"));
        QVERIFY(writeFile(m_home.path() + QStringLiteral("/.icons/Fancy/index.theme"),
                          "[Icon Theme]\nInherits=Base\nDirectories=16x16/actions\n"));
        QVERIFY(writeFile(icons + QStringLiteral("Base/index.theme"),
                          "[Icon Theme]\nDirectories=scalable/actions\n"));
        QVERIFY(
            writeFile(icons + QStringLiteral("Base/scalable/actions/help-about.svg"), "<svg/>"));
        const IconTheme theme(IconTheme::sessionThemeName(), IconTheme::sessionBaseFolders());
        QVERIFY(theme.has(QStringLiteral("help-about")));
        // Missing: the menu falls back to its own picture.
        QVERIFY(!theme.has(QStringLiteral("media-playback-start")));
    }
};

QTEST_GUILESS_MAIN(TestIconTheme)
#include "tst_icontheme.moc"
