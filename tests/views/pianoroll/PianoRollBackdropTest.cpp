#include "views/pianoroll/PianoRollBackdrop.h"

#include "model/Project.h"
#include "shell/theme/CanvasColors.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/Painted.h"

#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace PianoRollBackdropTests {

using namespace ProjectBuilder;

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 416;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// A view of 13 rows of 32 pixels from pitch 72 on, from the start of the song.
QTransform usualView(double left = 0.0, double top = 384.0)
{
    return QTransform(1.0, 0.0, 0.0, 2.0, -left, -2.0 * top);
}

struct Look {
    QTransform view = usualView();
    GridSubdivisionLevel level = GridSubdivisionLevel::Division;
    /// What is painted of the picture; all of it if null.
    QRect part = {};
    qreal pixelRatio = 1.0;
    /// How far the widget stands in its window, to the right and down.
    int inset = 0;
};

/// What the backdrop paints over red, which no part of it leaves.
QImage picture(const Project& song, const Look& look = {})
{
    QImage image((QSizeF(kWidth, kHeight) * look.pixelRatio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(look.pixelRatio);
    image.fill(Qt::red);
    QPainter painter(&image);
    painter.setViewport(look.inset, look.inset, kWidth, kHeight);
    painter.setWindow(0, 0, kWidth, kHeight);
    const QRect part = look.part.isNull() ? QRect(0, 0, kWidth, kHeight) : look.part;
    painter.setClipRect(part);
    painter.setWorldTransform(look.view);
    PianoRollBackdrop::paint(painter, look.view.inverted().mapRect(QRectF(part)), song, look.level);
    return image;
}

/// The middle of a row of the usual view, where no line runs.
QPoint at(double beat, int pitch)
{
    return {qRound(beat * 64.0), (72 - pitch) * 32 + 16};
}

/// Pixels of an area that are not of a color.
int strangers(const QImage& image, const QRect& area, const QColor& color)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            count += isNear(image.pixelColor(x, y), color) ? 0 : 1;
    }
    return count;
}

} // namespace

class PianoRollBackdropTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void rowsOfTheKeyAreBare_data();
    void rowsOfTheKeyAreBare();
    void rowsOutsideTheKeyAreTintedAndHatched_data();
    void rowsOutsideTheKeyAreTintedAndHatched();
    void scaleFollowsTheKey();
    void hatchingRunsUpToTheRight();
    void hatchingComesEveryTenPixels_data();
    void hatchingComesEveryTenPixels();
    void hatchingIsEvenOnEveryScreen_data();
    void hatchingIsEvenOnEveryScreen();
    void hatchingStaysInItsRow_data();
    void hatchingStaysInItsRow();
    void hatchingTravelsWithTheSong_data();
    void hatchingTravelsWithTheSong();

    void chordLightsItsRows_data();
    void chordLightsItsRows();
    void chordHasTheColorOfItsDegree_data();
    void chordHasTheColorOfItsDegree();
    void chordLightsItsTimeOnly();
    void chordsOfNoDegreeLightNothing();
    void laterBarsLightWhereTheyStand();

    void rowsAreSeparatedByHairlines();
    void linesOfTimeFollowTheLevel_data();
    void linesOfTimeFollowTheLevel();
    void linesStayThinUnderZoom();

    void stretchesFitTogether_data();
    void stretchesFitTogether();
    void stretchesFitTogetherBetweenPixels();
    void nothingIsPaintedOutsideTheStretch();
    void longSongsPaintTheSame();
    void damagedSongsArePainted();

private:
    UserHome home_;
    std::unique_ptr<Project> song_;
};

void PianoRollBackdropTest::init()
{
    ThemeManager::instance()->setDark(false);
    song_ = project();
}

// ---- Scale ---------------------------------------------------------------------------------

void PianoRollBackdropTest::rowsOfTheKeyAreBare_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QColor>("ground");

    QTest::newRow("light") << false << QColor(0xfa, 0xfb, 0xf7);
    QTest::newRow("dark") << true << QColor(0x15, 0x1a, 0x0f);
}

void PianoRollBackdropTest::rowsOfTheKeyAreBare()
{
    QFETCH(bool, dark);
    QFETCH(QColor, ground);
    ThemeManager::instance()->setDark(dark);
    const QImage image = picture(*song_);
    for (const int pitch : {60, 62, 64, 65, 67, 69, 71, 72}) {
        const QRect inside(at(0.0, pitch) + QPoint(3, -14), QSize(26, 28));
        QCOMPARE(strangers(image, inside, ground), 0);
    }
}

void PianoRollBackdropTest::rowsOutsideTheKeyAreTintedAndHatched_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QColor>("tinted");
    QTest::addColumn<QColor>("hatched");

    const QColor light = over(QColor(0, 0, 0, 14), QColor(0xfa, 0xfb, 0xf7));
    QTest::newRow("light") << false << light << over(QColor(0, 0, 0, 84), light);
    const QColor dark = over(QColor(0, 0, 0, 70), QColor(0x15, 0x1a, 0x0f));
    QTest::newRow("dark") << true << dark << over(QColor(255, 255, 255, 82), dark);
}

void PianoRollBackdropTest::rowsOutsideTheKeyAreTintedAndHatched()
{
    QFETCH(bool, dark);
    QFETCH(QColor, tinted);
    QFETCH(QColor, hatched);
    ThemeManager::instance()->setDark(dark);
    const QImage image = picture(*song_);
    for (const int pitch : {61, 63, 66, 68, 70}) {
        const QRect inside(at(0.0, pitch) + QPoint(4, -14), QSize(20, 28));
        // One pixel of ten is one of a line.
        QCOMPARE(strangers(image, inside, tinted), 28 * 2);
        QCOMPARE(strangers(image, inside, hatched), 28 * 18);
    }
}

void PianoRollBackdropTest::scaleFollowsTheKey()
{
    song_->keySignature = {.rootPitchClass = 0, .mode = KeyMode::Minor};
    const QImage image = picture(*song_);
    const QColor ground(0xfa, 0xfb, 0xf7);
    for (int pitch = 60; pitch <= 72; ++pitch) {
        const QRect inside(at(0.0, pitch) + QPoint(4, -14), QSize(20, 28));
        const bool inKey = QList{0, 2, 3, 5, 7, 8, 10}.contains(pitch % 12);
        QCOMPARE(strangers(image, inside, ground) == 0, inKey);
    }
}

void PianoRollBackdropTest::hatchingRunsUpToTheRight()
{
    const QImage image = picture(*song_);
    const QColor tinted = over(QColor(0, 0, 0, 14), QColor(0xfa, 0xfb, 0xf7));
    const QRect row(2, at(0.0, 66).y() - 14, 26, 27);
    for (int y = row.top() + 1; y <= row.bottom(); ++y) {
        for (int x = row.left(); x < row.right(); ++x) {
            const bool line = !isNear(image.pixelColor(x, y), tinted);
            QCOMPARE(!isNear(image.pixelColor(x + 1, y - 1), tinted), line);
        }
    }
}

void PianoRollBackdropTest::hatchingComesEveryTenPixels_data()
{
    QTest::addColumn<double>("horizontal");
    QTest::addColumn<double>("vertical");

    QTest::newRow("as it is") << 1.0 << 2.0;
    QTest::newRow("zoomed in") << 6.0 << 2.0;
    QTest::newRow("zoomed out") << 0.2 << 2.0;
    QTest::newRow("tall rows") << 1.0 << 5.0;
    QTest::newRow("low rows") << 1.0 << 0.5;
}

void PianoRollBackdropTest::hatchingComesEveryTenPixels()
{
    QFETCH(double, horizontal);
    QFETCH(double, vertical);
    song_->timeSignature = {1000, 1, false};
    Look look;
    look.view = QTransform(horizontal, 0.0, 0.0, vertical, 0.0, -480.0 * vertical);
    look.level = GridSubdivisionLevel::Pulse;
    const QImage image = picture(*song_, look);
    // The row of 66 is at the top of this view. Lines of time are wider apart, or few.
    const QColor tinted = over(QColor(0, 0, 0, 14), QColor(0xfa, 0xfb, 0xf7));
    const int y = qRound(8.0 * vertical);
    QList<int> ways(10);
    for (int x = 3; x < 603; ++x)
        ways[x % 10] += isNear(image.pixelColor(x, y), tinted) ? 0 : 1;
    QCOMPARE(std::ranges::count(ways, 60), 1);
}

void PianoRollBackdropTest::hatchingIsEvenOnEveryScreen_data()
{
    QTest::addColumn<double>("pixelRatio");
    QTest::addColumn<int>("period");

    QTest::newRow("125 %") << 1.25 << 13;
    QTest::newRow("150 %") << 1.5 << 15;
    QTest::newRow("175 %") << 1.75 << 18;
    QTest::newRow("200 %") << 2.0 << 20;
}

void PianoRollBackdropTest::hatchingIsEvenOnEveryScreen()
{
    QFETCH(double, pixelRatio);
    QFETCH(int, period);
    song_->timeSignature = {1000, 1, false};
    Look look;
    look.view = QTransform(6.0, 0.0, 0.0, 2.0, 0.0, -960.0);
    look.level = GridSubdivisionLevel::Pulse;
    look.pixelRatio = pixelRatio;
    const QImage image = picture(*song_, look);
    const QColor tinted = over(QColor(0, 0, 0, 14), QColor(0xfa, 0xfb, 0xf7));
    // Left of the first beat, over the height of the row of 66.
    for (int y = 2; y < qFloor(32.0 * pixelRatio); ++y) {
        QList<int> lines;
        for (int x = 3; x < qFloor(380.0 * pixelRatio); ++x) {
            if (!isNear(image.pixelColor(x, y), tinted))
                lines.append(x);
        }
        QVERIFY(lines.size() > 20);
        for (int i = 1; i < lines.size(); ++i)
            QCOMPARE(lines[i] - lines[i - 1], period);
    }
}

void PianoRollBackdropTest::hatchingStaysInItsRow_data()
{
    QTest::addColumn<double>("vertical");

    QTest::newRow("whole pixels") << 2.0;
    QTest::newRow("parts of pixels") << 2.0437;
}

void PianoRollBackdropTest::hatchingStaysInItsRow()
{
    QFETCH(double, vertical);
    Look look;
    look.view = QTransform(1.0, 0.0, 0.0, vertical, 0.0, std::round(-384.0 * vertical));
    const QImage image = picture(*song_, look);
    const QColor ground(0xfa, 0xfb, 0xf7);
    for (const int pitch : {62, 64, 65, 67, 69, 71, 72}) {
        const double top = look.view.map(QPointF(0.0, (96 - pitch) * 16.0)).y();
        const QRect inside(3, qRound(top) + 1, 28, qRound(16.0 * vertical) - 2);
        QCOMPARE(strangers(image, inside, ground), 0);
    }
}

void PianoRollBackdropTest::hatchingTravelsWithTheSong_data()
{
    QTest::addColumn<QPoint>("scroll");
    QTest::addColumn<double>("pixelRatio");

    QTest::newRow("to the side by a pixel") << QPoint(1, 0) << 1.0;
    QTest::newRow("to the side") << QPoint(37, 0) << 1.0;
    QTest::newRow("down by a pixel") << QPoint(0, 1) << 1.0;
    QTest::newRow("down") << QPoint(0, 53) << 1.0;
    QTest::newRow("both") << QPoint(113, 17) << 1.0;
    QTest::newRow("on a fine screen") << QPoint(37, 53) << 2.0;
    QTest::newRow("on a screen of one and a half") << QPoint(38, 54) << 1.5;
}

void PianoRollBackdropTest::hatchingTravelsWithTheSong()
{
    QFETCH(QPoint, scroll);
    QFETCH(double, pixelRatio);
    Look look;
    look.pixelRatio = pixelRatio;
    // A height of rows in parts of pixels, as windows have it.
    look.view = QTransform(1.0, 0.0, 0.0, 2.03, 0.0, -780.0);
    const QImage before = picture(*song_, look);
    look.view = QTransform(1.0, 0.0, 0.0, 2.03, -scroll.x(), -780.0 - scroll.y());
    const QImage after = picture(*song_, look);
    const QPoint moved = (QPointF(scroll) * pixelRatio).toPoint();
    const QSize common = before.size() - QSize(moved.x(), moved.y());
    QCOMPARE(after.copy(QRect(QPoint(), common)), before.copy(QRect(moved, common)));
}

// ---- Chords --------------------------------------------------------------------------------

void PianoRollBackdropTest::chordLightsItsRows_data()
{
    QTest::addColumn<int>("degree");
    QTest::addColumn<int>("extension");
    QTest::addColumn<QList<int>>("pitchClasses");

    QTest::newRow("I") << 1 << 0 << QList{0, 4, 7};
    QTest::newRow("IV") << 4 << 0 << QList{5, 9, 0};
    QTest::newRow("V7") << 5 << 1 << QList{7, 11, 2, 5};
    QTest::newRow("V9") << 5 << 2 << QList{7, 11, 2, 5, 9};
    QTest::newRow("an unknown extension is a triad") << 1 << 9 << QList{0, 4, 7};
}

void PianoRollBackdropTest::chordLightsItsRows()
{
    QFETCH(int, degree);
    QFETCH(int, extension);
    QFETCH(QList<int>, pitchClasses);
    const QImage bare = picture(*song_);
    song_->harmonyTrack = harmony({0});
    song_->harmonyTrack.blocks = {
        {.barIndex = 0,
         .events = {chord(degree, 0.0, 4.0, static_cast<ChordExtension>(extension))}}};
    const QImage image = picture(*song_);
    for (int pitch = 60; pitch <= 72; ++pitch) {
        const QPoint place = at(0.3, pitch);
        const bool lit = image.pixelColor(place) != bare.pixelColor(place);
        QCOMPARE(lit, pitchClasses.contains(pitch % 12));
    }
}

void PianoRollBackdropTest::chordHasTheColorOfItsDegree_data()
{
    QTest::addColumn<int>("degree");
    QTest::addColumn<int>("pitch");
    QTest::addColumn<QColor>("color");

    QTest::newRow("I") << 1 << 60 << QColor(0xe5, 0x39, 0x35);
    QTest::newRow("II") << 2 << 62 << QColor(0xf9, 0xa8, 0x25);
    QTest::newRow("III") << 3 << 64 << QColor(0xfd, 0xd8, 0x35);
    QTest::newRow("IV") << 4 << 65 << QColor(0x43, 0xa0, 0x47);
    QTest::newRow("V") << 5 << 67 << QColor(0x1e, 0x88, 0xe5);
    QTest::newRow("VI") << 6 << 69 << QColor(0x5e, 0x35, 0xb1);
    QTest::newRow("VII") << 7 << 71 << QColor(0x8d, 0x6e, 0x63);
}

void PianoRollBackdropTest::chordHasTheColorOfItsDegree()
{
    QFETCH(int, degree);
    QFETCH(int, pitch);
    QFETCH(QColor, color);
    song_->harmonyTrack = harmony({degree});
    for (const bool dark : {false, true}) {
        ThemeManager::instance()->setDark(dark);
        QColor translucent = color;
        translucent.setAlpha(dark ? 70 : 38);
        const QColor ground = dark ? QColor(0x15, 0x1a, 0x0f) : QColor(0xfa, 0xfb, 0xf7);
        COMPARE_COLOR(picture(*song_).pixelColor(at(0.3, pitch)), over(translucent, ground));
    }
}

void PianoRollBackdropTest::chordLightsItsTimeOnly()
{
    song_->harmonyTrack.blocks = {{.barIndex = 0, .events = {chord(1, 1.0, 2.0)}}};
    const QImage image = picture(*song_);
    const QColor ground(0xfa, 0xfb, 0xf7);
    const int y = at(0.0, 60).y();
    COMPARE_COLOR(image.pixelColor(62, y), ground);
    QVERIFY(image.pixelColor(66, y) != ground);
    QVERIFY(image.pixelColor(190, y) != ground);
    COMPARE_COLOR(image.pixelColor(194, y), ground);
}

void PianoRollBackdropTest::chordsOfNoDegreeLightNothing()
{
    const QImage bare = picture(*song_);
    for (const int degree : {0, 8, -1, std::numeric_limits<int>::min()}) {
        song_->harmonyTrack.blocks = {{.barIndex = 0, .events = {chord(degree, 0.0, 4.0)}}};
        QCOMPARE(picture(*song_), bare);
    }
}

void PianoRollBackdropTest::laterBarsLightWhereTheyStand()
{
    song_->harmonyTrack = harmony({0, 1, 0});
    const QImage image = picture(*song_);
    const QColor ground(0xfa, 0xfb, 0xf7);
    COMPARE_COLOR(image.pixelColor(at(3.3, 60)), ground);
    QVERIFY(image.pixelColor(at(4.3, 60)) != ground);
    COMPARE_COLOR(image.pixelColor(at(8.3, 60)), ground);
}

// ---- Lines ---------------------------------------------------------------------------------

void PianoRollBackdropTest::rowsAreSeparatedByHairlines()
{
    const QImage image = picture(*song_);
    const QColor ground(0xfa, 0xfb, 0xf7);
    // Between 65 and 64, both of the key.
    const int y = (72 - 64) * 32;
    COMPARE_COLOR(image.pixelColor(10, y - 1), ground);
    COMPARE_COLOR(image.pixelColor(10, y), over(QColor(0, 0, 0, 24), ground));
    COMPARE_COLOR(image.pixelColor(10, y + 1), ground);
}

void PianoRollBackdropTest::linesOfTimeFollowTheLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QList<int>>("subdivisions");

    QTest::newRow("pulse") << 0 << QList<int>();
    QTest::newRow("division") << 1 << QList{32, 96, 160, 224};
    QTest::newRow("subdivision") << 2
                                 << QList{16, 32, 48, 80, 96, 112, 144, 160, 176, 208, 224, 240};
}

void PianoRollBackdropTest::linesOfTimeFollowTheLevel()
{
    QFETCH(int, level);
    QFETCH(QList<int>, subdivisions);
    Look look;
    look.level = static_cast<GridSubdivisionLevel>(level);
    const QImage image = picture(*song_, look);
    const QColor ground(0xfa, 0xfb, 0xf7);
    QList<int> found;
    for (int x = 1; x < 256; ++x) {
        const QColor color = image.pixelColor(x, at(0.0, 64).y());
        if (x % 64 == 0)
            COMPARE_COLOR(color, over(QColor(0, 0, 0, 70), ground));
        else if (x == 255)
            COMPARE_COLOR(color, over(QColor(0, 0, 0, 150), ground));
        else if (!isNear(color, ground))
            found.append(x);
    }
    QCOMPARE(found, subdivisions);
    for (const int x : subdivisions)
        COMPARE_COLOR(image.pixelColor(x, at(0.0, 64).y()), over(QColor(0, 0, 0, 26), ground));
    COMPARE_COLOR(image.pixelColor(256, at(0.0, 64).y()), over(QColor(0, 0, 0, 150), ground));
}

void PianoRollBackdropTest::linesStayThinUnderZoom()
{
    Look look;
    look.view = QTransform(6.0, 0.0, 0.0, 8.0, 0.0, -8.0 * 512.0);
    const QImage image = picture(*song_, look);
    const QColor ground(0xfa, 0xfb, 0xf7);
    COMPARE_COLOR(image.pixelColor(383, 64), ground);
    COMPARE_COLOR(image.pixelColor(384, 64), over(QColor(0, 0, 0, 70), ground));
    COMPARE_COLOR(image.pixelColor(385, 64), ground);
}

// ---- Stretches -----------------------------------------------------------------------------

void PianoRollBackdropTest::stretchesFitTogether_data()
{
    QTest::addColumn<QRect>("part");
    QTest::addColumn<double>("vertical");

    QTest::newRow("a strip at the side") << QRect(600, 0, 40, kHeight) << 2.0;
    QTest::newRow("a strip at the bottom") << QRect(0, 380, kWidth, 36) << 2.0;
    QTest::newRow("somewhere") << QRect(101, 77, 203, 131) << 2.0;
    QTest::newRow("rows in parts of pixels") << QRect(101, 77, 203, 131) << 2.0437;
    QTest::newRow("a strip of rows in parts of pixels") << QRect(0, 123, kWidth, 9) << 2.0437;
}

void PianoRollBackdropTest::stretchesFitTogether()
{
    QFETCH(QRect, part);
    QFETCH(double, vertical);
    song_->harmonyTrack = harmony({1, 5, 4});
    Look look;
    look.view = QTransform(1.0, 0.0, 0.0, vertical, -50.0, std::round(-384.0 * vertical));
    const QImage whole = picture(*song_, look);
    look.part = part;
    QCOMPARE(picture(*song_, look).copy(part), whole.copy(part));
}

void PianoRollBackdropTest::stretchesFitTogetherBetweenPixels()
{
    song_->harmonyTrack = harmony({1, 5, 4});
    Look look;
    // On a screen of one and a half the song starts in the middle of a pixel.
    look.pixelRatio = 1.5;
    look.inset = 1;
    look.view = QTransform(1.13, 0.0, 0.0, 2.0437, -50.0, -785.0);
    const QImage whole = picture(*song_, look);
    for (const int x : {101, 151, 203, 333}) {
        look.part = QRect(x, 77, 22, 130);
        const QRect pixels((x + 1) * 3 / 2, 78 * 3 / 2, 33, 195);
        QCOMPARE(picture(*song_, look).copy(pixels), whole.copy(pixels));
    }
}

void PianoRollBackdropTest::nothingIsPaintedOutsideTheStretch()
{
    Look look;
    look.part = QRect(100, 100, 50, 50);
    const QImage image = picture(*song_, look);
    QCOMPARE(image.pixelColor(99, 120), QColor(Qt::red));
    QCOMPARE(image.pixelColor(150, 120), QColor(Qt::red));
    QVERIFY(image.pixelColor(149, 120) != QColor(Qt::red));
}

void PianoRollBackdropTest::longSongsPaintTheSame()
{
    // As far out as this the hatching has come a whole number of times.
    song_->harmonyTrack = harmony(QList<int>(20000, 1));
    Look look;
    const QImage start = picture(*song_, look);
    look.view = usualView(64.0 * 4.0 * 10000.0);
    const QImage later = picture(*song_, look);
    const QRect inside(2, 0, kWidth - 2, kHeight);
    QCOMPARE(later.copy(inside), start.copy(inside));
}

void PianoRollBackdropTest::damagedSongsArePainted()
{
    Generator songs(3, Numbers::Hostile);
    for (int i = 0; i < 300; ++i) {
        songs.fill(*song_, 5);
        const QImage image = picture(*song_);
        QVERIFY(image.pixelColor(10, 10) != QColor(Qt::red));
    }
    song_->harmonyTrack.blocks = {{.barIndex = 0,
                                   .events = {chord(1, kNaN, 1.0), chord(1, 0.0, kNaN),
                                              chord(1, -1e300, 1e300), chord(1, 0.0, 1e300)}}};
    song_->timeSignature = {};
    QVERIFY(!picture(*song_).isNull());
}

VELTA_TEST(PianoRollBackdropTest)

} // namespace PianoRollBackdropTests

#include "PianoRollBackdropTest.moc"
