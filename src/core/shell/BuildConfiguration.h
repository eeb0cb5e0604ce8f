#pragma once

#include <QString>

// What this build was configured with: the program's version and build number, its web pages,
// the bug-report endpoint with its credential and the release feed the updater reads. Each comes
// from a CMake cache variable (PIXCOVE_BUILD_NUMBER, PIXCOVE_WEBSITE_URL,
// PIXCOVE_RELEASE_NOTES_URL, PIXCOVE_BUG_REPORT_URL, PIXCOVE_BUG_REPORT_AUTH,
// PIXCOVE_APPCAST_URL). The endpoint, the credential and the feed are empty unless the builder
// sets them: a distribution's package neither reports bugs to us nor updates itself.
//
// Only BuildConfiguration.cpp includes the generated header, so that a changed value rebuilds one
// file.
namespace BuildConfiguration {

QString version(); // "0.1.0"
QString buildNumber(); // the build number shown beside the version
QString websiteLink();
QString releaseNotesLink();
QString bugReportLink();
// A user name and a password joined by a colon.
QString bugReportAuth();
QString appcastLink();

} // namespace BuildConfiguration
