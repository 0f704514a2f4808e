// Measures every layer of every rhythm in the mix, against the target of its role.

#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "export/AudioExporter.h"
#include "listen/Balance.h"
#include "listen/Loudness.h"
#include "listen/RhythmDemo.h"
#include "model/Project.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QMap>

#include <cmath>
#include <cstdio>
#include <numeric>

using namespace Qt::Literals::StringLiterals;

namespace {

struct Studio {
    InstrumentLibrary instruments;
    LoopLibrary library;
    QString gmBank;

    Studio(const QString& stems, const QString& soundFonts)
        : instruments(soundFonts), library(stems + "/loops"_L1, &instruments),
          gmBank(soundFonts + "/velta_bank_gm.sf2"_L1)
    {
        instruments.loadBuiltinGmInstruments();
        library.reload();
    }
};

void print(const Balance::Measured& one, double toleranceDb)
{
    const bool off = std::abs(one.missesTargetBy()) > toleranceDb;
    std::printf("%-44s %-10s %6.1f LUFS %6.1f dB  %+5.1f  papel %+5.1f  %+5.1f%s\n",
                qPrintable(one.stem.layerId), qPrintable(one.stem.role), one.level.loudness,
                one.level.strokes, one.aboveBassDb, one.stem.targetDb, one.missesTargetBy(),
                off ? " !" : "");
}

/// The mean loudness of each section of a rhythm, all layers together.
void printSections(Studio& studio, const Rhythm& rhythm)
{
    QMap<LoopSection, QList<double>> found;
    for (const RhythmDemo::Loop& loop : RhythmDemo::loopsOf(studio.library, rhythm.id)) {
        const QList<float> mix = AudioExporter::renderFullMix(
            *RhythmDemo::song(studio.library, rhythm, loop), QString(), &studio.library,
            &studio.instruments, studio.gmBank, nullptr);
        found[loop.section].append(Loudness::of(mix).lufs);
    }
    for (const auto& [section, lufs] : found.asKeyValueRange()) {
        const double sum = std::accumulate(lufs.begin(), lufs.end(), 0.0);
        std::printf("%-44s %-10s %6.1f LUFS\n", qPrintable(rhythm.id),
                    qPrintable(loopSectionToString(section)),
                    sum / static_cast<double>(lufs.size()));
    }
}

/// Prints all layers of a rhythm; whether all are where they belong.
bool report(Studio& studio, const Rhythm& rhythm, const Balance::Stems& stems)
{
    bool balanced = true;
    for (const Balance::Measured& one :
         Balance::measure(stems.stems, rhythm, studio.library, studio.instruments, studio.gmBank)) {
        print(one, stems.toleranceDb);
        balanced = balanced && std::abs(one.missesTargetBy()) <= stems.toleranceDb;
    }
    std::fflush(stdout);
    return balanced;
}

QStringList rhythmsOf(const Balance::Stems& stems)
{
    QStringList ids;
    for (const Balance::Stem& stem : stems.stems) {
        if (!ids.contains(stem.rhythmId))
            ids.append(stem.rhythmId);
    }
    return ids;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Mide cada capa de cada ritmo en Normal 2, sobre I IV V I, contra su bajo."_s);
    parser.addHelpOption();
    parser.addOption({u"soundfonts"_s, u"Carpeta de los bancos."_s, u"carpeta"_s});
    parser.addOption({u"sections"_s, u"La sonoridad media de cada sección."_s});
    parser.addPositionalArgument(u"carpeta"_s, u"La que llenó velta-stems."_s);
    parser.addPositionalArgument(u"ritmo"_s, u"Solo estos ritmos."_s, u"[ritmo...]"_s);
    parser.process(app);
    QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty())
        parser.showHelp(1);
    const QString folder = arguments.takeFirst();
    const auto stems = Balance::readStems(folder + "/stems.json"_L1);
    if (!stems) {
        std::fprintf(stderr, "%s\n", qPrintable(u"No pude leer %1/stems.json"_s.arg(folder)));
        return 1;
    }
    Studio studio(folder, parser.value(u"soundfonts"_s));
    const QStringList ids = arguments.isEmpty() ? rhythmsOf(*stems) : arguments;
    bool balanced = true;
    for (const QString& id : ids) {
        const Rhythm* rhythm = studio.library.findRhythm(id);
        if (!rhythm) {
            std::fprintf(stderr, "%s\n", qPrintable(u"No hay ningún ritmo «%1»."_s.arg(id)));
            return 1;
        }
        if (parser.isSet(u"sections"_s))
            printSections(studio, *rhythm);
        else
            balanced = report(studio, *rhythm, *stems) && balanced;
    }
    return balanced ? 0 : 1;
}
