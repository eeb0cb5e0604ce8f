// How fast the inspector's loader reads the records of a folder of images on the shared pool:
// every file of FOLDER with the given extension, loaded as one selection, five rounds; prints
// the median files per second.
#include "core/imaging/ImagePropertiesLoader.h"
#include "core/imaging/ImageSource.h"
#include "core/model/PXFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThreadPool>

#include <algorithm>
#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ImageSource::install();
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_properties_event FOLDER\n");
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    QList<PXFilePtr> files;
    for (const QString &name : folder.entryList({QStringLiteral("*.jpg")}, QDir::Files, QDir::Name))
        files.append(PXFile::fileForPath(folder.filePath(name)));
    if (files.isEmpty()) {
        std::fprintf(stderr, "bench_properties_event: no JPEG files in %s\n", argv[1]);
        return 1;
    }

    ImagePropertiesLoader loader;
    QList<double> seconds;
    qsizetype results = 0;
    qsizetype errors = 0;
    // One warm-up round (page cache, Exiv2's tables), then five timed ones.
    for (int round = 0; round < 6; ++round) {
        QEventLoop loop;
        QElapsedTimer clock;
        clock.start();
        loader.load(files, [&](const ImagePropertiesLoader::CompletionState &state) {
            results = state.results.size();
            errors = state.errors.size();
            loop.quit();
        });
        loop.exec();
        if (round > 0)
            seconds.append(double(clock.nsecsElapsed()) / 1e9);
    }
    std::sort(seconds.begin(), seconds.end());
    const double median = seconds.at(seconds.size() / 2);
    std::printf("%-46s %8.0f files/s (%.3f s for %lld files, %lld records, %lld errors, %d threads)\n",
                "ImagePropertiesLoader", double(files.size()) / median, median, qlonglong(files.size()),
                qlonglong(results), qlonglong(errors), loader.pool()->maxThreadCount());
    return 0;
}
