#include "core/model/DisplayFormats.h"

#include <unicode/timezone.h>

#include <gtest/gtest.h>

#include <memory>
#include <thread>

// EXIF dates, with and without an offset, are read without ICU's parser where that is safe; they
// must give the very instants ICU's lenient parser gives (reached here through an equivalent
// pattern), in a zone with summer time, on the days the clock changes and for text that is not
// quite well formed.
TEST(DisplayFormats, ExifDatesAreTheInstantsIcuParses)
{
    const std::unique_ptr<icu::TimeZone> previous(icu::TimeZone::createDefault());
    const std::unique_ptr<icu::TimeZone> paris(icu::TimeZone::createTimeZone("Europe/Paris"));
    icu::TimeZone::setDefault(*paris);

    const QString exif = QStringLiteral("yyyy:MM:dd HH:mm:ss");
    const QString viaIcu = QStringLiteral("y:M:d H:m:s");
    const QString exifWithOffset = QStringLiteral("yyyy:MM:dd HH:mm:ss ZZZZZ");
    const QString viaIcuWithOffset = QStringLiteral("y:M:d H:m:s ZZZZZ");
    QStringList texts = {QStringLiteral("2023:03:26 02:30:00"),   QStringLiteral("2023:03:26 03:30:00"),
                         QStringLiteral("2023:10:29 02:30:00"),   QStringLiteral("2023:10:29 01:59:59"),
                         QStringLiteral(" 2008:11:01 21:15:07 "), QStringLiteral("2008:13:01 10:00:00"),
                         QStringLiteral("2008:02:30 10:00:00"),   QStringLiteral("2008:11:1 21:15:07"),
                         QStringLiteral("1850:06:01 12:00:00"),   QStringLiteral("2008-11-01 21:15:07")};
    // Every 37 hours and 13 minutes over thirty years: every hour of the day, both offsets.
    const QDateTime start(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC);
    for (qint64 step = 0; step < 30 * 365 * 24 / 37; ++step)
        texts << start.addSecs(step * (37 * 3600 + 13 * 60 + 7)).toString(QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    // A thread of its own: ICU parsers made earlier on this thread keep the zone they were made in.
    std::thread([&] {
        const auto expectSame = [](const QString &text, const QString &pattern, const QString &reference) {
            const QDateTime fast = parsedDate(text, pattern);
            const QDateTime expected = parsedDate(text, reference);
            EXPECT_EQ(fast.isValid(), expected.isValid()) << qPrintable(text);
            EXPECT_EQ(fast.toMSecsSinceEpoch(), expected.toMSecsSinceEpoch()) << qPrintable(text);
        };
        for (const QString &text : std::as_const(texts)) {
            expectSame(text, exif, viaIcu);
            expectSame(text, exifWithOffset, viaIcuWithOffset);
            for (const char *offset : {" +02:00", " -07:30", " Z", " +14:00", " +0200", " +25:00"})
                expectSame(text + QLatin1String(offset), exifWithOffset, viaIcuWithOffset);
        }
        EXPECT_EQ(parsedDate(QStringLiteral("2023:07:14 12:00:00"), exif).toUTC(),
                  QDateTime(QDate(2023, 7, 14), QTime(10, 0), Qt::UTC));
    }).join();

    icu::TimeZone::setDefault(*previous);
}
