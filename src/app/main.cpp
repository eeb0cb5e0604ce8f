#include "settings/SettingsManager.h"
#include "windows/FolderListWindow.h"

#include <QApplication>
#include <QMessageBox>
#include <QStandardPaths>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("tallowmere"));
    QApplication::setApplicationName(QStringLiteral("Pixcove3"));
    QApplication::setApplicationDisplayName(QStringLiteral("Pixcove"));

    SettingsManager &settings = SettingsManager::shared();
    settings.setAlertPresenter([](const QString &title, const QString &text) {
        QMessageBox::critical(nullptr, title, text);
    });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, [&settings] { settings.saveNow(); });

    const QStringList args = QApplication::arguments().mid(1);
    const QString folder = args.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::PicturesLocation) : args.first();
    FolderListWindow window(folder);
    window.show();
    return QApplication::exec();
}
