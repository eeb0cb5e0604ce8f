#pragma once

#include <QMetaEnum>

// The number of members of a value set declared with Q_ENUM or Q_ENUM_NS; for the sets whose raw
// values run from 0, one past the last of them.
template<typename E>
int valueSetCount()
{
    return QMetaEnum::fromType<E>().keyCount();
}
