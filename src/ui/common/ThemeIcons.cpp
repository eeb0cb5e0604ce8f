#include "ui/common/ThemeIcons.h"

#include <QApplication>

namespace ThemeIcons {

QIcon icon(const QString &name, QStyle::StandardPixmap fallback)
{
    if (QIcon::hasThemeIcon(name))
        return QIcon::fromTheme(name);
    // Themes that keep only their symbolic icons current (Adwaita).
    const QString symbolic = name + QStringLiteral("-symbolic");
    if (QIcon::hasThemeIcon(symbolic))
        return QIcon::fromTheme(symbolic);
    return QApplication::style()->standardIcon(fallback);
}

const QIcon &folder()
{
    static const QIcon icon = ThemeIcons::icon(QStringLiteral("folder"), QStyle::SP_DirIcon);
    return icon;
}

} // namespace ThemeIcons
