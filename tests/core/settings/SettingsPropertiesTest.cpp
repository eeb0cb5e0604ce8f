#include "core/settings/AppSettings.h"
#include "core/settings/SettingsCoding.h"

#include "support/TestDir.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMetaProperty>
#include <QSignalSpy>

#include <gtest/gtest.h>

// The settings are read, written and announced through their properties: a setting whose type
// has no form, whose key is skipped either way or whose setter stays silent is a fault here.

namespace {

// The meta-enum of a value set, found from its type as a property holds it.
QMetaEnum valueSetOf(QMetaType type)
{
    const QMetaObject *scope = type.metaObject();
    const QString name = QString::fromLatin1(type.name()).section(QStringLiteral("::"), -1);
    return scope ? scope->enumerator(scope->indexOfEnumerator(name.toLatin1().constData())) : QMetaEnum();
}

template<typename T>
bool holds(const QVariant &value)
{
    return value.metaType() == QMetaType::fromType<T>();
}

// A value of the same type as `current` but different from it; invalid for a type this test does
// not know yet.
QVariant otherValue(const QVariant &current, const TestDir &dir)
{
    if (holds<bool>(current))
        return !current.toBool();
    if (holds<int>(current))
        return current.toInt() + 7;
    if (holds<double>(current))
        return current.toDouble() + 1.25;
    if (holds<QColor>(current))
        return QColor::fromRgbF(0.1f, 0.25f, 0.5f, 0.75f);
    if (holds<QDateTime>(current))
        return current.toDateTime().addDays(-400).addMSecs(7);
    if (holds<PXFilePtr>(current))
        return QVariant::fromValue(PXFile::fileForPath(dir.filePath(QStringLiteral("viewer.desktop"))));
    if (holds<QList<PXFilePtr>>(current))
        return QVariant::fromValue(QList<PXFilePtr>{PXFile::fileForPath(dir.filePath(QStringLiteral("a"))),
                                                    PXFile::fileForPath(dir.filePath(QStringLiteral("b")))});
    if (holds<std::optional<QVariantMap>>(current))
        return QVariant::fromValue(std::optional<QVariantMap>(QVariantMap{{QStringLiteral("visible"), false}}));
    if (holds<ThumbnailInfoOptions>(current))
        return QVariant::fromValue(current.value<ThumbnailInfoOptions>() ^ ThumbnailInfoOption::kind);
    if (holds<AlertsAndWarnings>(current))
        return QVariant::fromValue(current.value<AlertsAndWarnings>() ^ AlertsAndWarning::folderDepthWarning);
    if (holds<HotkeyBindings>(current))
        return QVariant::fromValue(HotkeyBindings{{{QStringLiteral("renameFile"), {QKeySequence(Qt::Key_F3)}}}});
    if (holds<QList<FileBookmark>>(current))
        return QVariant::fromValue(
            QList<FileBookmark>{{PXFile::fileForPath(dir.filePath(QStringLiteral("a"))), QStringLiteral("Trips")}});
    if (holds<QList<WindowSettingsPtr>>(current)) {
        const auto second = std::make_shared<WindowSettings>();
        second->setThumbnailSize(90);
        return QVariant::fromValue(QList<WindowSettingsPtr>{std::make_shared<WindowSettings>(), second});
    }
    if (holds<SlideshowSettingsPtr>(current)) {
        const auto slideshow = std::make_shared<SlideshowSettings>();
        slideshow->setInterval(2.5);
        return QVariant::fromValue(slideshow);
    }
    if (const QMetaEnum valueSet = valueSetOf(current.metaType()); valueSet.isValid()) {
        const int raw = *static_cast<const int *>(current.constData());
        int other = valueSet.value(valueSet.value(0) == raw ? 1 : 0);
        return QVariant(current.metaType(), &other);
    }
    return {};
}

std::string text(const QJsonValue &value)
{
    return QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).toStdString();
}

// Sets every stored property of `settings` to another value, checking that each change is
// announced, and answers the keys whose value should now differ in the file.
QStringList changeEverySetting(ObservableSettings &settings, const TestDir &dir)
{
    QStringList keys;
    for (const QMetaProperty &property : SettingsCoding::storedProperties(settings)) {
        SCOPED_TRACE(property.name());
        // The file always holds the version of the build that writes it.
        if (qstrcmp(property.name(), "settingsVersion") == 0)
            continue;
        const QVariant value = otherValue(property.read(&settings), dir);
        EXPECT_TRUE(value.isValid()) << "no test value for type " << property.metaType().name();
        QSignalSpy announced(&settings, property.notifySignal());
        QSignalSpy willChange(&settings, &ObservableSettings::willChange);
        QSignalSpy changed(&settings, &ObservableSettings::changed);
        EXPECT_TRUE(property.write(&settings, value));
        EXPECT_EQ(announced.count(), 1);
        EXPECT_EQ(willChange.count(), 1);
        EXPECT_EQ(changed.count(), 1);
        keys.append(QString::fromLatin1(property.name()));
    }
    return keys;
}

} // namespace

TEST(SettingsProperties, EverySettingIsAnnouncedWrittenAndReadBack)
{
    TestDir dir;
    dir.write(QStringLiteral("viewer.desktop"));
    dir.mkdir(QStringLiteral("a"));
    dir.mkdir(QStringLiteral("b"));

    const auto check = [&](ObservableSettings &settings, const auto &decode) {
        QString error;
        const std::optional<QJsonObject> defaults = SettingsCoding::toJson(settings, &error);
        ASSERT_TRUE(defaults) << qPrintable(error);
        const QStringList keys = changeEverySetting(settings, dir);
        ASSERT_FALSE(keys.isEmpty());
        const std::optional<QJsonObject> changed = SettingsCoding::toJson(settings, &error);
        ASSERT_TRUE(changed) << qPrintable(error);
        for (const QString &key : keys)
            EXPECT_NE(text(changed->value(key)), text(defaults->value(key))) << "not written: " << qPrintable(key);

        const auto decoded = decode(*changed, &error);
        ASSERT_TRUE(decoded) << qPrintable(error);
        const std::optional<QJsonObject> again = SettingsCoding::toJson(*decoded, &error);
        ASSERT_TRUE(again) << qPrintable(error);
        for (const QString &key : keys)
            EXPECT_EQ(text(again->value(key)), text(changed->value(key))) << "not read: " << qPrintable(key);
    };

    WindowSettings window;
    check(window, [](const QJsonObject &json, QString *error) { return WindowSettings::fromJson(json, error); });
    SlideshowSettings slideshow;
    check(slideshow, [](const QJsonObject &json, QString *error) { return SlideshowSettings::fromJson(json, error); });
    AppSettings app;
    check(app, [](const QJsonObject &json, QString *error) { return AppSettings::fromJson(json, error); });
}

TEST(SettingsProperties, AValueOfTheWrongKindNamesItsKeyWhereverItIs)
{
    const auto decodeApp = [](const QJsonObject &json) {
        QString error;
        EXPECT_FALSE(AppSettings::fromJson(json, &error)) << qPrintable(QJsonDocument(json).toJson());
        return error;
    };
    // Each key of each settings object, at the top of the file or nested in it.
    const auto wrap = [](const QMetaObject &type, const QString &key, const QJsonValue &value) {
        const QJsonObject object{{key, value}};
        if (&type == &WindowSettings::staticMetaObject)
            return std::pair(QJsonObject{{"windowSettings", QJsonArray{QJsonObject(), object}}},
                             "windowSettings[1]." + key);
        if (&type == &SlideshowSettings::staticMetaObject)
            return std::pair(QJsonObject{{"slideshowSettings", object}}, "slideshowSettings." + key);
        return std::pair(object, key);
    };

    const AppSettings app;
    const WindowSettings window;
    const SlideshowSettings slideshow;
    for (const ObservableSettings *settings :
         std::initializer_list<const ObservableSettings *>{&app, &window, &slideshow}) {
        for (const QMetaProperty &property : SettingsCoding::storedProperties(*settings)) {
            SCOPED_TRACE(property.name());
            const QString key = QString::fromLatin1(property.name());
            // The hotkeys are read entry by entry and never fail the file (HotkeyBindingsTest).
            if (property.metaType() == QMetaType::fromType<HotkeyBindings>())
                continue;
            const bool isBool = property.metaType() == QMetaType::fromType<bool>();
            const auto [json, path] = wrap(*settings->metaObject(), key, isBool ? QJsonValue("yes") : QJsonValue(true));
            const QString error = decodeApp(json);
            EXPECT_TRUE(error.startsWith(path + ": ")) << qPrintable(error);

            // A raw value outside a value set names the set.
            if (const QMetaEnum valueSet = valueSetOf(property.metaType()); valueSet.isValid()) {
                const auto [outside, outsidePath] = wrap(*settings->metaObject(), key, 99);
                EXPECT_EQ(decodeApp(outside),
                          outsidePath + ": 99 is not a raw value of " + QLatin1String(valueSet.enumName()));
            }
        }
    }
}

TEST(SettingsProperties, TheValueSetsThatMenusCountRunFromZero)
{
    // Menus and the command line offer the raw values 0 ..< valueSetCount<E>().
    const QMetaEnum counted[] = {
        QMetaEnum::fromType<BrowserLayout>(),  QMetaEnum::fromType<SidebarInfoOptions>(),
        QMetaEnum::fromType<FileSortType>(),   QMetaEnum::fromType<FolderSortType>(),
        QMetaEnum::fromType<FileFilterType>(),
    };
    for (const QMetaEnum &valueSet : counted) {
        SCOPED_TRACE(valueSet.enumName());
        for (int raw = 0; raw < valueSet.keyCount(); ++raw)
            EXPECT_TRUE(valueSet.valueToKey(raw)) << raw;
    }
}
