#pragma once

#include "core/fs/Applications.h"

#include <QDialog>
#include <QStringList>

#include <functional>

class QDialogButtonBox;
class QLineEdit;
class QListWidget;

// Chooses an installed application, by name, with a search field: "Other…" of the Open With
// menu, the favourite applications and the "Open images in" choice. The list is read on a pool
// (reading every .desktop file takes a moment) and shown when ready; "Other…" picks any .desktop
// file by path.
class ApplicationChooser : public QDialog
{
    Q_OBJECT
public:
    // `mimeTypes` narrows the list to the applications that open one of them; empty: all.
    explicit ApplicationChooser(const QStringList &mimeTypes = {}, QWidget *parent = nullptr);

    // The chosen application's .desktop file; empty when cancelled.
    static QString choose(QWidget *parent, const QString &title, const QStringList &mimeTypes = {});
    // The same without waiting: a window-modal dialog over `parent` that hands the chosen
    // .desktop file to `chosen` (not called when cancelled) and deletes itself.
    static void open(QWidget *parent, const QString &title, const QStringList &mimeTypes,
                     std::function<void(const QString &desktopFile)> chosen);
    // `open` for the applications that show photos or videos: the favourite applications and
    // the "Open images in" choice.
    static void openForPhotosAndVideos(QWidget *parent, std::function<void(const QString &desktopFile)> chosen);
    QString chosenDesktopFile() const;

private:
    void showApplications(const QList<Applications::ApplicationInfo> &applications);
    void applyFilter(const QString &text);
    void chooseOtherFile();

    bool m_filtered;
    QLineEdit *m_filter;
    QListWidget *m_list;
    QDialogButtonBox *m_buttons;
    QString m_otherFile;
};
