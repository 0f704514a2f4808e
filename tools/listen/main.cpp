// Renders every loop of every rhythm over four chords, to be heard and seen by those who write
// them.

#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "export/AudioExporter.h"
#include "listen/ListenPage.h"
#include "listen/NotePicture.h"
#include "listen/RhythmDemo.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "voice/AudioDecoder.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QSaveFile>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace {

/// What is rendered from, and where to.
struct Studio {
    InstrumentLibrary instruments;
    LoopLibrary library;
    QString gmBank;
    QDir folder;
    /// Each layer is wanted alone, too.
    bool layers = false;

    Studio(const QString& resources, const QString& out)
        : instruments(resources + "/soundfonts"_L1), library(resources + "/loops"_L1, &instruments),
          gmBank(resources + "/soundfonts/velta_bank_gm.sf2"_L1), folder(out)
    {
        instruments.loadBuiltinGmInstruments();
        library.reload();
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

void report(const Rhythm& rhythm, const RenderedLoop& loop)
{
    std::printf("%s\t%s\t%.1f s\t%.1f LUFS\t%.1f dB\n", qPrintable(rhythm.id),
                qPrintable(loop.title), loop.seconds, loop.loudness.lufs, loop.loudness.peakDb);
    std::fflush(stdout);
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
    const auto song = RhythmDemo::song(studio.library, rhythm, loop);
    rendered.title = titleOf(loop);
    const QString name = rhythm.id + u'/' + QString(rendered.title).replace(u' ', u'_');
    rendered.sound = name + ".wav"_L1;
    rendered.picture = name + ".png"_L1;
    const QList<float> mix = record(studio, *song, rendered.sound);
    if (mix.isEmpty())
        return false;
    rendered.seconds = static_cast<double>(mix.size()) / 2 / kSampleRate;
    rendered.loudness = Loudness::of(mix);
    report(rhythm, rendered);
    if (!notePicture(*song, studio.library).save(studio.folder.filePath(rendered.picture)))
        return fail(u"No pude escribir %1"_s.arg(rendered.picture));
    return !studio.layers || renderLayers(studio, *song, name, rendered);
}

bool renderRhythm(Studio& studio, const Rhythm& rhythm, QList<RenderedRhythm>& page)
{
    if (!studio.folder.mkpath(rhythm.id))
        return fail(u"No pude crear la carpeta %1"_s.arg(studio.folder.filePath(rhythm.id)));
    RenderedRhythm rendered{.title = titleOf(rhythm), .loops = {}};
    for (const RhythmDemo::Loop& loop : RhythmDemo::loopsOf(studio.library, rhythm.id)) {
        if (!render(studio, rhythm, loop, rendered.loops.emplaceBack()))
            return false;
    }
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

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Hace sonar cada variación de cada ritmo sobre i iv v i, con su dibujo."_s);
    parser.addHelpOption();
    parser.addOption({u"resources"_s, u"Carpeta con loops/ y soundfonts/."_s, u"carpeta"_s,
                      QCoreApplication::applicationDirPath() + "/resources"_L1});
    parser.addOption({u"layers"_s, u"También cada capa sola."_s});
    parser.addPositionalArgument(u"salida"_s, u"Carpeta que se llena; index.html muestra todo."_s);
    parser.addPositionalArgument(u"ritmo"_s, u"Solo estos ritmos."_s, u"[ritmo...]"_s);
    parser.process(app);
    QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty())
        parser.showHelp(1);
    Studio studio(parser.value(u"resources"_s), arguments.takeFirst());
    studio.layers = parser.isSet(u"layers"_s);
    return renderLibrary(studio, arguments) ? 0 : 1;
}
