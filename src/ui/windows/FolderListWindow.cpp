#include "windows/FolderListWindow.h"

#include "model/FileCollectionModel.h"

#include <QLabel>
#include <QListWidget>
#include <QStatusBar>

FolderListWindow::FolderListWindow(const QString &folder, QWidget *parent)
    : QMainWindow(parent)
    , m_collection(new FileCollectionModel(this))
    , m_list(new QListWidget(this))
    , m_status(new QLabel(this))
{
    setWindowTitle(tr("Pixcove — %1").arg(folder));
    setCentralWidget(m_list);
    statusBar()->addWidget(m_status);
    resize(720, 520);

    connect(m_collection, &FileCollectionModel::flatRepresentationChanged, this, &FolderListWindow::showRepresentation);
    connect(m_collection, &FileCollectionModel::isLoadingChanged, this, [this](bool loading) {
        if (loading)
            m_status->setText(tr("Loading…"));
    });
    connect(m_collection, &FileCollectionModel::folderFailed, this, [this](const QString &path, const QString &reason) {
        m_status->setText(tr("Cannot read %1: %2").arg(path, reason));
    });
    m_collection->setFolderSort(FolderSortType::foldersFirst);
    m_collection->setCollectionRoots({PXFile::fileForPath(folder)});
}

void FolderListWindow::showRepresentation()
{
    m_list->clear();
    for (const FileModelPtr &node : m_collection->flatRepresentation()) {
        const PXFilePtr &file = node->file();
        auto *item = new QListWidgetItem(file->displayName(), m_list);
        item->setToolTip(file->path());
    }
    m_status->setText(tr("%n items", nullptr, m_collection->itemCount()));
}
