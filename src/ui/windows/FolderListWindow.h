#pragma once

#include <QMainWindow>

class FileCollectionModel;
class QLabel;
class QListWidget;

// A plain window listing a folder through a folder collection, in display order: what the
// program shows until the main window with its grid takes over.
class FolderListWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit FolderListWindow(const QString &folder, QWidget *parent = nullptr);

private:
    void showRepresentation();

    FileCollectionModel *m_collection;
    QListWidget *m_list;
    QLabel *m_status;
};
