#include "views/arranger/ArrangerHeaderColumn.h"

#include "ArrangerStage.h"
#include "shell/theme/ThemeManager.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/Painted.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextDocumentFragment>
#include <QToolTip>

namespace ArrangerHeaderColumnTests {

using namespace ProjectBuilder;

namespace {

/// Left of the texts and right of the mute buttons there is only background.
constexpr int kLeftEdge = 3;
constexpr int kRightEdge = 166;

constexpr QColor kPaper(0xe0, 0xe8, 0xd4);
constexpr QColor kText(0x2e, 0x52, 0x14);
constexpr QColor kActive(0x4a, 0x73, 0x25);
constexpr QColor kSelected(0x55, 0x84, 0x2a);
constexpr QColor kMuted(0xc2, 0x18, 0x5b);

/// The part of a row that a text may fill, as it ought to look.
QImage textRow(const QRect& row, int fromRight, const QString& text, const QFont& font,
               const QColor& color, const QColor& background)
{
    QImage image(170, row.height(), QImage::Format_RGB32);
    image.fill(background);
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(QRect(8, 0, 170 - 8 - fromRight, row.height()),
                     Qt::AlignLeft | Qt::AlignVCenter, text);
    return image.copy(0, 0, 170 - fromRight, row.height() - 1);
}

QFont bold(QFont font, qreal smallerBy, qreal least)
{
    font.setWeight(QFont::Weight(700));
    font.setPointSizeF(qMax(font.pointSizeF() - smallerBy, least));
    return font;
}

} // namespace

class ArrangerHeaderColumnTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void isOneHundredAndSeventyPixelsWide();
    void hasATip();

    void pressSelectsATrack_data();
    void pressSelectsATrack();
    void ctrlPressTakesFurtherTracksAlong();
    void pressOnAVoiceSelectsIt();
    void pressOnAHeadingSelectsNothing_data();
    void pressOnAHeadingSelectsNothing();
    void pressOnTheChordsSelectsThem();
    void rowsEndWhereTheNextOnesBegin();

    void pressOnAGroupFoldsIt_data();
    void pressOnAGroupFoldsIt();
    void foldedGroupUnfolds();
    void unknownFoldedGroupsAreKept();

    void muteSquareMutes_data();
    void muteSquareMutes();
    void besideTheMuteSquareNothingIsMuted_data();
    void besideTheMuteSquareNothingIsMuted();
    void muteSquareSelectsNothing();
    void muteSquareOfASectionDoesNothing();
    void everyButtonWorks_data();
    void everyButtonWorks();

    void scrolledRowsArePressedWhereTheyAreSeen();
    void withoutAProjectIsAnEmptyColumn();

    void rowsHaveTheirBackgrounds_data();
    void rowsHaveTheirBackgrounds();
    void selectedRowsStandOut();
    void activeButUnselectedTrackStandsOutNot();
    void labelsAreWritten_data();
    void labelsAreWritten();
    void longNamesAreElided();
    void aNameThatIsCutIsTold();
    void muteButtonsTellTheirState();
    void tipsComeWhereTheMouseRests();
    void groupsTellWhetherTheyAreFolded();
    void rowsEndWithASeparator();
    void muteButtonsArePainted();
    void muteButtonOfASelectedTrackIsWhite();
    void headingsHaveNoMuteButton();
    void columnScrollsWithTheGrid();
    void columnLinesUpWithTheGrid();
    void staleRowsArePainted();

private:
    void press(int x, int y, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::mouseClick(column(), Qt::LeftButton, modifiers, QPoint(x, y));
    }

    ArrangerHeaderColumn* column() const { return stage_->arranger.headerColumn(); }

    QImage image() const { return painted(column()); }

    std::unique_ptr<UserHome> home_ = std::make_unique<UserHome>();
    std::unique_ptr<ArrangerStage> stage_;
};

void ArrangerHeaderColumnTest::init()
{
    ThemeManager::instance()->setDark(false);
    stage_ = std::make_unique<ArrangerStage>();
    connect(&stage_->arranger, &TrackArranger::edited, &stage_->song, &Project::changed);
}

void ArrangerHeaderColumnTest::cleanup()
{
    stage_.reset();
}

void ArrangerHeaderColumnTest::isOneHundredAndSeventyPixelsWide()
{
    QCOMPARE(column()->minimumWidth(), 170);
    QCOMPARE(column()->maximumWidth(), 170);
    QCOMPARE(column()->width(), 170);
    QVERIFY(column()->autoFillBackground());
}

void ArrangerHeaderColumnTest::hasATip()
{
    QCOMPARE(column()->toolTip(),
             QString("Click en un grupo lo pliega o lo despliega. «M» silencia ese carril."));
}

// ---- Selecting -----------------------------------------------------------------------------

void ArrangerHeaderColumnTest::pressSelectsATrack_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("track");

    QTest::newRow("first row of a lane") << 20 << 86 << 2;
    QTest::newRow("last row of a lane") << 20 << 127 << 2;
    QTest::newRow("left edge") << 0 << kFlautaY << 2;
    QTest::newRow("right edge") << 169 << kFlautaY << 2;
    QTest::newRow("accompaniment") << 20 << kBajoY << 3;
}

void ArrangerHeaderColumnTest::pressSelectsATrack()
{
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(int, track);
    const QSignalSpy selected(&stage_->arranger, &TrackArranger::laneSelectionChanged);
    press(x, y);
    QCOMPARE(selected.size(), 1);
    QCOMPARE(stage_->arranger.activeTrack(), track);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>{track});
}

void ArrangerHeaderColumnTest::ctrlPressTakesFurtherTracksAlong()
{
    press(20, kFlautaY, Qt::ControlModifier);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>({0, 2}));
    press(20, kFlautaY, Qt::ControlModifier);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>{0});
    QCOMPARE(stage_->arranger.activeTrack(), 2);
    press(20, kQuenaY, Qt::ControlModifier);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>{0});
    press(20, kBomboY, Qt::ControlModifier);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>{1});
}

void ArrangerHeaderColumnTest::pressOnAVoiceSelectsIt()
{
    press(20, kBetoY);
    QCOMPARE(stage_->arranger.selectedAudioTrack(), 1);
    QCOMPARE(stage_->arranger.activeTrack(), -1);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>());
}

void ArrangerHeaderColumnTest::pressOnAHeadingSelectsNothing_data()
{
    QTest::addColumn<int>("y");

    QTest::newRow("first section") << kVeltasY;
    QTest::newRow("second section") << kAccompanimentY;
    QTest::newRow("below the last lane") << 358;
    QTest::newRow("far below") << 440;
}

void ArrangerHeaderColumnTest::pressOnAHeadingSelectsNothing()
{
    QFETCH(int, y);
    const QSignalSpy selected(&stage_->arranger, &TrackArranger::laneSelectionChanged);
    const QSignalSpy edited(&stage_->arranger, &TrackArranger::edited);
    press(20, y);
    QCOMPARE(selected.size() + edited.size(), 0);
}

void ArrangerHeaderColumnTest::pressOnTheChordsSelectsThem()
{
    press(20, kChordsY);
    QVERIFY(stage_->arranger.areChordsSelected());
    QCOMPARE(stage_->arranger.activeTrack(), -1);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>());
    press(20, kFlautaY);
    QVERIFY(!stage_->arranger.areChordsSelected());
    press(20, kChordsY);
    press(20, kBetoY);
    QVERIFY(!stage_->arranger.areChordsSelected());
}

void ArrangerHeaderColumnTest::rowsEndWhereTheNextOnesBegin()
{
    press(20, 85);
    QCOMPARE(stage_->arranger.activeTrack(), 0);
    press(20, 86);
    QCOMPARE(stage_->arranger.activeTrack(), 2);
    press(20, 128);
    QCOMPARE(stage_->arranger.selectedAudioTrack(), 0);
    press(20, 357);
    QCOMPARE(stage_->arranger.activeTrack(), 3);
}

// ---- Folding -------------------------------------------------------------------------------

void ArrangerHeaderColumnTest::pressOnAGroupFoldsIt_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<QString>("group");

    QTest::newRow("percussion") << 20 << kPercussionY << "acomp/percusion";
    QTest::newRow("instruments") << 20 << kInstrumentalY << "acomp/instrumental";
    QTest::newRow("where others have a mute square") << 155 << kPercussionY << "acomp/percusion";
}

void ArrangerHeaderColumnTest::pressOnAGroupFoldsIt()
{
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(QString, group);
    const QSignalSpy edited(&stage_->arranger, &TrackArranger::edited);
    const QSignalSpy selected(&stage_->arranger, &TrackArranger::laneSelectionChanged);
    press(x, y);
    QCOMPARE(stage_->song.collapsedGroups, QStringList{group});
    QCOMPARE(stage_->arranger.lanes().size(), 10);
    QCOMPARE(edited.size(), 1);
    QCOMPARE(selected.size(), 0);
}

void ArrangerHeaderColumnTest::foldedGroupUnfolds()
{
    press(20, kPercussionY);
    QCOMPARE(stage_->arranger.laneTopForNoteTrack(1), -1);
    press(20, kPercussionY);
    QCOMPARE(stage_->arranger.laneTopForNoteTrack(1), 252);
    QCOMPARE(stage_->song.collapsedGroups, QStringList());
}

void ArrangerHeaderColumnTest::unknownFoldedGroupsAreKept()
{
    stage_->song.collapsedGroups = {"acomp/vientos"};
    emit stage_->song.changed();
    press(20, kPercussionY);
    QCOMPARE(stage_->song.collapsedGroups, QStringList({"acomp/vientos", "acomp/percusion"}));
    press(20, kPercussionY);
    QCOMPARE(stage_->song.collapsedGroups, QStringList{"acomp/vientos"});
}

// ---- Muting --------------------------------------------------------------------------------

void ArrangerHeaderColumnTest::muteSquareMutes_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<QString>("muted");

    // The square reaches from 147 to 162, and from 8 above to 7 below the middle of its row.
    QTest::newRow("chords, middle") << 155 << 12 << "chords";
    QTest::newRow("chords, top") << 155 << 4 << "chords";
    QTest::newRow("chords, bottom") << 155 << 19 << "chords";
    QTest::newRow("track, left") << 147 << 64 << "0";
    QTest::newRow("track, right") << 162 << 64 << "0";
    QTest::newRow("track, top left") << 147 << 56 << "0";
    QTest::newRow("track, bottom right") << 162 << 71 << "0";
    QTest::newRow("track 2") << 155 << kFlautaY << "2";
    QTest::newRow("accompaniment") << 155 << kBomboY << "1";
    QTest::newRow("voice") << 155 << kBetoY << "voice 1";
}

/// What is muted in a song, in the order of the lists.
QString mutedIn(const Project& song)
{
    QStringList muted;
    if (song.harmonyTrack.muted)
        muted.append("chords");
    for (qsizetype i = 0; i < song.tracks.size(); ++i) {
        if (song.tracks[i].muted)
            muted.append(QString::number(i));
    }
    for (qsizetype i = 0; i < song.audioTracks.size(); ++i) {
        if (song.audioTracks[i].muted)
            muted.append("voice " + QString::number(i));
    }
    return muted.join(", ");
}

void ArrangerHeaderColumnTest::muteSquareMutes()
{
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(QString, muted);
    const QSignalSpy edited(&stage_->arranger, &TrackArranger::edited);
    press(x, y);
    QCOMPARE(mutedIn(stage_->song), muted);
    QCOMPARE(edited.size(), 1);
    press(x, y);
    QCOMPARE(mutedIn(stage_->song), QString());
    QCOMPARE(edited.size(), 2);
}

void ArrangerHeaderColumnTest::besideTheMuteSquareNothingIsMuted_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");

    QTest::newRow("left") << 146 << 64;
    QTest::newRow("right") << 163 << 64;
    QTest::newRow("above") << 155 << 55;
    QTest::newRow("below") << 155 << 72;
    QTest::newRow("left of the chords'") << 146 << 12;
    QTest::newRow("above the chords'") << 155 << 3;
    QTest::newRow("below the chords'") << 155 << 20;
}

void ArrangerHeaderColumnTest::besideTheMuteSquareNothingIsMuted()
{
    QFETCH(int, x);
    QFETCH(int, y);
    const QSignalSpy edited(&stage_->arranger, &TrackArranger::edited);
    press(x, y);
    QCOMPARE(mutedIn(stage_->song), QString());
    QCOMPARE(edited.size(), 0);
}

void ArrangerHeaderColumnTest::muteSquareSelectsNothing()
{
    const QSignalSpy selected(&stage_->arranger, &TrackArranger::laneSelectionChanged);
    press(155, kFlautaY);
    press(155, kBetoY);
    QCOMPARE(selected.size(), 0);
    QCOMPARE(stage_->arranger.activeTrack(), 0);
}

void ArrangerHeaderColumnTest::muteSquareOfASectionDoesNothing()
{
    const QSignalSpy edited(&stage_->arranger, &TrackArranger::edited);
    press(155, kVeltasY);
    press(155, kAccompanimentY);
    QCOMPARE(edited.size(), 0);
    QCOMPARE(mutedIn(stage_->song), QString());
}

void ArrangerHeaderColumnTest::everyButtonWorks_data()
{
    QTest::addColumn<Qt::MouseButton>("button");

    QTest::newRow("right") << Qt::RightButton;
    QTest::newRow("middle") << Qt::MiddleButton;
}

void ArrangerHeaderColumnTest::everyButtonWorks()
{
    QFETCH(Qt::MouseButton, button);
    QTest::mouseClick(column(), button, {}, QPoint(20, kFlautaY));
    QCOMPARE(stage_->arranger.activeTrack(), 2);
    QTest::mouseClick(column(), button, {}, QPoint(155, kFlautaY));
    QCOMPARE(mutedIn(stage_->song), QString("2"));
}

// ---- Scrolling -----------------------------------------------------------------------------

void ArrangerHeaderColumnTest::scrolledRowsArePressedWhereTheyAreSeen()
{
    stage_->arranger.resize(1000, 200);
    stage_->arranger.view()->verticalScrollBar()->setValue(100);
    QCOMPARE(stage_->scroll().y(), 100);
    press(20, kFlautaY - 100);
    QCOMPARE(stage_->arranger.activeTrack(), 2);
    press(155, kBetoY - 100);
    QCOMPARE(mutedIn(stage_->song), QString("voice 1"));
    press(20, kPercussionY - 100);
    QCOMPARE(stage_->song.collapsedGroups, QStringList{"acomp/percusion"});
}

void ArrangerHeaderColumnTest::withoutAProjectIsAnEmptyColumn()
{
    TrackArranger arranger;
    arranger.resize(600, 300);
    arranger.show();
    const QImage empty = painted(arranger.headerColumn());
    QImage paper(empty.size(), QImage::Format_RGB32);
    paper.fill(kPaper);
    QCOMPARE(empty, paper);
    const QSignalSpy selected(&arranger, &TrackArranger::laneSelectionChanged);
    for (const int y : {5, 30, 60, 200})
        QTest::mouseClick(arranger.headerColumn(), Qt::LeftButton, {}, QPoint(155, y));
    QCOMPARE(selected.size(), 0);
}

// ---- Painting ------------------------------------------------------------------------------

void ArrangerHeaderColumnTest::rowsHaveTheirBackgrounds_data()
{
    QTest::addColumn<int>("y");
    QTest::addColumn<QColor>("light");
    QTest::addColumn<QColor>("dark");

    const QColor paperDark("#14190c");
    QTest::newRow("chords") << kChordsY << QColor("#e4ecd7") << QColor("#253016");
    QTest::newRow("section") << kVeltasY << kActive << kActive;
    QTest::newRow("active track") << kQuenaY << kActive << kActive;
    QTest::newRow("other track") << kFlautaY << kPaper << paperDark;
    QTest::newRow("voice") << kAnaY << kPaper << paperDark;
    QTest::newRow("group") << kPercussionY << QColor("#c9e0b0") << QColor("#212a14");
    QTest::newRow("accompaniment") << kBomboY << kPaper << paperDark;
    QTest::newRow("below the lanes") << 400 << kPaper << paperDark;
}

void ArrangerHeaderColumnTest::rowsHaveTheirBackgrounds()
{
    QFETCH(int, y);
    QFETCH(QColor, light);
    QFETCH(QColor, dark);
    QCOMPARE(image().pixelColor(kLeftEdge, y), light);
    QCOMPARE(image().pixelColor(kRightEdge, y), light);
    ThemeManager::instance()->setDark(true);
    QCOMPARE(image().pixelColor(kLeftEdge, y), dark);
}

void ArrangerHeaderColumnTest::selectedRowsStandOut()
{
    stage_->arranger.selectNoteTrack(2, true);
    QCOMPARE(image().pixelColor(kLeftEdge, kQuenaY), kSelected);
    QCOMPARE(image().pixelColor(kLeftEdge, kFlautaY), kActive);
    stage_->arranger.selectAudioTrack(1);
    QCOMPARE(image().pixelColor(kLeftEdge, kQuenaY), kPaper);
    QCOMPARE(image().pixelColor(kLeftEdge, kFlautaY), kPaper);
    QCOMPARE(image().pixelColor(kLeftEdge, kAnaY), kPaper);
    QCOMPARE(image().pixelColor(kLeftEdge, kBetoY), kActive);
}

void ArrangerHeaderColumnTest::activeButUnselectedTrackStandsOutNot()
{
    stage_->arranger.selectNoteTrack(2, true);
    stage_->arranger.selectNoteTrack(2, true);
    QCOMPARE(stage_->arranger.activeTrack(), 2);
    QCOMPARE(image().pixelColor(kLeftEdge, kFlautaY), kPaper);
    QCOMPARE(image().pixelColor(kLeftEdge, kQuenaY), kSelected);
}

void ArrangerHeaderColumnTest::labelsAreWritten_data()
{
    QTest::addColumn<QRect>("row");
    QTest::addColumn<bool>("heading");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<QColor>("background");

    QTest::newRow("chords") << QRect(0, 0, 170, 26) << false << "♫ Acordes" << kText
                            << QColor("#e4ecd7");
    QTest::newRow("section") << QRect(0, 26, 170, 18) << true << "VELTAS" << QColor(Qt::white)
                             << kActive;
    QTest::newRow("active track") << QRect(0, 44, 170, 42) << false << "🎹 Quena"
                                  << QColor(Qt::white) << kActive;
    QTest::newRow("other track") << QRect(0, 86, 170, 42) << false << "🎹 Flauta" << kText << kPaper;
    QTest::newRow("voice") << QRect(0, 128, 170, 42) << false << "🎤 Ana" << kText << kPaper;
    QTest::newRow("second section")
        << QRect(0, 212, 170, 18) << true << "ACOMPAÑAMIENTO" << QColor(Qt::white) << kActive;
    QTest::newRow("open group") << QRect(0, 230, 170, 22) << true << "▾ Percusión (1)" << kText
                                << QColor("#c9e0b0");
    QTest::newRow("accompaniment")
        << QRect(0, 252, 170, 42) << false << "🥁 Bombo" << kText << kPaper;
    QTest::newRow("instrument") << QRect(0, 316, 170, 42) << false << "🎸 Bajo" << kText << kPaper;
}

void ArrangerHeaderColumnTest::labelsAreWritten()
{
    QFETCH(QRect, row);
    QFETCH(bool, heading);
    QFETCH(QString, text);
    QFETCH(QColor, color);
    QFETCH(QColor, background);
    const QFont font = heading ? bold(column()->font(), 1.5, 6.5) : column()->font();
    const int fromRight = heading ? 4 : 28;
    QCOMPARE(image().copy(0, row.y(), 170 - fromRight, row.height() - 1),
             textRow(row, fromRight, text, font, color, background));
}

void ArrangerHeaderColumnTest::longNamesAreElided()
{
    stage_->song.tracks[2].name = "Flauta traversa de la segunda voz";
    stage_->song.collapsedGroups.clear();
    emit stage_->song.changed();
    const QImage row = image().copy(0, 86, 170, 41);
    // The text ends 28 pixels before the right edge, and the name is told by start and end.
    for (int x = 142; x < 146; ++x) {
        for (int y = 0; y < 41; ++y)
            QCOMPARE(row.pixelColor(x, y), kPaper);
    }
    bool matched = false;
    const QString whole = "🎹 Flauta traversa de la segunda voz";
    for (qsizetype left = 5; left < 28; ++left) {
        for (qsizetype right = 3; right < 28; ++right)
            matched = matched || row.copy(0, 0, 142, 41) ==
                                     textRow(QRect(0, 86, 170, 42), 28,
                                             whole.left(left) + "…" + whole.right(right),
                                             column()->font(), kText, kPaper);
    }
    QVERIFY(matched);
}

void ArrangerHeaderColumnTest::aNameThatIsCutIsTold()
{
    QCOMPARE(column()->toolTipAt(QPoint(20, kFlautaY)), column()->toolTip());
    stage_->song.tracks[2].name = "Flauta traversa de la <b>segunda</b> voz";
    emit stage_->song.changed();
    // As it stands, and not as markup.
    QCOMPARE(
        QTextDocumentFragment::fromHtml(column()->toolTipAt(QPoint(20, kFlautaY))).toPlainText(),
        QString("🎹 Flauta traversa de la <b>segunda</b> voz"));
    QCOMPARE(column()->toolTipAt(QPoint(20, kQuenaY)), column()->toolTip());
    QCOMPARE(column()->toolTipAt(QPoint(20, kPercussionY)), column()->toolTip());
}

void ArrangerHeaderColumnTest::muteButtonsTellTheirState()
{
    for (const int y : {kChordsY, kQuenaY, kBetoY, kBomboY}) {
        QCOMPARE(column()->toolTipAt(QPoint(155, y)), QString("Click para silenciar este carril."));
        press(155, y);
        QCOMPARE(column()->toolTipAt(QPoint(155, y)),
                 QString("Este carril está en silencio. Click para volver a oírlo."));
    }
    QCOMPARE(column()->toolTipAt(QPoint(155, kVeltasY)), column()->toolTip());
    QCOMPARE(column()->toolTipAt(QPoint(155, 440)), column()->toolTip());
}

void ArrangerHeaderColumnTest::tipsComeWhereTheMouseRests()
{
    QHelpEvent help(QEvent::ToolTip, QPoint(155, kQuenaY),
                    column()->mapToGlobal(QPoint(155, kQuenaY)));
    QApplication::sendEvent(column(), &help);
    QTRY_COMPARE(QToolTip::text(), QString("Click para silenciar este carril."));
    QToolTip::hideText();
}

void ArrangerHeaderColumnTest::groupsTellWhetherTheyAreFolded()
{
    stage_->song.tracks.append(stage_->song.tracks[1]);
    stage_->song.tracks.append(stage_->song.tracks[1]);
    stage_->song.collapsedGroups = {"acomp/percusion"};
    emit stage_->song.changed();
    const QRect row(0, 230, 170, 22);
    QCOMPARE(image().copy(0, 230, 166, 21),
             textRow(row, 4, "▸ Percusión (3)", bold(column()->font(), 1.5, 6.5), kText,
                     QColor("#c9e0b0")));
    press(20, 241);
    QCOMPARE(image().copy(0, 230, 166, 21),
             textRow(row, 4, "▾ Percusión (3)", bold(column()->font(), 1.5, 6.5), kText,
                     QColor("#c9e0b0")));
}

void ArrangerHeaderColumnTest::rowsEndWithASeparator()
{
    const QImage column = image();
    const QColor line(0, 0, 0, 40);
    const QList<std::pair<int, QColor>> ends{
        {25, QColor("#e4ecd7")},  {43, kActive}, {85, kActive}, {127, kPaper},
        {251, QColor("#c9e0b0")}, {357, kPaper}};
    for (const auto& [y, background] : ends) {
        for (const int x : {0, kLeftEdge, 80, 169})
            COMPARE_COLOR(column.pixelColor(x, y), over(line, background));
        COMPARE_COLOR(column.pixelColor(kLeftEdge, y - 1), background);
    }
}

void ArrangerHeaderColumnTest::muteButtonsArePainted()
{
    const QImage before = image();
    // The outline goes along the square, which lies at (147, 98), with paper within.
    QVERIFY(!isNear(before.pixelColor(155, 98), kPaper));
    QVERIFY(!isNear(before.pixelColor(147, 106), kPaper));
    QCOMPARE(before.pixelColor(150, 102), kPaper);
    press(155, kFlautaY);
    const QImage muted = image();
    for (const QPoint& place : {QPoint(150, 102), QPoint(160, 102), QPoint(150, 112)})
        QCOMPARE(muted.pixelColor(place), kMuted);
    bool white = false;
    for (int x = 149; x < 161; ++x)
        white = white || muted.pixelColor(x, 106).green() > 180;
    QVERIFY(white);
    QCOMPARE(muted.pixelColor(145, 107), kPaper);
    QCOMPARE(muted.pixelColor(165, 107), kPaper);
    press(155, kFlautaY);
    QCOMPARE(image(), before);
}

void ArrangerHeaderColumnTest::muteButtonOfASelectedTrackIsWhite()
{
    const QColor outline = image().pixelColor(155, 57 - 1);
    QColor faint(Qt::white);
    faint.setAlpha(110);
    // The outline is drawn smooth, so that half of it may lie in the next row.
    QVERIFY(outline.lightness() > kActive.lightness());
    QVERIFY(outline.lightness() <= over(faint, kActive).lightness() + 2);
    QCOMPARE(image().pixelColor(150, 59), kActive);
}

void ArrangerHeaderColumnTest::headingsHaveNoMuteButton()
{
    const QImage column = image();
    for (const int top : {26, 212, 230, 294}) {
        const int height = top == 230 || top == 294 ? 22 : 18;
        for (int y = top; y < top + height - 1; ++y) {
            for (int x = 140; x < 166; ++x)
                QCOMPARE(column.pixelColor(x, y), column.pixelColor(kLeftEdge, y));
        }
    }
}

void ArrangerHeaderColumnTest::columnScrollsWithTheGrid()
{
    const QImage before = image();
    stage_->arranger.resize(1000, 200);
    for (const int scroll : {1, 30, 100}) {
        stage_->arranger.view()->verticalScrollBar()->setValue(scroll);
        const QImage scrolled = image();
        for (int y = 0; y < scrolled.height(); ++y) {
            for (int x = 0; x < 170; ++x)
                COMPARE_COLOR(scrolled.pixelColor(x, y), before.pixelColor(x, y + scroll));
        }
    }
}

// The sheet of the theme takes the frame off the grid.
void ArrangerHeaderColumnTest::columnLinesUpWithTheGrid()
{
    const TrackArranger& arranger = stage_->arranger;
    QCOMPARE(stage_->grid()->mapTo(&arranger, QPoint()), QPoint(170, 34));
    QCOMPARE(column()->mapTo(&arranger, QPoint()), QPoint(0, 34));
    QImage whole = painted(&stage_->arranger);
    // The rows of the grid and of the column change together.
    QCOMPARE(whole.pixelColor(kLeftEdge, 34 + 25 - 2), QColor("#e4ecd7"));
    QCOMPARE(whole.pixelColor(170 + 16, 34 + 25), QColor("#e4ecd7"));
    QCOMPARE(whole.pixelColor(170 + 16, 34 + 26 + 4), QColor("#d7e1c9"));
}

// Between a change of the project and the rebuild, lanes may stand for tracks that are gone.
void ArrangerHeaderColumnTest::staleRowsArePainted()
{
    stage_->song.tracks.clear();
    stage_->song.audioTracks.clear();
    QVERIFY(!image().isNull());
    for (const int y : {kQuenaY, kAnaY, kBomboY, kBajoY})
        press(155, y);
    QVERIFY(stage_->song.tracks.isEmpty());
}

VELTA_TEST(ArrangerHeaderColumnTest)

} // namespace ArrangerHeaderColumnTests

#include "ArrangerHeaderColumnTest.moc"
