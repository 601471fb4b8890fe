// Which icons the desktop's icon theme has, without QtGui: a made-up icon
// tree in a scratch home (the user's data folder, a system one and ~/.icons),
// the theme named where GTK or KDE keep it.

#include "TestSupport.h"

#include "IconTheme.h"

#include <QDir>
#include <QTest>

using TestSupport::ScratchHome;
using TestSupport::writeFile;

class TestIconTheme : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void themeName_data();
    void themeName();
    void lookUp_data();
    void lookUp();

private:
    void icon(const QString &path) { QVERIFY(writeFile(m_home->path() + path, "icon")); }

    std::optional<ScratchHome> m_home;
};

void TestIconTheme::initTestCase()
{
    m_home.emplace();
    const QString home = m_home->path();
    qputenv("XDG_DATA_HOME", (home + QStringLiteral("/data")).toUtf8());
    qputenv("XDG_DATA_DIRS", (home + QStringLiteral("/system")).toUtf8());
    // Not /etc/xdg: the machine's own GTK or KDE settings stay out.
    qputenv("XDG_CONFIG_DIRS", (home + QStringLiteral("/etc")).toUtf8());

    // "Fancy", the user's theme, inherits "Base" (which inherits Fancy back)
    // and names hicolor before it: hicolor still comes last.
    QVERIFY(writeFile(home + QStringLiteral("/data/icons/Fancy/index.theme"),
                      "[Icon Theme]\nName=Fancy\n# Inherits=Nothing\n"
                      "Inherits=hicolor, Base\nDirectories=16x16/actions,scalable/apps\n"
                      "ScaledDirectories=16x16@2/actions\n\n"
                      "[16x16/actions]\nSize=16\nInherits=Wrong\n"));
    icon(QStringLiteral("/data/icons/Fancy/16x16/actions/media-playback-stop.png"));
    icon(QStringLiteral("/data/icons/Fancy/scalable/apps/preferences-system.svg"));
    icon(QStringLiteral("/data/icons/Fancy/16x16@2/actions/help-faq.png"));
    // On disk, but in no folder index.theme lists.
    icon(QStringLiteral("/data/icons/Fancy/unlisted/application-exit.png"));
    QVERIFY(writeFile(home + QStringLiteral("/system/icons/Base/index.theme"),
                      "[Icon Theme]\nInherits=Fancy\nDirectories=22x22/actions\n"));
    icon(QStringLiteral("/system/icons/Base/22x22/actions/help-about.svg"));
    // Base spread over two base folders: its index.theme is the system's.
    icon(QStringLiteral("/data/icons/Base/22x22/actions/mail-message-new.png"));
    QVERIFY(writeFile(home + QStringLiteral("/system/icons/hicolor/index.theme"),
                      "[Icon Theme]\nDirectories=48x48/apps\n"));
    icon(QStringLiteral("/system/icons/hicolor/48x48/apps/app.narv.Narv.png"));
    // Installed, but not the session's theme, nor inherited by it.
    QVERIFY(writeFile(home + QStringLiteral("/system/icons/Other/index.theme"),
                      "[Icon Theme]\nDirectories=16x16/actions\n"));
    icon(QStringLiteral("/system/icons/Other/16x16/actions/system-software-update.png"));
    // Loose in a base folder, in no theme.
    icon(QStringLiteral("/.icons/loose.xpm"));
    icon(QStringLiteral("/system/icons/also-loose.jpg"));
}

void TestIconTheme::init()
{
    QDir(m_home->path() + QStringLiteral("/config")).removeRecursively();
    QDir(m_home->path() + QStringLiteral("/etc")).removeRecursively();
    qputenv("XDG_CURRENT_DESKTOP", "GNOME");
}

void TestIconTheme::themeName_data()
{
    QTest::addColumn<QByteArray>("desktop");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("theme");
    const QByteArray gtk = "[Settings]\ngtk-theme-name=Other\ngtk-icon-theme-name = Papirus\n";
    const QByteArray kde = "[General]\nTheme=Wrong\n[Icons]\nTheme=Oxygen\n";
    QTest::newRow("GTK 3") << QByteArray("ubuntu:GNOME") << "config/gtk-3.0/settings.ini" << gtk
                           << "Papirus";
    QTest::newRow("GTK 4 only") << QByteArray("XFCE") << "config/gtk-4.0/settings.ini" << gtk
                                << "Papirus";
    QTest::newRow("system-wide GTK 3")
        << QByteArray("MATE") << "etc/gtk-3.0/settings.ini" << gtk << "Papirus";
    QTest::newRow("quoted") << QByteArray("GNOME") << "config/gtk-3.0/settings.ini"
                            << QByteArray("[Settings]\ngtk-icon-theme-name=\"Yaru\"\n") << "Yaru";
    QTest::newRow("GTK, nothing set")
        << QByteArray("GNOME") << "config/gtk-3.0/settings.ini"
        << QByteArray("[Settings]\ngtk-font-name=Sans 10\n") << "Adwaita";
    QTest::newRow("KDE") << QByteArray("KDE") << "config/kdeglobals" << kde << "Oxygen";
    // Plasma does not read GTK's settings.
    QTest::newRow("KDE beside GTK")
        << QByteArray("KDE") << "config/gtk-3.0/settings.ini" << gtk << "breeze";
}

void TestIconTheme::themeName()
{
    QFETCH(QByteArray, desktop);
    QFETCH(QString, file);
    QFETCH(QByteArray, text);
    QFETCH(QString, theme);
    qputenv("XDG_CURRENT_DESKTOP", desktop);
    if (!file.isEmpty())
        QVERIFY(writeFile(m_home->path() + u'/' + file, text));
    QCOMPARE(IconTheme::sessionThemeName(), theme);
}

void TestIconTheme::lookUp_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("in the theme") << "media-playback-stop" << true;
    QTest::newRow("scalable") << "preferences-system" << true;
    QTest::newRow("scaled folder") << "help-faq" << true;
    QTest::newRow("inherited") << "help-about" << true;
    QTest::newRow("user's addition to a system theme") << "mail-message-new" << true;
    QTest::newRow("hicolor") << "app.narv.Narv" << true;
    QTest::newRow("loose in ~/.icons") << "loose" << true;
    QTest::newRow("missing") << "media-playback-start" << false;
    QTest::newRow("folder not listed") << "application-exit" << false;
    QTest::newRow("theme not inherited") << "system-software-update" << false;
    QTest::newRow("not an image") << "also-loose" << false;
    // Would be found loose in the base folder if a name could be a path.
    QTest::newRow("a path") << "Fancy/16x16/actions/media-playback-stop" << false;
    QTest::newRow("empty") << "" << false;
}

void TestIconTheme::lookUp()
{
    QFETCH(QString, name);
    QFETCH(bool, found);
    QVERIFY(writeFile(m_home->path() + QStringLiteral("/config/gtk-3.0/settings.ini"),
                      "[Settings]\ngtk-icon-theme-name=Fancy\n"));
    const IconTheme theme(IconTheme::sessionThemeName(), IconTheme::sessionBaseFolders());
    QCOMPARE(theme.themes(), (QStringList{QStringLiteral("Fancy"), QStringLiteral("Base"),
                                          QStringLiteral("hicolor")}));
    QCOMPARE(theme.has(name), found);
    QCOMPARE(theme.has(name), found); // and again, from what it keeps
}

QTEST_GUILESS_MAIN(TestIconTheme)

#include "tst_icontheme.moc"
