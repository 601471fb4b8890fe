#pragma once

#include <QString>

// Facts about the running program and the machine it runs on.
namespace AppInfo {
QString name();       // display name, "Narv" unless the build says otherwise
QString version();    // e.g. "0.1.0"
QString build();      // build number
QString identifier(); // "app.narv.Narv": desktop file id, D-Bus prefix, log file prefix
// The rights line of the About views, with the current year (Clock::now()).
QString copyright();
QString releaseNotesLink();
QString feedbackAddress();
QString updateFeed();
// The machine's hardware name from uname(), e.g. "x86_64".
QString model();
// The system version as three numbers: the distribution's VERSION_ID from
// os-release, else the kernel release.
QString osVersion();

// The pieces osVersion() is made of, exposed so they can be checked with any text.
// Reads "major.minor.patch" from the leading numbers of a version text; missing
// parts are 0. Returns an empty string when the text does not start with a number.
QString threePartVersion(const QString &text);
// VERSION_ID of an os-release text (quotes removed), or an empty string.
QString osReleaseVersionId(const QString &osReleaseText);
} // namespace AppInfo
