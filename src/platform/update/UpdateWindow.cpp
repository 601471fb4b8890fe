#include "UpdateWindow.h"

#include "app/AppInfo.h"
#include "app/IconFont.h"
#include "app/Localized.h"
#include "app/Log.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

namespace {
UpdateWindow *&theWindow()
{
    static UpdateWindow *w = nullptr;
    return w;
}

QString link(const QUrl &url, const QString &text)
{
    return QStringLiteral("<a href=\"%1\">%2</a>")
        .arg(url.toString(QUrl::FullyEncoded).toHtmlEscaped(), text.toHtmlEscaped());
}

// The emblem drawn from the icon font, as an image URL for the QML side.
QString emblemUrl()
{
    const QImage image = IconFont::loadIcon(IconFont::narv, 112, QColor(0x3d, 0x9b, 0xd6));
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(png.toBase64());
}
} // namespace

UpdateWindow::UpdateWindow() = default;

UpdateWindow::~UpdateWindow()
{
    delete m_window;
    if (theWindow() == this)
        theWindow() = nullptr;
}

UpdateWindow *UpdateWindow::ensure()
{
    if (!theWindow()) {
        theWindow() = new UpdateWindow;
        // Its window goes while Qt's windowing is still there.
        QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit,
                         QCoreApplication::instance(), [] { delete theWindow(); });
    }
    return theWindow();
}

UpdateWindow *UpdateWindow::instance()
{
    return theWindow();
}

void UpdateWindow::showUpdate(const AppcastItem &item)
{
    const QUrl notes =
        item.releaseNotesLink.isEmpty() ? QUrl(AppInfo::releaseNotesLink()) : item.releaseNotesLink;
    QStringList parts{link(notes, NARV_TR("Release Notes"))};
    if (!item.downloadLink.isEmpty())
        parts.append(link(item.downloadLink, NARV_TR("Download")));
    present(
        NARV_TR("A new version is available"),
        NARV_TR("Version %1 is out; you have %2.").arg(item.displayVersion(), AppInfo::version()),
        parts.join(QStringLiteral(" &nbsp;·&nbsp; ")));
}

void UpdateWindow::showUpToDate()
{
    present(
        NARV_TR("You're up to date"),
        NARV_TR("%1 %2 is the newest version available.").arg(AppInfo::name(), AppInfo::version()),
        QString());
}

void UpdateWindow::showFailure(const QString &reason)
{
    // Reasons are log phrases, lower-case at the start.
    present(NARV_TR("The update check failed"), reason.left(1).toUpper() + reason.mid(1),
            QString());
}

bool UpdateWindow::isVisible() const
{
    return m_window && m_window->isVisible();
}

void UpdateWindow::hide()
{
    if (m_window)
        m_window->hide();
}

QString UpdateWindow::heading() const
{
    return m_window ? m_window->property("heading").toString() : QString();
}

QString UpdateWindow::message() const
{
    return m_window ? m_window->property("message").toString() : QString();
}

QString UpdateWindow::links() const
{
    return m_window ? m_window->property("links").toString() : QString();
}

void UpdateWindow::present(const QString &heading, const QString &message, const QString &links)
{
    if (!m_window) {
        // Drawn in software like every other Narv window; QT_QUICK_BACKEND
        // still decides when it is set.
        if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND"))
            QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        m_engine = std::make_unique<QQmlEngine>();
        QQmlComponent component(m_engine.get(),
                                QUrl(QStringLiteral("qrc:/narv/update/UpdateWindow.qml")));
        QObject *root = component.createWithInitialProperties({{"emblem", emblemUrl()}});
        m_window = qobject_cast<QQuickWindow *>(root);
        if (!m_window) {
            delete root;
            LOG_ERROR(QStringLiteral("cannot show the update window: ") +
                      component.errorString().trimmed());
            return;
        }
    }
    m_window->setProperty("heading", heading);
    m_window->setProperty("message", message);
    m_window->setProperty("links", links);
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}
