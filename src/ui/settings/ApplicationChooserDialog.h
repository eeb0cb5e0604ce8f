#pragma once

#include "core/fs/Applications.h"

#include <QDialog>

#include <functional>

class QLineEdit;
class QListWidget;

// Lists the installed applications that open images or videos, with a search field, for the
// favourite applications and the "Open images in" choice. The list is read on a pool (reading
// every .desktop file takes a moment) and shown when it is ready; "Other…" picks any .desktop
// file. The dialog is window-modal and deletes itself when it closes.
class ApplicationChooserDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ApplicationChooserDialog(QWidget *parent = nullptr);

    // Opens a dialog over `parent` and hands the chosen .desktop file to `chosen`.
    static void choose(QWidget *parent, std::function<void(const QString &desktopFile)> chosen);

Q_SIGNALS:
    void applicationChosen(const QString &desktopFile);

private:
    void showApplications(const QList<Applications::ApplicationInfo> &applications);
    void filter(const QString &text);
    void accept() override;

    QLineEdit *m_search;
    QListWidget *m_list;
};
