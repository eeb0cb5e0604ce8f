#include "core/model/MediaTypes.h"

#include "core/fs/TypeIdentifiers.h"

namespace MediaTypes {

const QStringList &audiovisualTypes()
{
    static const QStringList types = [] {
        QStringList list = {QStringLiteral("public.movie"), QStringLiteral("public.video")};
        list += TypeIdentifiers::namedTypesConformingTo(QStringLiteral("public.movie"));
        list.removeDuplicates();
        return list;
    }();
    return types;
}

} // namespace MediaTypes
