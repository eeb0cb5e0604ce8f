#pragma once

#include "core/fs/operations/ZQFileOperationUnit.h"

#include <QList>

// The units of one file operation and the folder they go to (none for a rename, a duplicate or a
// trash, whose items stay in or leave their own folders; a new folder's parent). A handler owns its group while it
// runs; touch it only from the delegate's callbacks and after completion.
class ZQFileOperationGroup
{
public:
    ZQFileOperationGroup() = default;
    explicit ZQFileOperationGroup(QList<ZQFileOperationUnit> units, ZQFilePtr destinationItem = nullptr)
        : m_units(std::move(units))
        , m_destinationItem(std::move(destinationItem))
    { }

    QList<ZQFileOperationUnit> &units() { return m_units; }
    const QList<ZQFileOperationUnit> &units() const { return m_units; }
    const ZQFilePtr &destinationItem() const { return m_destinationItem; }

    // "Apply to all": every unresolved unit with an error of `code` gets `resolution`.
    void resolveAll(int code, ZQFileOperationResolution resolution)
    {
        for (ZQFileOperationUnit &unit : m_units) {
            if (unit.error().code == code && unit.resolution() == ZQFileOperationResolution::unresolved)
                unit.setResolution(resolution);
        }
    }

    qsizetype countInState(ZQFileOperationUnit::State state) const
    {
        qsizetype count = 0;
        for (const ZQFileOperationUnit &unit : m_units)
            count += unit.state() == state ? 1 : 0;
        return count;
    }

private:
    QList<ZQFileOperationUnit> m_units;
    ZQFilePtr m_destinationItem;
};
