// The steps of a thumbnail, one by one, on the camera JPEGs that bench/run makes under
// $PIXCOVE_BENCH_DIR/thumbs/src (run bench/run once first).
#include "core/imaging/EmbeddedPreview.h"
#include "core/imaging/ImageDecoder.h"
#include "core/thumbnails/ThumbnailCache.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

QByteArray sourcePath(const char *name)
{
    const QByteArray root = qEnvironmentVariableIsSet("PIXCOVE_BENCH_DIR") ? qgetenv("PIXCOVE_BENCH_DIR")
                                                                           : QByteArray("/tmp/pixcove-bench");
    return root + "/thumbs/src/" + name;
}

bool haveSources(benchmark::State &state)
{
    if (QFile::exists(QFile::decodeName(sourcePath("preview-mpf.jpg"))))
        return true;
    state.SkipWithError("run bench/run first: it makes the camera JPEGs");
    return false;
}

void BM_DecodeCameraJpegTo1024(benchmark::State &state)
{
    if (!haveSources(state))
        return;
    ImageDecoder::Options options;
    options.fitSize = QSize(1024, 1024);
    for (auto _ : state)
        benchmark::DoNotOptimize(ImageDecoder::decode(sourcePath("main.jpg"), options));
}
BENCHMARK(BM_DecodeCameraJpegTo1024)->Unit(benchmark::kMillisecond);

void BM_EmbeddedPreview(benchmark::State &state)
{
    if (!haveSources(state))
        return;
    const QByteArray path = sourcePath(state.range(0) ? "preview-mpf.jpg" : "thumbonly.jpg");
    for (auto _ : state)
        benchmark::DoNotOptimize(EmbeddedPreview::read(path, 800));
}
BENCHMARK(BM_EmbeddedPreview)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

struct CacheFixture
{
    QTemporaryDir dir;
    ThumbnailCache cache{dir.path()};
    QString uri = QStringLiteral("file:///bench/photo.jpg");
    QImage thumbnail;

    CacheFixture()
    {
        ImageDecoder::Options options;
        options.fitSize = QSize(1024, 1024);
        thumbnail = ImageDecoder::scaledToFit(ImageDecoder::decode(sourcePath("main.jpg"), options), options.fitSize);
        cache.store(uri, 1, ThumbnailCache::Flavor::xxLarge, thumbnail);
    }
};

void BM_CacheStore(benchmark::State &state)
{
    if (!haveSources(state))
        return;
    CacheFixture fixture;
    for (auto _ : state)
        fixture.cache.store(fixture.uri, 1, ThumbnailCache::Flavor::xxLarge, fixture.thumbnail);
}
BENCHMARK(BM_CacheStore)->Unit(benchmark::kMillisecond);

void BM_CacheHit(benchmark::State &state)
{
    if (!haveSources(state))
        return;
    CacheFixture fixture;
    const bool scale = state.range(0);
    for (auto _ : state) {
        QImage image = fixture.cache.lookup(fixture.uri, 1, ThumbnailCache::Flavor::xxLarge);
        if (scale)
            image = ImageDecoder::scaledToFit(image, QSize(800, 800));
        benchmark::DoNotOptimize(image);
    }
}
BENCHMARK(BM_CacheHit)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication::setAttribute(Qt::AA_PluginApplication); // no display needed
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
