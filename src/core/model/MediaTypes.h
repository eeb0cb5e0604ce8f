#pragma once

#include <QStringList>

namespace MediaTypes {

// The film types: "public.movie" and "public.video" first, then every type of the type table
// that conforms to them. A video MIME type outside the table conforms to "public.movie" by its
// media type, so every film format of the shared MIME database counts without listing the
// database's types (which would make Qt read each type's definition). Built once.
const QStringList &audiovisualTypes();

} // namespace MediaTypes
