// How fast the inspector's loader reads the records of a folder of images on the shared pool:
// every file of FOLDER with the given extension, loaded as one selection, five rounds; prints
// the median files per second, read from the files and taken from the properties cache.
#include "core/imaging/ImagePropertiesLoader.h"
#include "core/imaging/ImagePropertiesManager.h"
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

    // One warm-up round (page cache, Exiv2's tables; with a cache, its records), then five timed
    // ones.
    const auto measure = [&files](const char *title, ImagePropertiesLoader &loader) {
        QList<double> seconds;
        qsizetype results = 0;
        qsizetype errors = 0;
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
        std::printf("%-46s %8.0f files/s (%.3f s for %lld files, %lld records, %lld errors, %d threads)\n", title,
                    double(files.size()) / median, median, qlonglong(files.size()), qlonglong(results),
                    qlonglong(errors), loader.pool()->maxThreadCount());
    };
    ImagePropertiesLoader reader;
    measure("ImagePropertiesLoader", reader);
    // The same selection again, as the inspector meets it: records from the cache, each file
    // only asked whether it changed.
    ImagePropertiesManager cache;
    cache.setMaximumCount(int(files.size()));
    ImagePropertiesLoader cached;
    cached.setCache(&cache);
    measure("ImagePropertiesLoader, reselected (cached)", cached);
    return 0;
}
