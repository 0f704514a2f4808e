#include "content/ContentDownloadManager.h"
#include "content/InstalledContentRegistry.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/StaticServer.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QComboBox>
#include <QJsonArray>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace MainWindowContentTests {

using namespace ProjectBuilder;

namespace {

constexpr int kInstallMs = 10000;

/// A rhythm of one layer on a recorded charango, with four notes a bar.
QByteArray packageOf(const QString& id)
{
    QJsonArray notes;
    for (int beat = 0; beat < 4; ++beat)
        notes.append(QJsonObject{
            {"pitch", 60}, {"startBeat", beat}, {"durationBeats", 0.5}, {"velocity", 90}});
    const QJsonObject charango{{"id", "charango"},
                               {"name", "Charango"},
                               {"category", "Folklorico"},
                               {"source", "CustomRecordedBank"},
                               {"soundfontBankPath", "instruments/charango.sf2"}};
    const QJsonObject layer{{"id", id + "_charango"},
                            {"rhythmId", id},
                            {"label", "Charango"},
                            {"instrumentId", "charango"}};
    const QJsonObject loop{{"layerId", id + "_charango"},
                           {"section", "Normal"},
                           {"variantIndex", 1},
                           {"durationBars", 1},
                           {"notes", notes}};
    return QJsonDocument(
               QJsonObject{
                   {"musicalStyle", QJsonObject{{"id", "andes"}, {"displayName", "Andes"}}},
                   {"rhythm",
                    QJsonObject{{"id", id}, {"displayName", id.toUpper()}, {"styleId", "andes"}}},
                   {"instruments", QJsonArray{charango}},
                   {"loopLayers", QJsonArray{layer}},
                   {"loopVariants", QJsonArray{loop}}})
        .toJson();
}

QList<int> pitchesOn(int channel)
{
    QList<int> pitches;
    for (const QString& call : FluidSpy::calls({"noteon"})) {
        const QStringList words = call.split(' ');
        if (words[1].toInt() == channel)
            pitches.append(words[2].toInt());
    }
    return pitches;
}

} // namespace

/// Rhythms on their way from a classroom's server into a song, and out again.
class MainWindowContentTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aSharedBankGoesWithTheLastRhythm();
    void aSongKeepsTheLoopsOfARhythmThatWent();
    void aRhythmThatGoesDuringPlaybackFallsSilent();
    void aRhythmThatComesDuringPlaybackIsHeard();
    void anInstalledRhythmIsThereAtTheNextStart();
    void aChangeOfKeyMovesThePitches();
    void theWindowMayGoDuringAnInstall();
    void aBankThatComesAndGoesIsSelectedAtOnce();
    void theViewsHearOfARhythm();
    void whatIsRefusedIsNamedOnce();
    void aMissingBankIsStillToldBesideIt();

private:
    QString soundfont() const
    {
        return stage_->home().filePath("resources/soundfonts/instruments/charango.sf2");
    }

    ContentDownloadManager& downloads()
    {
        return *stage_->window().findChild<ContentDownloadManager*>();
    }

    bool install(const QString& id)
    {
        QSignalSpy installed(&downloads(), &ContentDownloadManager::rhythmInstalled);
        downloads().installRhythm(id);
        return installed.count() > 0 || installed.wait(kInstallMs);
    }

    void place(const QString& id, double beat)
    {
        stage_->window().placeLoop(id, id + "_charango", 2, 1, beat);
    }

    std::unique_ptr<QTemporaryDir> served_;
    std::unique_ptr<StaticServer> server_;
    std::unique_ptr<WindowStage> stage_;
};

void MainWindowContentTest::init()
{
    FluidSpy::reset();
    served_ = std::make_unique<QTemporaryDir>();
    for (const char* id : {"saya", "bailecito"}) {
        writeBytes(served_->filePath(QString("content/%1.content.json").arg(id)), packageOf(id));
        writeBytes(served_->filePath(QString("grooves/%1.groove.json").arg(id)),
                   QByteArray("{\"rhythmId\": \"") + id + "\"}");
    }
    writeBytes(served_->filePath("instruments/charango.sf2"), TinyBank::bytes({{0, 0, 80}}));
    server_ = std::make_unique<StaticServer>(served_->path());
    QCOMPARE(server_->problem(), QString());
    qputenv("VELTA_CONTENT_URL", server_->url().toEncoded());
    stage_ = std::make_unique<WindowStage>();
}

void MainWindowContentTest::cleanup()
{
    stage_.reset();
    server_.reset();
    served_.reset();
    qunsetenv("VELTA_CONTENT_URL");
}

void MainWindowContentTest::aSharedBankGoesWithTheLastRhythm()
{
    QVERIFY(install("saya"));
    QVERIFY(install("bailecito"));
    QVERIFY(QFile::exists(soundfont()));
    QVERIFY(downloads().uninstallRhythm("saya"));
    QVERIFY(QFile::exists(soundfont()));
    QVERIFY(downloads().uninstallRhythm("bailecito"));
    QVERIFY(!QFile::exists(soundfont()));
    QVERIFY(stage_->window().loopLibrary()->rhythms().isEmpty());
}

void MainWindowContentTest::aSongKeepsTheLoopsOfARhythmThatWent()
{
    QVERIFY(install("saya"));
    QVERIFY(install("bailecito"));
    place("saya", 0.0);
    place("bailecito", 4.0);
    const QJsonObject song = stage_->song().toJson();
    QVERIFY(downloads().uninstallRhythm("saya"));
    QCOMPARE(stage_->song().toJson(), song);
    QVERIFY(stage_->saveWork("andes", stage_->song()));
    stage_->window().openProject("andes");
    QCOMPARE(stage_->song().tracks.size(), 3);
    const auto notesOf = [this](int track) {
        return PlaybackEngine::renderTrackNotes(stage_->song(), stage_->song().tracks.at(track),
                                                stage_->window().loopLibrary())
            .size();
    };
    QCOMPARE(notesOf(1), 0);
    QCOMPARE(notesOf(2), 4);
}

void MainWindowContentTest::aRhythmThatGoesDuringPlaybackFallsSilent()
{
    QVERIFY(install("saya"));
    place("saya", 0.0);
    stage_->song().tracks[1].loopBlocks[0].durationBeats = 400.0;
    stage_->song().bpm = 240;
    FluidSpy::reset();
    stage_->engine().play();
    QTRY_VERIFY(pitchesOn(1).size() >= 2);
    FluidSpy::reset();
    QVERIFY(downloads().uninstallRhythm("saya"));
    QVERIFY(!FluidSpy::calls({"all_notes_off"}).isEmpty());
    FluidSpy::reset();
    QTest::qWait(600);
    QVERIFY(stage_->engine().isPlaying());
    QCOMPARE(pitchesOn(1), QList<int>());
}

void MainWindowContentTest::aRhythmThatComesDuringPlaybackIsHeard()
{
    LoopBlock block = loop("saya", "saya_charango", 0.0, 400.0);
    stage_->song().tracks = {loopTrack({block})};
    stage_->song().tracks[0].instrumentId = "charango";
    stage_->song().bpm = 240;
    stage_->engine().play();
    QVERIFY(install("saya"));
    QTRY_VERIFY(!pitchesOn(0).isEmpty());
}

void MainWindowContentTest::anInstalledRhythmIsThereAtTheNextStart()
{
    QVERIFY(install("saya"));
    stage_->destroyWindow();
    const auto* registry = stage_->window().findChild<InstalledContentRegistry*>();
    QVERIFY(registry->isRhythmInstalled("saya"));
    QVERIFY(stage_->window().loopLibrary()->findRhythm("saya"));
    const Instrument* charango = stage_->window().instruments()->find("charango");
    QVERIFY(charango && stage_->window().instruments()->customBankAvailable(*charango));
    const QList<QComboBox*> combos = stage_->window().findChildren<QComboBox*>();
    QVERIFY(std::ranges::any_of(
        combos, [](const QComboBox* combo) { return combo->findText("SAYA (4/4)") >= 0; }));
}

void MainWindowContentTest::aChangeOfKeyMovesThePitches()
{
    QVERIFY(install("saya"));
    place("saya", 0.0);
    const auto pitches = [this] {
        QList<int> found;
        for (const NoteEvent& note : PlaybackEngine::renderTrackNotes(
                 stage_->song(), stage_->song().tracks.at(1), stage_->window().loopLibrary()))
            found.append(note.pitch);
        return found;
    };
    QCOMPARE(pitches(), (QList<int>{60, 60, 60, 60}));
    emit stage_->ribbon().keySignatureEdited(2, 0);
    QCOMPARE(pitches(), (QList<int>{62, 62, 62, 62}));
}

void MainWindowContentTest::theWindowMayGoDuringAnInstall()
{
    stage_->window();
    downloads().installRhythm("saya");
    QVERIFY(downloads().isBusy());
    stage_->destroyWindow();
    QTest::qWait(100);
    QVERIFY(!QFile::exists(soundfont()));
    QVERIFY(install("saya"));
}

void MainWindowContentTest::aBankThatComesAndGoesIsSelectedAtOnce()
{
    stage_->song().tracks = {loopTrack({loop("saya", "saya_charango", 0.0, 4.0)})};
    stage_->song().tracks[0].instrumentId = "charango";
    const auto bankOfChannel = [] {
        QString font;
        for (const QString& call : FluidSpy::calls({"program_select"})) {
            const QStringList words = call.split(' ');
            if (words[1] == "0")
                font = words[2];
        }
        return font;
    };
    QVERIFY(install("saya"));
    const QString recorded = bankOfChannel();
    QVERIFY(!recorded.isEmpty());
    FluidSpy::reset();
    QVERIFY(downloads().uninstallRhythm("saya"));
    QVERIFY(!bankOfChannel().isEmpty());
    QVERIFY(bankOfChannel() != recorded);
}

void MainWindowContentTest::theViewsHearOfARhythm()
{
    const QSignalSpy changed(&stage_->song(), &Project::changed);
    QVERIFY(install("saya"));
    QCOMPARE(changed.count(), 1);
    QVERIFY(downloads().uninstallRhythm("saya"));
    QCOMPARE(changed.count(), 2);
}

void MainWindowContentTest::whatIsRefusedIsNamedOnce()
{
    const QByteArray refused =
        R"({"rhythm": {"id": "x"}, "instruments": [)" + QByteArray("{},").repeated(64) + "{}]}";
    writeBytes(stage_->home().filePath("resources/loops/installed/pesado.content.json"), refused);
    writeBytes(stage_->home().filePath("resources/loops/installed/roto.content.json"), "{");
    QVERIFY(stage_->showWindow());
    QTRY_COMPARE(stage_->message(), "No pude usar estos ritmos: pesado.");
    const auto* hint =
        stage_->window().statusBar()->findChild<QLabel*>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(hint && !hint->isVisible());
    stage_->window().statusBar()->clearMessage();
    QVERIFY(install("saya"));
    QCOMPARE(stage_->message(), "");
    writeBytes(stage_->home().filePath("resources/loops/installed/otro.content.json"), refused);
    QVERIFY(downloads().uninstallRhythm("saya"));
    QCOMPARE(stage_->message(), "No pude usar estos ritmos: otro.");
    QVERIFY(!stage_->window().loopLibrary()->findRhythm("x"));
}

void MainWindowContentTest::aMissingBankIsStillToldBesideIt()
{
    QVERIFY(QFile::remove(stage_->home().filePath("resources/soundfonts/velta_bank_gm.sf2")));
    writeBytes(stage_->home().filePath("resources/loops/installed/x.content.json"),
               R"({"rhythm": {"id": "Folklore_Zamba"}})");
    stage_->window();
    QTRY_COMPARE(stage_->message(), "No pude usar estos ritmos: x.");
    QVERIFY(Widgets::withText<QLabel>(stage_->window(), "Falta el banco de sonidos"));
}

VELTA_TEST(MainWindowContentTest)

} // namespace MainWindowContentTests

#include "MainWindowContentTest.moc"
