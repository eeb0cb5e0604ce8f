#pragma once

#include "core/rename/PXBatchItem.h"
#include "core/rename/PXRenameRules.h"

#include <QString>

#include <optional>

class PXFileRenameItem;

// Told when an item's proposed name changes (the batch renamer redraws that row).
class PXFileRenameItemDelegate
{
public:
    virtual ~PXFileRenameItemDelegate() = default;
    virtual void renameItemDidChange(PXFileRenameItem *item) = 0;
};

// A row of the batch renamer, and the rename rules engine: computes from the rule rows the name
// its file would get, without touching the disk.
//
// Rows run in order, each on the result of the one before. A row's criteria are read front to
// back, passing over labels and formats to the next significant one (the operation, then its
// target or kind, then its values). A rule that cannot be read leaves the name as it is at that
// step, and later rows still run. The result is cleaned to a file name; one of 256 UTF-16 units
// or more is dropped for the current name. Proposed paths are lower-cased: collisions are judged
// ignoring case, and a change of case alone is never a collision with the file itself. A name
// over the file system's limit of 255 bytes (UTF-8) is not proposed either: the file keeps its
// name and the row is marked, so that a rename never stops halfway on a name the disk refuses.
class PXFileRenameItem : public PXBatchItem
{
public:
    // Results of this many UTF-16 units or more leave the name unchanged.
    static constexpr qsizetype maximumNameLength = 256;
    // The longest name a Linux file system takes, in bytes of its UTF-8 form.
    static constexpr qsizetype maximumNameBytes = 255;

    // What updateForRenameRules computes, kept apart so that it can be computed off the GUI
    // thread for a copy of the item and applied to the listed one afterwards.
    struct Proposal
    {
        QString potentialName;
        QString potentialPath;
        bool nameHasChanged = false;
        bool caseChange = false;
        bool nameTooLong = false;
        bool renamable = false; // isRenamable when the proposal was made
    };

    explicit PXFileRenameItem(PXFilePtr file, bool isContainer = false);

    const QString &potentialName() const { return m_potentialName; }
    const QString &potentialPath() const { return m_potentialPath; }
    bool hasCollision() const { return m_hasCollision; }
    void setHasCollision(bool collision) { m_hasCollision = collision; }
    bool nameHasChanged() const { return m_nameHasChanged; }
    bool caseChange() const { return m_caseChange; }
    // The rules made a name longer than the file system takes; the file keeps its name.
    bool nameTooLong() const { return m_nameTooLong; }
    bool perFolder() const { return m_perFolder; }
    PXFileRenameItemDelegate *delegate() const { return m_delegate; }
    void setDelegate(PXFileRenameItemDelegate *delegate) { m_delegate = delegate; }

    // A file (not a folder) that is on disk in a folder we may write: what a rename may touch.
    bool isRenamable() const;
    // isRenamable as of the last proposal: for drawing thousands of rows without asking the disk.
    bool lastKnownRenamable() const { return m_lastKnownRenamable; }
    // Whether a proposal was made for the item yet (a row just added has none).
    bool hasProposal() const { return m_hasProposal; }

    // Recomputes the proposed name and path and the two flags.
    void updateForRenameRules(const PXRenameRules &rules);
    // The proposal for `rules` without changing the item (reads only the file and the indexes).
    Proposal proposalForRenameRules(const PXRenameRules &rules) const;
    Proposal proposal() const;
    // Takes a proposal computed elsewhere; tells the delegate when the name changed.
    void applyProposal(Proposal proposal);
    // Sequences count within the item's folder rather than across the batch.
    void updatePerFolderSetting(bool perFolder) { m_perFolder = perFolder; }

    // The steps of the engine, public for the rule editor's previews and for tests.
    QString applyRules(const PXRenameRules &rows, const QString &string) const;
    QString performOperation(const PXRenameRule &operation, const QString &string, PXRenameRuleQueue &rules,
                             const PXRenameRules &subRules) const;
    QString replaceUsingRules(PXRenameRuleQueue &rules, const QString &string) const;
    QString insertUsingRules(PXRenameRuleQueue &rules, const QString &string) const;
    QString regexUsingRules(PXRenameRuleQueue &rules, const QString &string) const;
    std::optional<QString> replacementStringValueUsingRules(PXRenameRuleQueue &rules,
                                                            const std::optional<QString> &input) const;
    QString stringForSequenceWithBeginning(qint64 start, int places) const;
    // Removes criteria from the front up to the next one from 1 to 999, or up to the last one
    // whatever its constant (how a sequence format at the end of its row is reached).
    static const PXRenameRule *popNextSignificantOperationFromRules(PXRenameRuleQueue &rules);

private:
    QString m_potentialName;
    QString m_potentialPath;
    bool m_hasCollision = false;
    bool m_nameHasChanged = false;
    bool m_caseChange = false;
    bool m_nameTooLong = false;
    bool m_lastKnownRenamable = false;
    bool m_hasProposal = false;
    bool m_perFolder = false;
    PXFileRenameItemDelegate *m_delegate = nullptr;
};

using PXFileRenameItemPtr = std::shared_ptr<PXFileRenameItem>;
