// What a choice in the browser of loops costs, up to the repainted panel, in a library far above
// any real one.

#include "RatioReporter.h"
#include "content/ContentCatalog.h"
#include "content/ContentDownloadManager.h"
#include "content/InstalledContentRegistry.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "shell/LoopBrowser.h"
#include "shell/theme/StyleSheet.h"
#include "support/ContentFixture.h"

#include <QApplication>
#include <QComboBox>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int kStyles = 2;
constexpr int kRhythms = 200;
constexpr int kLayers = 4;
constexpr int kVariantsPerSection = 3;
constexpr int kSections = 4;

QList<LoopLayer> layersOf(const QString& rhythmId)
{
    QList<LoopLayer> layers;
    for (int i = 0; i < kLayers; ++i)
        layers.append({rhythmId + QString::number(i), rhythmId, {}, {}, true});
    return layers;
}

QList<LoopVariant> variantsOf(const QList<LoopLayer>& layers)
{
    QList<LoopVariant> variants;
    for (const LoopLayer& layer : layers) {
        for (int i = 0; i < kSections * kVariantsPerSection; ++i)
            variants.append(
                {layer.id, static_cast<LoopSection>(i % kSections), 1 + i / kSections, {}, 1});
    }
    return variants;
}

QByteArray packageOf(int index)
{
    const QString id = QStringLiteral("r%1").arg(index, 3, 10, QLatin1Char('0'));
    Rhythm record;
    record.id = id;
    const QList<LoopLayer> layers = layersOf(id);
    QJsonObject package = jsonObject(packageText(record, layers, variantsOf(layers)));
    const QString style = QStringLiteral("estilo %1").arg(index % kStyles);
    QJsonObject rhythm = package[QStringLiteral("rhythm")].toObject();
    rhythm[QStringLiteral("styleId")] = style;
    package[QStringLiteral("rhythm")] = rhythm;
    package[QStringLiteral("musicalStyle")] = QJsonObject{{QStringLiteral("id"), style}};
    return QJsonDocument(package).toJson();
}

/// A browser on the screen, over a full library.
class Stage {
public:
    Stage() : catalog({}), registry({}, {}), downloads(&catalog, &registry, &library(), nullptr)
    {
        for (int i = 0; i < kRhythms; ++i)
            files.addPackage(QStringLiteral("r%1").arg(i), packageOf(i));
        library().reload();
        browser.resize(252, 800);
        browser.show();
        browser.setProject(&project);
        QCoreApplication::processEvents();
    }

    LoopLibrary& library() { return files.library(); }

    /// Style, rhythm or layer, from the top.
    QComboBox& combo(int index) { return *browser.findChildren<QComboBox*>().at(index); }

    ContentFixture files;
    ContentCatalog catalog;
    InstalledContentRegistry registry;
    ContentDownloadManager downloads;
    Project project;
    LoopBrowser browser{&library(), &files.instruments(), &catalog, &downloads, &registry, nullptr};
};

Stage* stage = nullptr;

/// Chooses one item after the other, each time up to the repainted screen.
void choose(benchmark::State& state, int combo)
{
    QComboBox& box = stage->combo(combo);
    for (auto _ : state) {
        box.setCurrentIndex((box.currentIndex() + 1) % box.count());
        QCoreApplication::processEvents();
    }
}

void styleChosen(benchmark::State& state)
{
    choose(state, 0);
}

void layerChosen(benchmark::State& state)
{
    choose(state, 2);
}

/// As many buttons and rhythms as a choice of style brings, without anything around them.
void plainWidgets(benchmark::State& state)
{
    QScrollArea area;
    area.setWidgetResizable(true);
    area.resize(252, 800);
    area.show();
    for (auto _ : state) {
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        auto* combo = new QComboBox;
        column->addWidget(combo);
        for (int i = 0; i < kRhythms / kStyles; ++i)
            combo->addItem(QStringLiteral("Ritmo %1").arg(i));
        for (int i = 0; i < 2 * kSections * kVariantsPerSection; ++i)
            column->addWidget(new QToolButton);
        area.setWidget(content);
        QCoreApplication::processEvents();
    }
}

BENCHMARK(styleChosen)->Unit(benchmark::kMillisecond);
BENCHMARK(layerChosen)->Unit(benchmark::kMillisecond);
BENCHMARK(plainWidgets)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    application.setStyleSheet(styleSheet(false));
    Stage full;
    stage = &full;
    return runBenchmarks(
        argc, argv,
        {{"Choice of a style over as many plain widgets", "styleChosen", "plainWidgets",
          "the choice itself below 30 ms"},
         {"Choice of a style over choice of a layer", "styleChosen", "layerChosen", "below 3"}});
}
