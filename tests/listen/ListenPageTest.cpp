#include "listen/ListenPage.h"

#include "support/TestProgram.h"

#include <QTest>

namespace ListenPageTests {

class ListenPageTest : public QObject {
    Q_OBJECT

private slots:
    void everyLoopIsHeardAndSeen();
    void aSongIsHeardAndTakenHome();
    void levelsStandBesideTheirTargets();
    void namesAreShownAsTheyAre();
    void anEmptyLibraryIsAPageToo();
};

void ListenPageTest::everyLoopIsHeardAndSeen()
{
    const RenderedLoop loop{.title = "Normal 2",
                            .sound = "zamba/Normal_2.wav",
                            .picture = "zamba/Normal_2.png",
                            .seconds = 12.34,
                            .loudness = {.lufs = -21.06, .peakDb = -6.0},
                            .layers = {{.label = "Bombo",
                                        .sound = "zamba/Normal_2_1.wav",
                                        .loudness = {.lufs = -25.0, .peakDb = -9.0}}}};
    const QString page =
        listenPage({{.title = "Zamba (6/8)", .groove = "2: +14 ms", .loops = {loop}}});
    for (const char* part : {"<h2>Zamba (6/8)</h2>", "<p>Groove: 2: +14 ms</p>",
                             "<h3>Normal 2</h3>", "src=\"zamba/Normal_2.wav\"",
                             "src=\"zamba/Normal_2.png\"", "12.3 s · -21.1 LUFS · pico -6.0 dB"})
        QVERIFY2(page.contains(QString::fromUtf8(part)), part);
}

void ListenPageTest::aSongIsHeardAndTakenHome()
{
    const RenderedSong song{.wav = "zamba/cancion.wav",
                            .mp3 = "zamba/cancion.mp3",
                            .projectFolder = "zamba/cancion",
                            .picture = "zamba/cancion.png",
                            .seconds = 30.0,
                            .loudness = {.lufs = -20.0, .peakDb = -5.0}};
    const QString page = listenPage({{.title = "Zamba", .song = song, .loops = {}}});
    for (const char* part :
         {"<h3>Canción</h3>", "href=\"zamba/cancion.wav\"", "href=\"zamba/cancion.mp3\"",
          "href=\"zamba/cancion\">obra de Velta", "src=\"zamba/cancion.mp3\"",
          "src=\"zamba/cancion.png\"", "30.0 s · -20.0 LUFS · pico -5.0 dB"})
        QVERIFY2(page.contains(QString::fromUtf8(part)), part);
    QVERIFY(!listenPage({{.title = "Zamba", .loops = {}}}).contains("Canción"));
}

void ListenPageTest::levelsStandBesideTheirTargets()
{
    const LevelInMix violin{.layer = "Violín",
                            .role = "respuesta",
                            .aboveBassDb = -7.04,
                            .targetDb = -2.5,
                            .off = true};
    const LevelInMix drums{
        .layer = "Bombo", .role = "tambor", .aboveBassDb = 0.5, .targetDb = 1.0, .off = false};
    const LevelInMix bass{
        .layer = "Bajo", .role = "bajo", .aboveBassDb = -0.01, .targetDb = 0.0, .off = false};
    const QString page =
        listenPage({{.title = "Zamba", .loops = {}, .levels = {violin, drums, bass}}});
    for (const char* part :
         {"<tr "
          "class=\"off\"><td>Violín</td><td>respuesta</td><td>-7.0</td><td>-2.5</td><td>-4.5</td>",
          "<tr><td>Bombo</td><td>tambor</td><td>+0.5</td><td>+1.0</td><td>-0.5</td>",
          "<tr><td>Bajo</td><td>bajo</td><td>0.0</td><td>0.0</td><td>0.0</td>"})
        QVERIFY2(page.contains(QString::fromUtf8(part)), part);
    QVERIFY(!listenPage({{.title = "Zamba", .loops = {}}}).contains("<table>"));
}

void ListenPageTest::namesAreShownAsTheyAre()
{
    const QString page = listenPage({{.title = "100%1 <rock> & \"roll\"", .loops = {}}});
    QVERIFY(page.contains("<h2>100%1 &lt;rock&gt; &amp; &quot;roll&quot;</h2>"));
}

void ListenPageTest::anEmptyLibraryIsAPageToo()
{
    const QString page = listenPage({});
    QVERIFY(page.startsWith("<!doctype html>"));
    QVERIFY(page.endsWith("</body></html>\n"));
    QVERIFY(!page.contains("<audio"));
}

VELTA_GUILESS_TEST(ListenPageTest)

} // namespace ListenPageTests

#include "ListenPageTest.moc"
