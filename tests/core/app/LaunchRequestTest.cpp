#include "core/app/LaunchRequest.h"

#include <QJsonArray>

#include <gtest/gtest.h>

using Kind = LaunchRequest::Kind;

TEST(LaunchRequest, CommandLinesBecomeRequestsWithAbsolutePaths)
{
    const QString cwd = QStringLiteral("/home/me/Pictures");
    const auto parse = [&](const QStringList &arguments) {
        QString error;
        std::optional<LaunchRequest> request = LaunchRequest::parse(arguments, cwd, &error);
        return request ? *request : LaunchRequest{Kind::plain, {QStringLiteral("error: ") + error}};
    };
    EXPECT_EQ(parse({}), LaunchRequest{});
    EXPECT_EQ(parse({QStringLiteral("trip/../day 1"), QStringLiteral("file:///srv/a%20b.jpg"), QStringLiteral("/x/")}),
              (LaunchRequest{Kind::open,
                             {QStringLiteral("/home/me/Pictures/day 1"), QStringLiteral("/srv/a b.jpg"),
                              QStringLiteral("/x")}}));
    EXPECT_EQ(parse({QStringLiteral("--rename"), QStringLiteral("a.jpg")}),
              (LaunchRequest{Kind::rename, {QStringLiteral("/home/me/Pictures/a.jpg")}}));
    // A service with nothing to work on is the service's own error, reported later.
    EXPECT_EQ(parse({QStringLiteral("--slideshow")}), (LaunchRequest{Kind::slideshow, {}}));
    // After "--" a name that starts with a dash is a file.
    EXPECT_EQ(parse({QStringLiteral("--"), QStringLiteral("-odd.jpg")}),
              (LaunchRequest{Kind::open, {QStringLiteral("/home/me/Pictures/-odd.jpg")}}));
    EXPECT_EQ(parse({QStringLiteral("--verbose")}).paths,
              QStringList({QStringLiteral("error: Unknown option: --verbose")}));
    EXPECT_EQ(parse({QStringLiteral("--rename"), QStringLiteral("--slideshow")}).paths,
              QStringList({QStringLiteral("error: Unknown option: --slideshow")}));
}

TEST(LaunchRequest, ForwardedFormRoundTripsAndRejectsStrangers)
{
    const LaunchRequest request{Kind::slideshow, {QStringLiteral("/a/ü.jpg"), QStringLiteral("/b")}};
    EXPECT_EQ(LaunchRequest::fromJson(request.toJson()), request);
    EXPECT_FALSE(LaunchRequest::fromJson(
        {{QStringLiteral("kind"), QStringLiteral("erase")}, {QStringLiteral("paths"), QJsonArray()}}));
    EXPECT_FALSE(LaunchRequest::fromJson({{QStringLiteral("kind"), QStringLiteral("open")}}));
    EXPECT_FALSE(LaunchRequest::fromJson(
        {{QStringLiteral("kind"), QStringLiteral("open")}, {QStringLiteral("paths"), QJsonArray{1}}}));
}
