#pragma once

#include "Appcast.h"

#include <QWidget>

class QLabel;
class AppcastUpdateChecker;

// The small window that tells the outcome of an update check: a newer release
// with its version and links to the release notes and the download, "You're
// up to date", or why the check failed. Made on first use and reused.
class UpdateWindow : public QWidget {
    Q_OBJECT
public:
    explicit UpdateWindow(QWidget *parent = nullptr);

    // Shows what the checker finds: a newer release always, the other
    // outcomes only when the user asked for the check.
    static void follow(AppcastUpdateChecker *checker);
    // The window follow() shows, once it exists.
    static UpdateWindow *instance();

    void showUpdate(const AppcastItem &item);
    void showUpToDate();
    void showFailure(const QString &reason);

    QString heading() const;
    QString message() const;
    // The links under the message as HTML; empty when there are none.
    QString links() const;

private:
    void present();

    QLabel *m_heading;
    QLabel *m_message;
    QLabel *m_links;
};
