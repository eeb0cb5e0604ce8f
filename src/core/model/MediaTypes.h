#pragma once

#include <QStringList>

namespace MediaTypes {

// The type identifiers of every film format the system's media framework knows (every video
// MIME type of the shared MIME database), plus "public.video" and "public.movie". Built once.
const QStringList &audiovisualTypes();

} // namespace MediaTypes
