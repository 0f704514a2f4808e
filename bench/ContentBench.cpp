// The library as it is read at every start, install and uninstall: its cost must stay in proportion
// to what is installed, and near that of its JSON.

#include "RatioReporter.h"
#include "content/ContentCatalog.h"
#include "support/ContentFixture.h"

#include <memory>

namespace {

constexpr int kLayers = 4;
constexpr int kVariants = 12;
// As in the rhythms that come with the program.
constexpr int kNotes = 20;

QList<LoopVariant> variantsOf(const QString& layerId)
{
    QList<LoopVariant> variants;
    for (int i = 0; i < kVariants; ++i) {
        LoopVariant variant;
        variant.layerId = layerId;
        variant.section = static_cast<LoopSection>(i % 4);
        variant.variantIndex = 1 + i / 4;
        for (int note = 0; note < kNotes; ++note)
            variant.notes.append({60 + note % 12, note * 0.25, 0.23, 80 + note});
        variants.append(variant);
    }
    return variants;
}

QByteArray packageOf(const QString& rhythmId)
{
    Rhythm rhythm;
    rhythm.id = rhythmId;
    QList<LoopLayer> layers;
    QList<LoopVariant> variants;
    for (int i = 0; i < kLayers; ++i) {
        LoopLayer layer;
        layer.id = QStringLiteral("%1_%2").arg(rhythmId).arg(i);
        layer.rhythmId = rhythmId;
        layers.append(layer);
        variants.append(variantsOf(layer.id));
    }
    return packageText(rhythm, layers, variants);
}

/// A library of so many rhythms on disk.
std::unique_ptr<ContentFixture> contentOf(int rhythms)
{
    auto content = std::make_unique<ContentFixture>();
    for (int i = 0; i < rhythms; ++i) {
        const QString id = QStringLiteral("rhythm%1").arg(i);
        content->addPackage(id, packageOf(id));
        content->addGroove(id, "{\"rhythmId\": \"" + id.toUtf8() + "\", \"offsets\": []}");
    }
    return content;
}

void reload(benchmark::State& state)
{
    const auto content = contentOf(static_cast<int>(state.range(0)));
    for (auto _ : state)
        content->library().reload();
}

/// The same files as JSON, and the index as text: what no reader of them can do without.
void readJson(benchmark::State& state)
{
    const auto content = contentOf(static_cast<int>(state.range(0)));
    content->library().reload();
    const QDir dir(content->library().installedDir());
    const QStringList names = dir.entryList(QDir::Files);
    const QJsonDocument index = QJsonDocument::fromJson(content->manifest());
    for (auto _ : state) {
        for (const QString& name : names)
            benchmark::DoNotOptimize(
                QJsonDocument::fromJson(ContentFixture::read(dir.filePath(name))));
        benchmark::DoNotOptimize(index.toJson());
    }
}

void parseCatalog(benchmark::State& state)
{
    QJsonArray rhythms;
    for (int i = 0; i < state.range(0); ++i)
        rhythms.append(QJsonObject{{QStringLiteral("rhythmId"), QString::number(i)},
                                   {QStringLiteral("displayName"), QStringLiteral("A rhythm")},
                                   {QStringLiteral("estimatedDownloadBytes"), 5000000}});
    const QJsonObject catalog{{QStringLiteral("rhythms"), rhythms}};
    for (auto _ : state)
        benchmark::DoNotOptimize(ContentCatalog::parse(catalog));
}

BENCHMARK(reload)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(readJson)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(parseCatalog)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(
        argc, argv,
        {{"reload, 200 over 20 rhythms", "reload/200", "reload/20", "10"},
         {"reload of 200 rhythms over their bare JSON", "reload/200", "readJson/200", "below 3"},
         {"catalogue, 10,000 over 1,000 rhythms", "parseCatalog/10000", "parseCatalog/1000",
          "10"}});
}
