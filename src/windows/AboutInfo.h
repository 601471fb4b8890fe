#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// What the About window shows, read from AppInfo.
class AboutInfo : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(QString versionLine READ versionLine CONSTANT)
    Q_PROPERTY(QString copyright READ copyright CONSTANT)
    Q_PROPERTY(QString releaseNotesLink READ releaseNotesLink CONSTANT)
public:
    using QObject::QObject;

    QString name() const;
    // "Version 0.1.0 (1)": the version and the build number.
    QString versionLine() const;
    QString copyright() const;
    QString releaseNotesLink() const;
};
