#include "core/model/MediaTypes.h"

#include "core/fs/TypeIdentifiers.h"

#include <QMimeDatabase>

namespace MediaTypes {

const QStringList &audiovisualTypes()
{
    static const QStringList types = [] {
        QStringList list;
        const QMimeDatabase db;
        for (const QMimeType &mime : db.allMimeTypes()) {
            if (mime.name().startsWith(QLatin1String("video/")))
                list.append(TypeIdentifiers::forMimeType(mime.name()));
        }
        list << QStringLiteral("public.video") << QStringLiteral("public.movie");
        list.removeDuplicates();
        return list;
    }();
    return types;
}

} // namespace MediaTypes
