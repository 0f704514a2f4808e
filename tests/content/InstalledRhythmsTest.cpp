#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "content/ShippedRhythms.h"
#include "music/ChordMapper.h"
#include "support/Files.h"
#include "support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

namespace InstalledRhythmsTests {

namespace {

using Section = LoopSection;

struct PitchSpan {
    int lowest;
    int highest;
};

/// Compass of the instruments by General MIDI program: the lowest and the highest note that a
/// player has. Wider ones of a family stand for their relatives.
const QMap<int, PitchSpan> kCompass{
    {0, {21, 108}},  // piano
    {4, {21, 108}},  // electric piano
    {7, {29, 89}},   // clavinet
    {11, {53, 89}},  // vibraphone
    {12, {45, 96}},  // marimba
    {15, {64, 96}},  // charango of twenty frets, a dulcimer by its sound
    {16, {36, 96}},  // organ
    {18, {36, 96}},  // rock organ
    {21, {53, 93}},  // accordion, right hand
    {22, {60, 96}},  // harmonica
    {23, {36, 95}},  // bandoneon, both hands
    {24, {40, 88}},  // nylon guitar, up to the requinto
    {25, {40, 86}},  // steel guitar
    {27, {40, 86}},  // electric guitar, clean
    {28, {40, 86}},  // muted
    {29, {40, 86}},  // overdriven
    {30, {40, 86}},  // distorted
    {32, {28, 67}},  // double bass
    {33, {28, 67}},  // electric bass
    {34, {28, 67}},  // with a pick
    {36, {28, 67}},  // slapped
    {38, {28, 67}},  // synthesised
    {40, {55, 100}}, // violin
    {45, {55, 100}}, // plucked violin
    {46, {36, 91}},  // harp
    {48, {36, 96}},  // strings
    {52, {36, 96}},  // choir
    {56, {54, 84}},  // trumpet
    {57, {40, 70}},  // trombone
    {58, {28, 65}},  // tuba
    {59, {54, 84}},  // muted trumpet
    {60, {41, 77}},  // horn
    {61, {40, 84}},  // brass section
    {65, {49, 80}},  // alto saxophone
    {68, {58, 91}},  // oboe
    {71, {50, 94}},  // clarinet
    {72, {74, 108}}, // piccolo
    {73, {60, 96}},  // flute
    {75, {62, 95}},  // pan pipes
    {80, {36, 96}},  // synthesisers
    {81, {36, 96}},  {89, {36, 96}},
};

/// Compass of the recorded instruments, whatever stands in for them.
const QMap<QString, PitchSpan> kRecordedCompass{
    {"charango", {64, 96}},  {"guitarra_criolla", {40, 83}}, {"acordeon", {53, 93}},
    {"bandoneon", {36, 95}}, {"quena", {67, 103}},
};

constexpr int kModes = 4;
constexpr int kKeys = 12;
constexpr int kDegrees = 7;
constexpr int kOctave = 12;

/// Layers that leave the white keys on purpose: the blue notes of the blues.
const QSet<QString> kChromatic{"popular_blues_bajo", "popular_blues_guitarra",
                               "popular_blues_armonica"};

/// Rhythms that are played without drums.
const QSet<QString> kDrumless{"popular_tango", "folklore_bambuco", "folklore_pericon"};

/// Below its tones the recorded guitar has noises.
constexpr int kHighestNoise = 39;

/// Keys of the drum kit.
constexpr PitchSpan kDrumKeys{35, 87};

/// The rhythms that come with the program and those of the content server, in a folder of their
/// own: loading writes an index.
struct Content {
    Content() : instruments(QString()), library(folder.path(), &instruments)
    {
        if (!copyFiles(VELTA_LOOPS_DIR "/installed", library.installedDir()) ||
            !copyFiles(VELTA_SERVED_DIR "/content", library.installedDir()) ||
            !copyFiles(VELTA_LOOPS_DIR "/grooves", library.groovesDir()) ||
            !copyFiles(VELTA_SERVED_DIR "/grooves", library.groovesDir()))
            qFatal("The rhythms cannot be put together.");
        instruments.loadBuiltinGmInstruments();
        library.reload();
    }

    QTemporaryDir folder;
    InstrumentLibrary instruments;
    LoopLibrary library;
};

Content& content()
{
    static Content loaded;
    return loaded;
}

struct Loop {
    Rhythm rhythm;
    LoopLayer layer;
    LoopVariant variant;

    double beats() const { return variant.durationBars * rhythm.timeSignature.beatsPerBar(); }

    QString name() const
    {
        return QString("%1, %2 %3")
            .arg(layer.id, loopSectionToString(variant.section))
            .arg(variant.variantIndex);
    }
};

QList<Loop> allLoops()
{
    QList<Loop> loops;
    for (const Rhythm& rhythm : content().library.rhythms()) {
        for (const LoopLayer& layer : content().library.layersForRhythm(rhythm.id)) {
            for (const Section section :
                 {Section::Intro, Section::Normal, Section::Intermedio, Section::Final}) {
                for (const LoopVariant& variant : content().library.variantsFor(layer.id, section))
                    loops.append({rhythm, layer, variant});
            }
        }
    }
    return loops;
}

bool isNoise(const LoopLayer& layer, const NoteEvent& note)
{
    return layer.instrumentId == "guitarra_criolla" && note.pitch < kHighestNoise;
}

bool isWhiteKey(int pitch)
{
    return KeySignature().degreeOfPitchClass(pitch) != 0;
}

/// The lowest and the highest pitch that a written one becomes in a song.
PitchSpan reachOf(int pitch)
{
    PitchSpan reach{pitch, pitch};
    for (int mode = 0; mode < kModes; ++mode) {
        for (qint32 root = 0; root < kKeys; ++root) {
            for (int degree = 1; degree <= kDegrees; ++degree) {
                const int heard =
                    ChordMapper::mapPitch(pitch, {root, static_cast<KeyMode>(mode)}, degree);
                reach = {std::min(reach.lowest, heard), std::max(reach.highest, heard)};
            }
        }
    }
    return reach;
}

/// The widest interval that two successive notes become in any mode and on any degree.
int widestLeap(int first, int second)
{
    int widest = 0;
    for (int mode = 0; mode < kModes; ++mode) {
        for (int degree = 1; degree <= kDegrees; ++degree) {
            const KeySignature key{0, static_cast<KeyMode>(mode)};
            widest = std::max(widest, std::abs(ChordMapper::mapPitch(first, key, degree) -
                                               ChordMapper::mapPitch(second, key, degree)));
        }
    }
    return widest;
}

double notesPerBar(const LoopVariant& variant)
{
    return static_cast<double>(variant.notes.size()) / variant.durationBars;
}

} // namespace

/// Holds the rhythms of this repository to what a pupil expects of them.
class InstalledRhythmsTest : public QObject {
    Q_OBJECT

private slots:
    void thereAreAsManyAsTheGuideSays();
    void bothStylesKnowTheMetersOfTheirTraditions_data();
    void bothStylesKnowTheMetersOfTheirTraditions();
    void thereAreThreeRhythmsForEveryMeterOfANewWork_data();
    void thereAreThreeRhythmsForEveryMeterOfANewWork();
    void everyFileLoads();
    void theProgramKnowsWhichOfThemCameWithIt();
    void everyRhythmHasItsStyleTempoAndGroove();
    void everyRhythmHasAWholeBand();
    void everyLayerHasAllSections();
    void normalVariantsRiseInDensity();
    void notesStayInsideTheirLoop();
    void noPitchIsStruckTwiceAtOnceOrWhileItRings();
    void noTwoVariantsOfALayerAreEqual();
    void pitchedLayersKeepToTheWhiteKeys();
    void pitchedLayersFitTheirInstrumentInEveryKey();
    void bassesLeapOverNoOctaveAndEndLow();
    void percussionUsesTheDrumKit();
    void velocitiesBreathe();
    void grooveOffsetsLieInsideTheBar();
    void onlyBlueNotesLieOutsideTheScale();
    void everyLoopStaysInEveryKeyOnEveryDegree();
};

void InstalledRhythmsTest::thereAreAsManyAsTheGuideSays()
{
    QCOMPARE(ShippedRhythms::ids().size(), 24);
    QCOMPARE(QDir(VELTA_SERVED_DIR "/content").entryList(QDir::Files).size(), 12);
}

void InstalledRhythmsTest::bothStylesKnowTheMetersOfTheirTraditions_data()
{
    QTest::addColumn<QString>("styleId");
    QTest::addColumn<TimeSignature>("meter");
    for (const QString style : {"folklore", "popular"}) {
        QTest::addRow("%s 4/4", qPrintable(style)) << style << TimeSignature{4, 4, false};
        QTest::addRow("%s 3/4", qPrintable(style)) << style << TimeSignature{3, 4, false};
        QTest::addRow("%s 2/4", qPrintable(style)) << style << TimeSignature{2, 4, false};
        QTest::addRow("%s 6/8", qPrintable(style)) << style << TimeSignature{6, 8, true};
    }
}

void InstalledRhythmsTest::bothStylesKnowTheMetersOfTheirTraditions()
{
    QFETCH(QString, styleId);
    QFETCH(TimeSignature, meter);
    const bool found = std::ranges::any_of(content().library.rhythms(), [&](const Rhythm& rhythm) {
        return ShippedRhythms::contains(rhythm.id) && rhythm.styleId == styleId &&
               rhythm.timeSignature == meter;
    });
    QVERIFY(found);
}

void InstalledRhythmsTest::thereAreThreeRhythmsForEveryMeterOfANewWork_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::newRow("4/4") << TimeSignature{4, 4, false};
    QTest::newRow("3/4") << TimeSignature{3, 4, false};
    QTest::newRow("2/4") << TimeSignature{2, 4, false};
    QTest::newRow("6/8") << TimeSignature{6, 8, true};
}

void InstalledRhythmsTest::thereAreThreeRhythmsForEveryMeterOfANewWork()
{
    QFETCH(TimeSignature, meter);
    const QDir shipped(VELTA_LOOPS_DIR "/installed");
    qsizetype count = 0;
    for (const Rhythm& rhythm : content().library.rhythms()) {
        const bool comesAlong = shipped.exists(rhythm.id + ".content.json");
        count += comesAlong && rhythm.timeSignature == meter ? 1 : 0;
    }
    QVERIFY2(count >= 3, qPrintable(QString::number(count)));
}

void InstalledRhythmsTest::everyFileLoads()
{
    const QDir installed(content().library.installedDir());
    const QStringList files = installed.entryList(QDir::Files);
    QCOMPARE(content().library.rhythms().size(), files.size());
    for (const Rhythm& rhythm : content().library.rhythms())
        QVERIFY2(files.contains(rhythm.id + ".content.json"), qPrintable(rhythm.id));
}

void InstalledRhythmsTest::theProgramKnowsWhichOfThemCameWithIt()
{
    QStringList files;
    for (const QString& id : ShippedRhythms::ids())
        files.append(id + ".content.json");
    QCOMPARE(files, QDir(VELTA_LOOPS_DIR "/installed").entryList(QDir::Files, QDir::Name));
    for (const QString& name : QDir(VELTA_SERVED_DIR "/content").entryList(QDir::Files)) {
        const QString id = QString(name).remove(".content.json");
        QVERIFY2(!ShippedRhythms::contains(id), qPrintable(id));
    }
}

void InstalledRhythmsTest::everyRhythmHasItsStyleTempoAndGroove()
{
    for (const Rhythm& rhythm : content().library.rhythms()) {
        const auto& styles = content().library.styles();
        QVERIFY2(std::ranges::find(styles, rhythm.styleId, &MusicalStyle::id) != styles.end(),
                 qPrintable(rhythm.id));
        QVERIFY(rhythm.displayName != rhythm.id);
        QVERIFY(rhythm.bpmMin < rhythm.referenceBpm && rhythm.referenceBpm < rhythm.bpmMax);
        const GrooveTemplate* groove = content().library.grooveForRhythm(rhythm.id);
        QVERIFY2(groove && groove->offsets.size() >= 2, qPrintable(rhythm.id));
    }
}

void InstalledRhythmsTest::everyRhythmHasAWholeBand()
{
    for (const Rhythm& rhythm : content().library.rhythms()) {
        const QList<LoopLayer> layers = content().library.layersForRhythm(rhythm.id);
        QVERIFY(layers.size() >= 4);
        const auto pitched = std::ranges::count(layers, true, &LoopLayer::pitched);
        QVERIFY2(pitched >= 3, qPrintable(rhythm.id));
        if (!kDrumless.contains(rhythm.id))
            QVERIFY2(pitched < layers.size(), qPrintable(rhythm.id));
        for (const LoopLayer& layer : layers) {
            QVERIFY2(content().instruments.find(layer.instrumentId), qPrintable(layer.id));
            QVERIFY(layer.label != layer.id);
        }
    }
}

void InstalledRhythmsTest::everyLayerHasAllSections()
{
    for (const Rhythm& rhythm : content().library.rhythms()) {
        for (const LoopLayer& layer : content().library.layersForRhythm(rhythm.id)) {
            const auto count = [&](Section section) {
                return content().library.variantsFor(layer.id, section).size();
            };
            QVERIFY2(count(Section::Normal) >= 4, qPrintable(layer.id));
            QVERIFY2(count(Section::Intro) >= 2, qPrintable(layer.id));
            QVERIFY2(count(Section::Intermedio) >= 2, qPrintable(layer.id));
            QVERIFY2(count(Section::Final) >= 2, qPrintable(layer.id));
        }
    }
}

void InstalledRhythmsTest::normalVariantsRiseInDensity()
{
    for (const Rhythm& rhythm : content().library.rhythms()) {
        for (const LoopLayer& layer : content().library.layersForRhythm(rhythm.id)) {
            double former = 0.0;
            qint32 number = 0;
            for (const LoopVariant& variant :
                 content().library.variantsFor(layer.id, Section::Normal)) {
                QCOMPARE(variant.variantIndex, ++number);
                QVERIFY2(notesPerBar(variant) > former, qPrintable(layer.id));
                former = notesPerBar(variant);
            }
        }
    }
}

void InstalledRhythmsTest::notesStayInsideTheirLoop()
{
    for (const Loop& loop : allLoops()) {
        QVERIFY2(!loop.variant.notes.isEmpty(), qPrintable(loop.name()));
        for (const NoteEvent& note : loop.variant.notes) {
            QVERIFY2(note.startBeat >= 0.0 && note.startBeat < loop.beats(),
                     qPrintable(loop.name()));
            QVERIFY2(note.durationBeats > 0.0 &&
                         note.startBeat + note.durationBeats <= loop.beats() + 0.1,
                     qPrintable(loop.name()));
        }
    }
}

void InstalledRhythmsTest::noPitchIsStruckTwiceAtOnceOrWhileItRings()
{
    for (const Loop& loop : allLoops()) {
        QMap<int, double> ringsUntil;
        QList<NoteEvent> notes = loop.variant.notes;
        std::ranges::stable_sort(notes, {}, &NoteEvent::startBeat);
        for (const NoteEvent& note : notes) {
            QVERIFY2(note.startBeat >= ringsUntil.value(note.pitch, 0.0) - 1e-9,
                     qPrintable(loop.name()));
            ringsUntil[note.pitch] = note.startBeat + note.durationBeats;
        }
    }
}

void InstalledRhythmsTest::noTwoVariantsOfALayerAreEqual()
{
    QMap<QString, QList<QList<NoteEvent>>> seen;
    for (const Loop& loop : allLoops()) {
        QVERIFY2(!seen[loop.layer.id].contains(loop.variant.notes), qPrintable(loop.name()));
        seen[loop.layer.id].append(loop.variant.notes);
    }
}

void InstalledRhythmsTest::pitchedLayersKeepToTheWhiteKeys()
{
    for (const Loop& loop : allLoops()) {
        for (const NoteEvent& note : loop.variant.notes)
            QVERIFY2(!loop.layer.pitched || isWhiteKey(note.pitch) ||
                         kChromatic.contains(loop.layer.id) || isNoise(loop.layer, note),
                     qPrintable(loop.name()));
    }
}

void InstalledRhythmsTest::pitchedLayersFitTheirInstrumentInEveryKey()
{
    for (const Loop& loop : allLoops()) {
        if (!loop.layer.pitched)
            continue;
        const Instrument* instrument = content().instruments.find(loop.layer.instrumentId);
        const int program = content().instruments.effectiveGmProgram(*instrument);
        QVERIFY2(kCompass.contains(program), qPrintable(loop.layer.instrumentId));
        const PitchSpan compass =
            kRecordedCompass.value(loop.layer.instrumentId, kCompass.value(program));
        for (const NoteEvent& note : loop.variant.notes) {
            const PitchSpan reach = reachOf(note.pitch);
            QVERIFY2(isNoise(loop.layer, note) ||
                         (reach.lowest >= compass.lowest && reach.highest <= compass.highest),
                     qPrintable(loop.name() + QString(": %1").arg(note.pitch)));
        }
    }
}

void InstalledRhythmsTest::bassesLeapOverNoOctaveAndEndLow()
{
    for (const Loop& loop : allLoops()) {
        if (content().instruments.find(loop.layer.instrumentId)->category !=
            InstrumentCategory::Bass)
            continue;
        // Root, sixth and fifth are what makes a milonga.
        const int most = loop.layer.id == "folklore_milonga_bajo" ? kOctave + 1 : kOctave;
        QList<NoteEvent> notes = loop.variant.notes;
        std::ranges::stable_sort(notes, {}, &NoteEvent::startBeat);
        for (qsizetype i = 0; i < notes.size(); ++i) {
            const int next = notes[(i + 1) % notes.size()].pitch;
            QVERIFY2(widestLeap(notes[i].pitch, next) <= most, qPrintable(loop.name()));
        }
        QVERIFY2(notes.last().pitch <= 38, qPrintable(loop.name()));
    }
}

void InstalledRhythmsTest::percussionUsesTheDrumKit()
{
    for (const Loop& loop : allLoops()) {
        if (loop.layer.pitched)
            continue;
        QCOMPARE(content().instruments.find(loop.layer.instrumentId)->category,
                 InstrumentCategory::Percussion);
        for (const NoteEvent& note : loop.variant.notes)
            QVERIFY2(note.pitch >= kDrumKeys.lowest && note.pitch <= kDrumKeys.highest,
                     qPrintable(loop.name()));
    }
}

void InstalledRhythmsTest::velocitiesBreathe()
{
    for (const Loop& loop : allLoops()) {
        const auto [softest, loudest] =
            std::ranges::minmax(loop.variant.notes, {}, &NoteEvent::velocity);
        QVERIFY2(softest.velocity >= 20 && loudest.velocity <= 120, qPrintable(loop.name()));
        if (notesPerBar(loop.variant) >= 3)
            QVERIFY2(loudest.velocity - softest.velocity >= 5, qPrintable(loop.name()));
    }
}

void InstalledRhythmsTest::grooveOffsetsLieInsideTheBar()
{
    for (const Rhythm& rhythm : content().library.rhythms()) {
        for (const GrooveOffset& offset : content().library.grooveForRhythm(rhythm.id)->offsets) {
            QVERIFY2(offset.position >= 0.0 && offset.position < rhythm.timeSignature.beatsPerBar(),
                     qPrintable(rhythm.id));
            QVERIFY2(std::abs(offset.timingOffsetBeats) <= 0.2, qPrintable(rhythm.id));
            QVERIFY2(std::abs(offset.velocityOffset) <= 30, qPrintable(rhythm.id));
        }
    }
}

void InstalledRhythmsTest::onlyBlueNotesLieOutsideTheScale()
{
    // Below the strings lie the strokes on the body of a recorded instrument.
    constexpr int kLowestString = 28;
    const KeySignature cMajor;
    QSet<QString> chromatic;
    for (const Loop& loop : allLoops()) {
        for (const NoteEvent& note : loop.variant.notes) {
            if (loop.layer.pitched && note.pitch >= kLowestString &&
                cMajor.degreeOfPitchClass(note.pitch) == 0)
                chromatic.insert(loop.layer.rhythmId);
        }
    }
    QCOMPARE(chromatic, QSet<QString>{"popular_blues"});
}

void InstalledRhythmsTest::everyLoopStaysInEveryKeyOnEveryDegree()
{
    const KeySignature cMajor;
    QSet<int> written;
    for (const Loop& loop : allLoops()) {
        for (const NoteEvent& note : loop.variant.notes) {
            if (loop.layer.pitched && cMajor.degreeOfPitchClass(note.pitch) != 0)
                written.insert(note.pitch);
        }
    }
    QVERIFY(written.size() > 10);
    for (int mode = 0; mode < 4; ++mode) {
        for (int root = 0; root < 12; ++root) {
            const KeySignature key{.rootPitchClass = root, .mode = static_cast<KeyMode>(mode)};
            for (int degree = 1; degree <= 7; ++degree) {
                for (const int pitch : written) {
                    const int heard = ChordMapper::mapPitch(pitch, key, degree);
                    QVERIFY(key.degreeOfPitchClass(heard) != 0);
                }
            }
        }
    }
}

VELTA_GUILESS_TEST(InstalledRhythmsTest)

} // namespace InstalledRhythmsTests

#include "InstalledRhythmsTest.moc"
