#include "UpdateWindow.h"

#include "AppcastUpdateChecker.h"
#include "app/AppInfo.h"
#include "app/IconFont.h"
#include "app/Localized.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
QPointer<UpdateWindow> &theWindow()
{
    static QPointer<UpdateWindow> w;
    return w;
}

UpdateWindow *ensureWindow()
{
    if (!theWindow())
        theWindow() = new UpdateWindow;
    return theWindow();
}

QString link(const QUrl &url, const QString &text)
{
    return QStringLiteral("<a href=\"%1\">%2</a>")
        .arg(url.toString(QUrl::FullyEncoded).toHtmlEscaped(), text.toHtmlEscaped());
}
} // namespace

UpdateWindow::UpdateWindow(QWidget *parent) : QWidget(parent, Qt::Dialog)
{
    setWindowTitle(NARV_TR("Software Update"));
    setAttribute(Qt::WA_QuitOnClose, false);

    auto *emblem = new QLabel;
    emblem->setPixmap(
        QPixmap::fromImage(IconFont::loadIcon(IconFont::narv, 56, QColor(0x3d, 0x9b, 0xd6))));
    emblem->setAlignment(Qt::AlignTop);

    m_heading = new QLabel;
    QFont bold = m_heading->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    m_heading->setFont(bold);
    m_message = new QLabel;
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_links = new QLabel;
    m_links->setTextFormat(Qt::RichText);
    m_links->setOpenExternalLinks(true);

    auto *text = new QVBoxLayout;
    text->addWidget(m_heading);
    text->addWidget(m_message);
    text->addWidget(m_links);
    text->addStretch();

    auto *top = new QHBoxLayout;
    top->addWidget(emblem);
    top->addLayout(text, 1);

    auto *buttons = new QDialogButtonBox;
    buttons->addButton(NARV_TR("Close"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QWidget::close);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(buttons);
    setMinimumWidth(380);
}

void UpdateWindow::follow(AppcastUpdateChecker *checker)
{
    QObject::connect(checker, &AppcastUpdateChecker::updateAvailable, checker,
                     [](const AppcastItem &item, bool) { ensureWindow()->showUpdate(item); });
    QObject::connect(checker, &AppcastUpdateChecker::upToDate, checker, [](bool userInitiated) {
        if (userInitiated)
            ensureWindow()->showUpToDate();
    });
    QObject::connect(checker, &AppcastUpdateChecker::checkFailed, checker,
                     [](const QString &reason, bool userInitiated) {
                         // A scheduled check that fails stays in the log.
                         if (userInitiated)
                             ensureWindow()->showFailure(reason);
                     });
}

UpdateWindow *UpdateWindow::instance()
{
    return theWindow();
}

void UpdateWindow::showUpdate(const AppcastItem &item)
{
    m_heading->setText(NARV_TR("A new version is available"));
    m_message->setText(
        NARV_TR("Version %1 is out; you have %2.").arg(item.displayVersion(), AppInfo::version()));
    const QUrl notes =
        item.releaseNotesLink.isEmpty() ? QUrl(AppInfo::releaseNotesLink()) : item.releaseNotesLink;
    QStringList parts{link(notes, NARV_TR("Release Notes"))};
    if (!item.downloadLink.isEmpty())
        parts.append(link(item.downloadLink, NARV_TR("Download")));
    m_links->setText(parts.join(QStringLiteral(" &nbsp;·&nbsp; ")));
    m_links->show();
    present();
}

void UpdateWindow::showUpToDate()
{
    m_heading->setText(NARV_TR("You're up to date"));
    m_message->setText(
        NARV_TR("%1 %2 is the newest version available.").arg(AppInfo::name(), AppInfo::version()));
    m_links->clear();
    m_links->hide();
    present();
}

void UpdateWindow::showFailure(const QString &reason)
{
    m_heading->setText(NARV_TR("The update check failed"));
    // Reasons are log phrases, lower-case at the start.
    m_message->setText(reason.left(1).toUpper() + reason.mid(1));
    m_links->clear();
    m_links->hide();
    present();
}

QString UpdateWindow::heading() const
{
    return m_heading->text();
}

QString UpdateWindow::message() const
{
    return m_message->text();
}

QString UpdateWindow::links() const
{
    return m_links->text();
}

void UpdateWindow::present()
{
    adjustSize();
    show();
    raise();
    activateWindow();
}
