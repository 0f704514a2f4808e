#include "PictureHome.h"
#include "shell/MainWindow.h"
#include "shots/Shots.h"
#include "support/Contrast.h"
#include "support/LayoutFaults.h"
#include "support/TestProgram.h"
#include "views/TimelineRuler.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerHeaderColumn.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/BlockItem.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteItem.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QCheckBox>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>

#include <array>
#include <map>
#include <memory>

namespace ContrastTableTests {

namespace {

constexpr double kLeastOfText = 4.5;
constexpr double kLeastOfEdges = 3.0;

/// A mark is seen where at least so many pixels change.
constexpr int kPixelsOfAMark = 20;

/// Frames and rounded corners around a text.
constexpr int kFrame = 4;

/// The least contrast that a thing was seen with, in the light look and in the dark one; 0 where it
/// was not seen.
using Contrasts = std::array<double, 2>;
using Table = std::map<QString, Contrasts>;

void note(Table& table, const QString& name, bool dark, double contrast)
{
    double& least = table[name][dark ? 1 : 0];
    least = least == 0.0 ? contrast : std::min(least, contrast);
}

QColor groundOf(const QImage& picture)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    return QColor(std::max_element(counts.cbegin(), counts.cend()).key());
}

/// Of the ink of a text against what it stands on: letters have a few pixels of it that nothing
/// softens.
double textContrast(const QImage& picture)
{
    const QColor ground = groundOf(picture);
    double most = 1.0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            most = std::max(most, Contrast::ratio(picture.pixelColor(x, y), ground));
    return most;
}

/// Of the edge of a control, or of the control itself, against what is around it.
double edgeContrast(const QImage& picture, const QRect& place)
{
    const int middle = place.center().y();
    const QColor around = picture.pixelColor(std::max(place.left() - 2, 0), middle);
    return std::max(Contrast::ratio(picture.pixelColor(place.left(), middle), around),
                    Contrast::ratio(picture.pixelColor(place.left() + 3, middle), around));
}

QString kindOf(const QWidget& widget)
{
    const QString text = widget.property("text").toString();
    return QString("%1 %2 '%3'")
        .arg(widget.metaObject()->className(), widget.objectName(),
             text.isEmpty() ? widget.accessibleName() : text.simplified().left(40));
}

bool hasText(const QWidget& widget)
{
    return (qobject_cast<const QLabel*>(&widget) || qobject_cast<const QAbstractButton*>(&widget) ||
            qobject_cast<const QComboBox*>(&widget) ||
            qobject_cast<const QAbstractSpinBox*>(&widget) ||
            qobject_cast<const QLineEdit*>(&widget)) &&
           !widget.property("text").toString().trimmed().isEmpty();
}

bool hasEdge(const QWidget& widget)
{
    const auto* tool = qobject_cast<const QToolButton*>(&widget);
    // The squares of the ribbon, whose grounds are given, are told by the white of their faces.
    if (tool)
        return tool->isCheckable() && tool->objectName().isEmpty();
    return qobject_cast<const QComboBox*>(&widget) || qobject_cast<const QPushButton*>(&widget) ||
           qobject_cast<const QAbstractSpinBox*>(&widget) ||
           qobject_cast<const QLineEdit*>(&widget);
}

} // namespace

/// How well everything in the pictures is seen, from their pixels and in both looks: written as a
/// table, and held to what WCAG 2.1 asks of texts (4.5), and of edges and marks of focus (3).
class ContrastTableTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void textsAreRead();
    void edgesAreSeen();
    void focusIsSeen();
    void cleanupTestCase();

private:
    /// Every picture in both looks.
    void measure();
    void measureControls(const QWidget& shown, const QImage& picture, bool dark);
    void measureViews(ShotStage& stage, const QImage& picture, bool dark);
    void measureFocus(ShotStage& stage, bool dark);

    /// The lines of a table that stay below a bound.
    static QStringList below(const Table& table, double least);

    std::unique_ptr<PictureHome> home_;
    Table texts_;
    Table edges_;
    Table focus_;
};

void ContrastTableTest::initTestCase()
{
    PictureHome::prepareOnce();
    measure();
}

void ContrastTableTest::init()
{
    home_ = std::make_unique<PictureHome>();
}

void ContrastTableTest::cleanup()
{
    home_.reset();
}

void ContrastTableTest::measure()
{
    for (const Shot& shot : shots()) {
        for (const bool dark : {false, true}) {
            const PictureHome home;
            ShotStage stage(dark);
            shot.set(stage);
            const QImage picture = stage.picture();
            measureControls(stage.subject(), picture, dark);
            if (&stage.subject() != &stage.window())
                continue;
            measureViews(stage, picture, dark);
            if (shot.name == "cancion")
                measureFocus(stage, dark);
        }
    }
}

void ContrastTableTest::measureControls(const QWidget& shown, const QImage& picture, bool dark)
{
    for (const QWidget* control : LayoutFaults::controlsOf(shown)) {
        const QRect seen = LayoutFaults::seenOf(*control);
        if (!control->isEnabled() || seen != LayoutFaults::placeOf(*control))
            continue;
        const QRect inside = qobject_cast<const QLabel*>(control)
                                 ? seen
                                 : seen.adjusted(kFrame, kFrame, -kFrame, -kFrame);
        if (hasText(*control))
            note(texts_, kindOf(*control), dark, textContrast(picture.copy(inside)));
        if (hasEdge(*control))
            note(edges_, kindOf(*control), dark, edgeContrast(picture, seen));
    }
    const auto noteEntries = [&](const auto& menu, const QPoint& corner) {
        for (QAction* action : menu.actions()) {
            const QRect place = menu.actionGeometry(action).translated(corner);
            if (!action->isSeparator() && action->isEnabled())
                note(texts_, "menu '" + action->text() + '\'', dark,
                     textContrast(picture.copy(place.adjusted(2, 2, -2, -2))));
        }
    };
    if (const auto* menu = qobject_cast<const QMenu*>(&shown))
        noteEntries(*menu, {});
    for (const auto* bar : shown.findChildren<QMenuBar*>())
        noteEntries(*bar, bar->mapTo(&shown, QPoint()));
}

void ContrastTableTest::measureViews(ShotStage& stage, const QImage& picture, bool dark)
{
    const auto noteItems = [&](const QGraphicsView& view, auto nameOf) {
        const QWidget& port = *view.viewport();
        const QRect room = LayoutFaults::placeOf(port);
        for (const QGraphicsItem* item : view.scene()->items()) {
            const QString name = nameOf(item);
            const QRect place = view.mapFromScene(item->sceneBoundingRect())
                                    .boundingRect()
                                    .translated(room.topLeft())
                                    .adjusted(kFrame, kFrame, -kFrame, -kFrame);
            // Narrow ones have no text.
            if (!name.isEmpty() && room.contains(place) && place.width() > 30)
                note(texts_, name, dark,
                     textContrast(picture.copy(place.adjusted(0, 0, -place.width() / 2, 0))));
        }
    };
    noteItems(*stage.arranger().view(), [](const QGraphicsItem* item) {
        const auto* block = qgraphicsitem_cast<const BlockItem*>(item);
        return block ? "block '" + block->label() + '\'' : QString();
    });
    noteItems(*stage.roll().view(), [](const QGraphicsItem* item) {
        const auto* key = qgraphicsitem_cast<const NoteItem*>(item);
        return key ? QString(key->isSelected() ? "selected note" : "note") : QString();
    });
    const QWidget& lanes = *stage.arranger().headerColumn();
    for (const LaneInfo& lane : stage.arranger().lanes()) {
        const QRect row(8, lane.top + 2, lanes.width() - 36, lane.height - 5);
        if (lanes.rect().contains(row))
            note(
                texts_, "lane '" + lane.label + '\'', dark,
                textContrast(picture.copy(row.translated(LayoutFaults::placeOf(lanes).topLeft()))));
    }
    for (const auto* ruler : stage.window().findChildren<TimelineRuler*>())
        note(texts_, "ruler", dark, textContrast(picture.copy(LayoutFaults::placeOf(*ruler))));
}

void ContrastTableTest::measureFocus(ShotStage& stage, bool dark)
{
    MainWindow& window = stage.window();
    QLineEdit elsewhere(&window);
    elsewhere.setGeometry(-50, -50, 10, 10);
    elsewhere.show();
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        if (!(widget->focusPolicy() & Qt::TabFocus) || !widget->isVisible() ||
            !widget->isEnabled() || widget->focusProxy() || widget == &elsewhere ||
            LayoutFaults::seenOf(*widget) != LayoutFaults::placeOf(*widget))
            continue;
        const QRect area = LayoutFaults::placeOf(*widget).adjusted(-3, -3, 3, 3);
        elsewhere.setFocus();
        const QImage before = Contrast::pictureOf(window, area);
        widget->setFocus(Qt::TabFocusReason);
        QApplication::processEvents();
        const QImage after = Contrast::pictureOf(window, area);
        QList<double> ratios;
        for (int y = 0; y < after.height(); ++y)
            for (int x = 0; x < after.width(); ++x)
                ratios.append(Contrast::ratio(before.pixelColor(x, y), after.pixelColor(x, y)));
        std::ranges::sort(ratios, std::greater());
        note(focus_, kindOf(*widget), dark, ratios.at(kPixelsOfAMark - 1));
    }
}

QStringList ContrastTableTest::below(const Table& table, double least)
{
    QStringList lines;
    for (const auto& [name, contrasts] : table) {
        for (const double contrast : contrasts) {
            if (contrast > 0.0 && contrast < least)
                lines.append(QString("%1: %2 / %3")
                                 .arg(name)
                                 .arg(contrasts[0], 0, 'f', 2)
                                 .arg(contrasts[1], 0, 'f', 2));
        }
    }
    return lines;
}

void ContrastTableTest::textsAreRead()
{
    QVERIFY(texts_.size() > 80);
    QCOMPARE(below(texts_, kLeastOfText).join("\n"), QString());
}

void ContrastTableTest::edgesAreSeen()
{
    QVERIFY(edges_.size() > 15);
    QCOMPARE(below(edges_, kLeastOfEdges).join("\n"), QString());
}

void ContrastTableTest::focusIsSeen()
{
    QVERIFY(focus_.size() > 20);
    QCOMPARE(below(focus_, kLeastOfEdges).join("\n"), QString());
}

void ContrastTableTest::cleanupTestCase()
{
    QFile file(VELTA_CONTRAST_TABLE);
    QVERIFY(file.open(QIODevice::WriteOnly));
    for (const auto& [title, table] :
         {std::pair("Text", texts_), std::pair("Edge", edges_), std::pair("Focus", focus_)}) {
        file.write(QString("%1: light, dark\n").arg(title).toUtf8());
        for (const auto& [name, contrasts] : table)
            file.write(QString("%1 %2  %3\n")
                           .arg(contrasts[0], 6, 'f', 2)
                           .arg(contrasts[1], 6, 'f', 2)
                           .arg(name)
                           .toUtf8());
    }
}

VELTA_TEST(ContrastTableTest)

} // namespace ContrastTableTests

#include "ContrastTableTest.moc"
