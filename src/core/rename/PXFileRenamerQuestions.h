#pragma once

#include "core/fs/operations/ZQFileOperationTypes.h"

#include <QJsonObject>
#include <QString>

enum class PXUnsavedPresetAnswer { save, cancel, discardChanges };

// The questions the batch renamer asks the user. The renamer window answers them with its alerts
// and sheets; the command line and tests answer without a window.
class PXFileRenamerQuestions
{
public:
    virtual ~PXFileRenamerQuestions() = default;

    // The alert about one item that cannot be renamed as planned, with an "Apply to all" check
    // box: its first button answers skip, its second keep both, anything else cancels the rename.
    virtual ZQFileOperationResolution queryUserWithError(const ZQFileOperationError &error, bool *applyToAll) = 0;
    // The sheet of a rename stopped by an error.
    virtual void showRenameError(const QString &message, const QString &informativeText) = 0;
    // "Save Changes to Preset?" for a preset with unsaved changes.
    virtual PXUnsavedPresetAnswer askToSaveChangesToPreset(const QJsonObject &preset) = 0;
};
