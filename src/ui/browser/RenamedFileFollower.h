#pragma once

#include "core/model/PXFileForward.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPair>

#include <functional>

// Keeps a selection across renames made outside the program: the selected files are remembered
// by device and inode (read on a worker), and when one of them leaves the folder while a file
// with the same identity arrives, that file is the renamed one. Selections over 200 files are
// not followed: each file costs a stat.
class RenamedFileFollower : public QObject
{
    Q_OBJECT

public:
    explicit RenamedFileFollower(QObject *parent = nullptr);

    static constexpr int followedLimit = 200;

    // The selection changed: remember the identities of `files`.
    void remember(const QList<PXFilePtr> &files);
    // `isShown` tells which remembered files are still shown; the others are waited for.
    void noteShown(const std::function<bool(const PXFilePtr &)> &isShown);
    // Files that appeared: any with a remembered identity are handed to `found` (GUI thread).
    void lookForRenamed(const QList<PXFilePtr> &arrived, std::function<void(const QList<PXFilePtr> &)> found);
    void clear();
    // Whether a selected file left and may come back under another name.
    bool isWaiting() const { return !m_lost.isEmpty(); }

private:
    using Identity = QPair<quint64, quint64>;
    static QHash<Identity, PXFilePtr> identitiesOf(const QList<PXFilePtr> &files);

    QHash<Identity, PXFilePtr> m_selected;
    QHash<Identity, PXFilePtr> m_lost; // selected files that left
    quint64 m_generation = 0;
};
