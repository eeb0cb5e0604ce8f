#pragma once

#include "model/PXFile.h"
#include "settings/WindowSettings.h"

#include <QList>
#include <QWidget>

// The inspector panel of a main window: the metadata of the selected files in the tabs General,
// EXIF, IPTC, GPS and TIFF.
class InspectorViewController : public QWidget
{
    Q_OBJECT

public:
    explicit InspectorViewController(WindowSettingsPtr settings, QWidget *parent = nullptr);
    ~InspectorViewController() override;

    // Cancels the running load and starts one for `files`.
    void setFiles(const QList<PXFilePtr> &files);

private:
    WindowSettingsPtr m_windowSettings;
    QList<PXFilePtr> m_files;
};
