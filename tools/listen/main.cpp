// Renders every loop of every rhythm over some chords, and a song of each, to be heard and seen by
// those who write them.

#include "content/ContentRoots.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "export/AudioExporter.h"
#include "listen/Balance.h"
#include "listen/DemoSong.h"
#include "listen/HeardGroove.h"
#include "listen/ListenOptions.h"
#include "listen/ListenPage.h"
#include "listen/NotePicture.h"
#include "listen/RhythmDemo.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "storage/LocalStorageProvider.h"
#include "voice/AudioDecoder.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>
#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace {

/// The names of drums by their key, as `velta-content sonidos` writes them; none without the file.
QHash<int, QString> drumNames(const QString& path)
{
    QHash<int, QString> names;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        const QJsonObject written = QJsonDocument::fromJson(file.readAll()).object();
        for (auto name = written.begin(); name != written.end(); ++name)
            names.insert(name.key().toInt(), name.value().toString());
    }
    return names;
}

/// What is rendered from, and where to.
struct Studio {
    InstrumentLibrary instruments;
    LoopLibrary library;
    QString gmBank;
    QDir folder;
    ListenOptions options;
    QHash<int, QString> drums;
    /// The layers as they are measured, and what each shall come to; null where nobody wrote them.
    LoopLibrary stemLibrary;
    std::optional<Balance::Stems> stems;

    Studio(const QString& resources, const QString& out, ListenOptions wanted)
        : instruments(ContentRoots(resources).soundfonts()),
          library(ContentRoots(resources).loops(), &instruments),
          gmBank(ContentRoots(resources).gmBank()), folder(out), options(std::move(wanted)),
          drums(drumNames(resources + "/sonidos.json"_L1)),
          stemLibrary(ContentRoots(resources + "/stems"_L1).loops(), &instruments),
          stems(Balance::readStems(resources + "/stems/stems.json"_L1))
    {
        instruments.loadBuiltinGmInstruments();
        library.reload();
        stemLibrary.reload();
    }
};

bool fail(const QString& message)
{
    std::fprintf(stderr, "%s\n", qPrintable(message));
    return false;
}

QString titleOf(const RhythmDemo::Loop& loop)
{
    return u"%1 %2"_s.arg(loopSectionToString(loop.section)).arg(loop.variantIndex);
}

QString titleOf(const Rhythm& rhythm)
{
    return u"%1 (%2/%3, negra = %4)"_s.arg(rhythm.displayName)
        .arg(rhythm.timeSignature.numerator)
        .arg(rhythm.timeSignature.denominator)
        .arg(rhythm.referenceBpm);
}

void report(const Rhythm& rhythm, const QString& title, double seconds, const Loudness& loudness)
{
    std::printf("%s\t%s\t%.1f s\t%.1f LUFS\t%.1f dB\n", qPrintable(rhythm.id), qPrintable(title),
                seconds, loudness.lufs, loudness.peakDb);
    std::fflush(stdout);
}

double secondsOf(const QList<float>& mix)
{
    return static_cast<double>(mix.size()) / 2 / kSampleRate;
}

bool draw(const Studio& studio, const Project& song, const QString& title, const QString& picture)
{
    const PictureWords words{.title = title, .drums = studio.drums};
    return notePicture(song, studio.library, words).save(studio.folder.filePath(picture)) ||
           fail(u"No pude escribir %1"_s.arg(picture));
}

/// The finished mix, written to a file of the studio's folder; empty if that failed.
QList<float> record(Studio& studio, const Project& song, const QString& sound)
{
    QString error;
    const QList<float> mix = AudioExporter::renderFullMix(
        song, QString(), &studio.library, &studio.instruments, studio.gmBank, &error);
    if (mix.isEmpty())
        fail(error);
    else if (!AudioDecoder::writeWav(studio.folder.filePath(sound), mix, kSampleRate, 2))
        fail(u"No pude escribir %1"_s.arg(sound));
    else
        return mix;
    return {};
}

bool renderLayers(Studio& studio, const Project& song, const QString& name, RenderedLoop& rendered)
{
    for (qsizetype i = 0; i < song.tracks.size(); ++i) {
        RenderedLayer layer{.label = song.tracks.at(i).name,
                            .sound = u"%1_%2.wav"_s.arg(name).arg(i + 1),
                            .loudness = {}};
        const QList<float> mix = record(studio, *RhythmDemo::alone(song, i), layer.sound);
        if (mix.isEmpty())
            return false;
        layer.loudness = Loudness::of(mix);
        rendered.layers.append(layer);
    }
    return true;
}

bool render(Studio& studio, const Rhythm& rhythm, const RhythmDemo::Loop& loop,
            RenderedLoop& rendered)
{
    const auto song = RhythmDemo::song(studio.library, rhythm, loop, studio.options.setting);
    RhythmDemo::keepLayers(*song, studio.options.layers);
    rendered.title = titleOf(loop);
    const QString name = rhythm.id + u'/' + QString(rendered.title).replace(u' ', u'_');
    rendered.sound = name + ".wav"_L1;
    rendered.picture = name + ".png"_L1;
    const QList<float> mix = record(studio, *song, rendered.sound);
    if (mix.isEmpty())
        return false;
    rendered.seconds = secondsOf(mix);
    rendered.loudness = Loudness::of(mix);
    report(rhythm, rendered.title, rendered.seconds, rendered.loudness);
    return draw(studio, *song, rhythm.displayName + u" · "_s + rendered.title, rendered.picture) &&
           (!studio.options.eachLayer || renderLayers(studio, *song, name, rendered));
}

bool writeMp3(Studio& studio, const Project& song, const QString& sound)
{
    QString error;
    return AudioExporter::exportMp3(song, QString(), &studio.library, &studio.instruments,
                                    studio.gmBank, studio.folder.filePath(sound), &error) ||
           fail(error);
}

/// The song of a rhythm as sound, picture and work; null where it cannot be written.
std::optional<RenderedSong> renderSong(Studio& studio, const Rhythm& rhythm, const Project& song)
{
    const QString name = rhythm.id + "/cancion"_L1;
    RenderedSong rendered{.wav = name + ".wav"_L1,
                          .mp3 = name + ".mp3"_L1,
                          .projectFolder = name,
                          .picture = name + ".png"_L1,
                          .loudness = {}};
    LocalStorageProvider works(studio.folder.filePath(rhythm.id));
    const QList<float> mix = record(studio, song, rendered.wav);
    if (mix.isEmpty() || !writeMp3(studio, song, rendered.mp3) ||
        !draw(studio, song, rhythm.displayName + u" · canción"_s, rendered.picture))
        return std::nullopt;
    if (!works.saveProject(u"cancion"_s, song)) {
        fail(u"No pude escribir la obra %1"_s.arg(name));
        return std::nullopt;
    }
    rendered.seconds = secondsOf(mix);
    rendered.loudness = Loudness::of(mix);
    report(rhythm, u"Canción"_s, rendered.seconds, rendered.loudness);
    return rendered;
}

/// How loud the layers of a rhythm are beside what their roles ask for.
QList<LevelInMix> levelsOf(Studio& studio, const Rhythm& rhythm)
{
    const Rhythm* split = studio.stemLibrary.findRhythm(rhythm.id);
    if (!studio.stems || !split)
        return {};
    QList<LevelInMix> levels;
    for (const Balance::Measured& one : Balance::measure(
             studio.stems->stems, *split, studio.stemLibrary, studio.instruments, studio.gmBank)) {
        const LoopLayer* layer = studio.library.findLayer(one.stem.layerId.section(u':', 0, 0));
        levels.append({.layer = layer ? layer->label : one.stem.layerId,
                       .role = one.stem.role,
                       .aboveBassDb = one.aboveBassDb,
                       .targetDb = one.stem.targetDb,
                       .off = std::abs(one.missesTargetBy()) > studio.stems->toleranceDb});
    }
    return levels;
}

bool renderLoops(Studio& studio, const Rhythm& rhythm, RenderedRhythm& rendered)
{
    for (const RhythmDemo::Loop& loop : RhythmDemo::loopsOf(studio.library, rhythm.id)) {
        if (studio.options.wants(loop) &&
            !render(studio, rhythm, loop, rendered.loops.emplaceBack()))
            return false;
    }
    return true;
}

bool renderRhythm(Studio& studio, const Rhythm& rhythm, QList<RenderedRhythm>& page)
{
    if (!studio.folder.mkpath(rhythm.id))
        return fail(u"No pude crear la carpeta %1"_s.arg(studio.folder.filePath(rhythm.id)));
    RenderedRhythm rendered{.title = titleOf(rhythm), .loops = {}};
    if (const GrooveTemplate* groove = studio.library.grooveForRhythm(rhythm.id))
        rendered.groove = heardGroove(*groove, rhythm.referenceBpm);
    const auto song = DemoSong::of(studio.library, rhythm, studio.options.setting);
    if (song && studio.options.whole() && !(rendered.song = renderSong(studio, rhythm, *song)))
        return false;
    if (studio.options.layers.isEmpty())
        rendered.levels = levelsOf(studio, rhythm);
    if (!renderLoops(studio, rhythm, rendered))
        return false;
    page.append(rendered);
    return true;
}

bool writePage(const QDir& folder, const QList<RenderedRhythm>& rhythms)
{
    QSaveFile file(folder.filePath(u"index.html"_s));
    const QByteArray html = listenPage(rhythms).toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(html) != html.size() || !file.commit())
        return fail(u"No pude escribir %1"_s.arg(file.fileName()));
    return true;
}

bool renderLibrary(Studio& studio, const QStringList& chosen)
{
    for (const QString& id : chosen) {
        if (!studio.library.findRhythm(id))
            return fail(u"No hay ningún ritmo «%1»."_s.arg(id));
    }
    QList<RenderedRhythm> page;
    for (const Rhythm& rhythm : studio.library.rhythms()) {
        if ((chosen.isEmpty() || chosen.contains(rhythm.id)) && !renderRhythm(studio, rhythm, page))
            return false;
    }
    return writePage(studio.folder, page);
}

QCommandLineParser& describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        u"Hace sonar cada variación de cada ritmo sobre i iv v i, con su dibujo, y una canción de "
        "cada uno."_s);
    parser.addHelpOption();
    parser.addOption({u"resources"_s, u"Carpeta con loops/ y soundfonts/."_s, u"carpeta"_s,
                      QCoreApplication::applicationDirPath() + "/resources"_L1});
    parser.addOption(
        {u"tono"_s, u"«Do», «La menor», «Re dórico», «F# lidio»."_s, u"tono"_s, u"La menor"_s});
    parser.addOption({u"grados"_s, u"Un grado por vuelta."_s, u"1,4,5,1"_s, u"1,4,5,1"_s});
    parser.addOption({u"tempo"_s, u"Negras por minuto; si no, el habitual."_s, u"número"_s});
    parser.addOption(
        {u"seccion"_s, u"Solo «Normal», o «Normal 2»; se puede repetir."_s, u"sección"_s});
    parser.addOption({u"capa"_s, u"Solo esta capa; se puede repetir."_s, u"id"_s});
    parser.addOption({u"layers"_s, u"También cada capa sola."_s});
    parser.addPositionalArgument(u"salida"_s, u"Carpeta que se llena; index.html muestra todo."_s);
    parser.addPositionalArgument(u"ritmo"_s, u"Solo estos ritmos."_s, u"[ritmo...]"_s);
    return parser;
}

/// What the words of the command ask for; null after saying which of them is none.
std::optional<ListenOptions> optionsOf(const QCommandLineParser& parser)
{
    const QString tempoText = parser.value(u"tempo"_s);
    const auto key = ListenOptions::keyOf(parser.value(u"tono"_s));
    const auto degrees = ListenOptions::degreesOf(parser.value(u"grados"_s));
    const auto tempo = tempoText.isEmpty() ? std::optional(0) : ListenOptions::tempoOf(tempoText);
    if (!key)
        fail(u"No conozco el tono «%1»: «Do», «La menor», «Re dórico»."_s.arg(
            parser.value(u"tono"_s)));
    if (!degrees)
        fail(u"Los grados se escriben 1,4,5,1: del 1 al 7, hasta 16."_s);
    if (!tempo)
        fail(u"El tempo va de 20 a 400."_s);
    if (!key || !degrees || !tempo)
        return std::nullopt;
    return ListenOptions{.setting = {.key = *key, .degrees = *degrees, .bpm = *tempo},
                         .sections = parser.values(u"seccion"_s),
                         .layers = parser.values(u"capa"_s),
                         .eachLayer = parser.isSet(u"layers"_s)};
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    describe(parser).process(app);
    QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty())
        parser.showHelp(1);
    const auto options = optionsOf(parser);
    if (!options)
        return 2;
    Studio studio(parser.value(u"resources"_s), arguments.takeFirst(), *options);
    return renderLibrary(studio, arguments) ? 0 : 1;
}
