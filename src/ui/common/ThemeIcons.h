#pragma once

#include <QIcon>
#include <QStyle>

// Icons from the desktop's icon theme, with the style's own pictures where the theme lacks one.
// The style's pictures are made only when needed: decoding them costs more than the rest of
// building a main window.
namespace ThemeIcons {

QIcon icon(const QString &name, QStyle::StandardPixmap fallback);
// The folder icon, made once.
const QIcon &folder();

} // namespace ThemeIcons
