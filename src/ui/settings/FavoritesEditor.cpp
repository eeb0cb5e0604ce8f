#include "ui/settings/FavoritesEditor.h"

#include "core/fs/Applications.h"
#include "core/model/PXFile.h"
#include "core/settings/AppSettings.h"
#include "ui/browser/ApplicationChooser.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QIcon>
#include <QListWidget>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// Asks for a folder without blocking: the dialog reports when the user has chosen.
void chooseFolder(QWidget *parent, std::function<void(const QString &path)> chosen)
{
    auto *dialog = new QFileDialog(parent, FavoritesEditor::tr("Add Favorite Folder"),
                                   QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog, [chosen](const QString &path) { chosen(path); });
    dialog->open();
}

QIcon iconOf(const FileBookmark &bookmark, FavoritesEditor::Kind kind)
{
    if (kind == FavoritesEditor::Kind::folders)
        return QIcon::fromTheme(QStringLiteral("folder"));
    // Applications name their icon after their .desktop file more often than not.
    const QString name = bookmark.file ? QFileInfo(bookmark.file->path()).completeBaseName() : QString();
    return QIcon::fromTheme(name, QIcon::fromTheme(QStringLiteral("application-x-executable")));
}

} // namespace

FavoritesEditor::FavoritesEditor(AppSettings *settings, Kind kind, QWidget *parent)
    : QWidget(parent)
    , m_settings(settings)
    , m_kind(kind)
    , m_chooser(kind == Kind::applications ? Chooser(&ApplicationChooser::openForPhotosAndVideos)
                                           : Chooser(&chooseFolder))
    , m_list(new QListWidget(this))
    , m_add(new QPushButton(tr("Add…"), this))
    , m_remove(new QPushButton(tr("Remove"), this))
    , m_up(new QPushButton(tr("Move Up"), this))
    , m_down(new QPushButton(tr("Move Down"), this))
{
    const bool apps = kind == Kind::applications;
    setObjectName(apps ? QStringLiteral("favoriteAppsEditor") : QStringLiteral("favoriteFoldersEditor"));
    m_list->setObjectName(apps ? QStringLiteral("favoriteApps") : QStringLiteral("favoriteFolders"));
    m_list->setAccessibleName(apps ? tr("Favorite applications") : tr("Favorite folders"));
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_add->setAccessibleName(apps ? tr("Add application") : tr("Add folder"));
    m_add->setToolTip(apps ? tr("Add an application to the Open With menu") : tr("Add a folder to the Move To menu"));
    m_remove->setAccessibleName(tr("Remove"));
    m_up->setAccessibleName(tr("Move up"));
    m_down->setAccessibleName(tr("Move down"));
    m_add->setObjectName(QStringLiteral("add"));
    m_remove->setObjectName(QStringLiteral("remove"));
    m_up->setObjectName(QStringLiteral("moveUp"));
    m_down->setObjectName(QStringLiteral("moveDown"));

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_list, 1);
    auto *buttons = new QVBoxLayout;
    buttons->addWidget(m_add);
    buttons->addWidget(m_remove);
    buttons->addSpacing(8);
    buttons->addWidget(m_up);
    buttons->addWidget(m_down);
    buttons->addStretch();
    layout->addLayout(buttons);

    connect(m_add, &QPushButton::clicked, this, &FavoritesEditor::add);
    connect(m_remove, &QPushButton::clicked, this, &FavoritesEditor::removeSelected);
    connect(m_up, &QPushButton::clicked, this, [this] { moveSelected(-1); });
    connect(m_down, &QPushButton::clicked, this, [this] { moveSelected(1); });
    connect(m_list, &QListWidget::currentRowChanged, this, &FavoritesEditor::updateButtons);
    if (apps)
        connect(settings, &AppSettings::favoriteAppsChanged, this, &FavoritesEditor::refresh);
    else
        connect(settings, &AppSettings::favoriteFoldersChanged, this, &FavoritesEditor::refresh);
    refresh();
}

namespace {

QList<FileBookmark> bookmarksOf(const AppSettings *settings, FavoritesEditor::Kind kind)
{
    if (!settings)
        return {};
    return kind == FavoritesEditor::Kind::applications ? settings->favoriteApps() : settings->favoriteFolders();
}

void store(AppSettings *settings, FavoritesEditor::Kind kind, const QList<FileBookmark> &bookmarks)
{
    if (!settings)
        return;
    if (kind == FavoritesEditor::Kind::applications)
        settings->setFavoriteApps(bookmarks);
    else
        settings->setFavoriteFolders(bookmarks);
}

} // namespace

void FavoritesEditor::refresh()
{
    const int current = m_list->currentRow();
    m_list->clear();
    for (const FileBookmark &bookmark : bookmarksOf(m_settings, m_kind)) {
        auto *item = new QListWidgetItem(iconOf(bookmark, m_kind), bookmark.title(), m_list);
        const QString path = bookmark.file ? bookmark.file->path() : QString();
        if (bookmark.resolves()) {
            item->setToolTip(path);
        } else {
            // Kept: it comes back with its volume.
            item->setForeground(palette().brush(QPalette::Disabled, QPalette::Text));
            item->setToolTip(tr("Not found: %1").arg(path));
        }
    }
    m_list->setCurrentRow(std::min(current, m_list->count() - 1));
    updateButtons();
}

void FavoritesEditor::updateButtons()
{
    const int row = m_list->currentRow();
    m_remove->setEnabled(row >= 0);
    m_up->setEnabled(row > 0);
    m_down->setEnabled(row >= 0 && row < m_list->count() - 1);
}

void FavoritesEditor::add()
{
    if (!m_chooser)
        return;
    const QPointer<FavoritesEditor> self(this);
    m_chooser(window(), [self](const QString &path) {
        if (self)
            self->addPath(path);
    });
}

bool FavoritesEditor::addPath(const QString &path)
{
    if (!m_settings || path.isEmpty())
        return false;
    QList<FileBookmark> bookmarks = bookmarksOf(m_settings, m_kind);
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (const FileBookmark &bookmark : std::as_const(bookmarks)) {
        if (bookmark.file && bookmark.file->path() == absolute) {
            selectRow(int(bookmarks.indexOf(bookmark)));
            return false;
        }
    }
    const PXFilePtr file = PXFile::fileForPath(absolute);
    if (!file || file->isPlaceholder())
        return false;
    FileBookmark bookmark{file, {}};
    if (m_kind == Kind::applications)
        bookmark.displayName = Applications::applicationInfo(absolute).name;
    bookmarks.append(bookmark);
    store(m_settings, m_kind, bookmarks);
    selectRow(int(bookmarks.size()) - 1);
    return true;
}

void FavoritesEditor::removeSelected()
{
    QList<FileBookmark> bookmarks = bookmarksOf(m_settings, m_kind);
    const int row = m_list->currentRow();
    if (row < 0 || row >= bookmarks.size())
        return;
    bookmarks.removeAt(row);
    store(m_settings, m_kind, bookmarks);
}

void FavoritesEditor::moveSelected(int offset)
{
    QList<FileBookmark> bookmarks = bookmarksOf(m_settings, m_kind);
    const int row = m_list->currentRow();
    const int target = row + offset;
    if (row < 0 || row >= bookmarks.size() || target < 0 || target >= bookmarks.size())
        return;
    bookmarks.move(row, target);
    store(m_settings, m_kind, bookmarks);
    selectRow(target);
}

void FavoritesEditor::selectRow(int row)
{
    m_list->setCurrentRow(row);
}

int FavoritesEditor::rowCount() const
{
    return m_list->count();
}

void FavoritesEditor::focusList()
{
    m_list->setFocus(Qt::OtherFocusReason);
    if (m_list->currentRow() < 0 && m_list->count() > 0)
        m_list->setCurrentRow(0);
}
