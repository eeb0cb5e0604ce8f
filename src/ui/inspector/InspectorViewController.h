#pragma once

#include "core/imaging/ImagePropertiesItem.h"
#include "core/inspector/InspectorRows.h"
#include "core/model/PXFileForward.h"
#include "core/settings/WindowSettings.h"

#include <QList>
#include <QWidget>

class ImagePropertiesLoader;
class QLabel;
class QStackedWidget;
class QTabWidget;
class QTreeWidget;

// The inspector panel of a main window: the metadata of the selected files in the tabs General,
// EXIF, IPTC, GPS and TIFF, each a list of sections and rows ("Mixed Values" where the selected
// files differ). A new selection cancels the running load: the file rows show at once, the image
// rows follow when the records are read. Rows are made off the GUI thread, since some of them
// open the files. A file whose metadata cannot be read says so above the tabs, with the reader's
// reason, and keeps its file rows.
class InspectorViewController : public QWidget
{
    Q_OBJECT

public:
    explicit InspectorViewController(WindowSettingsPtr settings, QWidget *parent = nullptr);
    ~InspectorViewController() override;

    // Cancels the running load and starts one for `files`.
    void setFiles(const QList<PXFilePtr> &files);
    const QList<PXFilePtr> &files() const { return m_files; }

    // What the tab shows now, for tests and the window's copy command.
    QList<InspectorRow> rows(InspectorTab tab) const;
    bool isLoading() const;
    // Why files of the selection could not be read, one line each; empty when all were read.
    QString failureText() const;

    // The OpenStreetMap address of a position.
    static QUrl mapUrl(double latitude, double longitude);

Q_SIGNALS:
    // The rows of every tab were replaced (the file rows first, then again with the records).
    void rowsChanged();

private:
    void rebuildRows(bool startLoading);
    void showRows(const QList<QList<InspectorRow>> &rowsByTab);
    void showFailures(const QList<ImagePropertiesError> &errors);
    void fillTab(QTreeWidget *tree, const QList<InspectorRow> &rows);
    QString mapText(const InspectorRow &row) const;

    WindowSettingsPtr m_windowSettings;
    QStackedWidget *m_stack;
    QLabel *m_placeholder;
    QLabel *m_failureLabel;
    QTabWidget *m_tabs;
    QList<QTreeWidget *> m_trees;
    ImagePropertiesLoader *m_loader;
    QList<PXFilePtr> m_files;
    QList<ImagePropertiesItemPtr> m_items;
    QList<QList<InspectorRow>> m_rows;
    quint64 m_generation = 0;
    bool m_rowsPending = false;
};
