#pragma once

#include <QString>
#include <QStringList>

// Type identifiers over the shared MIME database: each MIME type maps to a reverse-DNS type name
// ("public.jpeg", "public.movie", "public.camera-raw-image", ...) with a conformance chain up to
// "public.data" or "public.item". Types the table does not know keep their MIME name and conform
// to their MIME ancestors' types and to "public.data". Lookups go by file name only (never by
// content), are cached per extension and are safe from any thread.
namespace TypeIdentifiers {

QString forFileName(const QString &fileName, bool isDirectory);
QString forMimeType(const QString &mimeName);
QString symlink();
QString volume();

// Whether `type` is `parent` or conforms to it through its chain.
bool conformsTo(const QString &type, const QString &parent);
// `type` and every type it conforms to, nearest first.
QStringList conformanceChain(const QString &type);
// The MIME type a type identifier came from (for default-application lookups); empty if none.
QString preferredMimeType(const QString &type);
// The types of the table (those with a name of their own) that conform to `parent`, in table order.
QStringList namedTypesConformingTo(const QString &parent);
// A short localised description ("JPEG image", "Folder") for the kind column and sort.
QString description(const QString &type);

} // namespace TypeIdentifiers
