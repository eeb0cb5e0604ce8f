// Renders the program's SVG icon into the PNG sizes of the hicolor icon theme, at build time:
//     pixcove-render-icon ICON.svg OUTPUT_FOLDER SIZE...
// writes OUTPUT_FOLDER/SIZExSIZE/apps/NAME.png for each size, NAME being the SVG's base name.

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = QGuiApplication::arguments();
    if (args.size() < 4) {
        std::fprintf(stderr, "usage: pixcove-render-icon ICON.svg OUTPUT_FOLDER SIZE...\n");
        return 2;
    }
    QSvgRenderer renderer(args.at(1));
    if (!renderer.isValid()) {
        std::fprintf(stderr, "pixcove-render-icon: cannot read %s\n", qPrintable(args.at(1)));
        return 1;
    }
    const QString name = QFileInfo(args.at(1)).completeBaseName();
    for (const QString &sizeText : args.mid(3)) {
        bool ok = false;
        const int size = sizeText.toInt(&ok);
        if (!ok || size < 8 || size > 1024) {
            std::fprintf(stderr, "pixcove-render-icon: %s is not a size\n", qPrintable(sizeText));
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
        painter.end();
        const QString folder = QStringLiteral("%1/%2x%2/apps").arg(args.at(2)).arg(size);
        const QString path = folder + QLatin1Char('/') + name + QStringLiteral(".png");
        if (!QDir().mkpath(folder) || !image.save(path, "PNG")) {
            std::fprintf(stderr, "pixcove-render-icon: cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}
