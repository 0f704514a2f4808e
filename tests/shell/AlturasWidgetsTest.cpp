#include "shell/AlturasWidgets.h"

#include "support/Files.h"
#include "support/TestProgram.h"

#include <QDialog>
#include <QDir>
#include <QFrame>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <memory>

namespace {

/// Asks for a size of its own. Lines tell of it by this name alone.
class Asking : public QFrame {
    Q_OBJECT

public:
    Asking(const QSize& hint, QWidget* parent) : QFrame(parent), hint_(hint) { resize(7, 9); }

    QSize sizeHint() const override { return hint_; }

private:
    QSize hint_;
};

} // namespace

namespace AlturasWidgetsTests {

using ovelin::alturasDelArbol;
using ovelin::medirAlturasSiHaceFalta;

namespace {

/// A window of 300 by 200 that asks for nothing.
std::unique_ptr<QWidget> shownWindow()
{
    auto window = std::make_unique<QWidget>();
    window->resize(300, 200);
    window->show();
    return window;
}

template <typename Widget>
Widget* shown(Widget* widget)
{
    widget->show();
    return widget;
}

int linesOf(const QString& text)
{
    return static_cast<int>(text.count('\n'));
}

} // namespace

class AlturasWidgetsTest : public QObject {
    Q_OBJECT

private slots:
    void aLineTellsClassNameAndSizes();
    void aLineWithoutAName();
    void theNeedIsTheLargerOfHintAndMinimum_data();
    void theNeedIsTheLargerOfHintAndMinimum();
    void hiddenWidgetsAreLeftOutWithTheirChildren();
    void belowTheThirdLevelOnlyTallWidgetsHaveALine_data();
    void belowTheThirdLevelOnlyTallWidgetsHaveALine();
    void childrenOfAWidgetWithoutALineAreSeen();
    void theWalkEndsAtTheNinthLevel();
    void windowsOfAWindowAreNoPartOfIt();
    void otherObjectsAreNoPartOfIt();
    void twoSecondsLaterTheFileIsWrittenOnce();
};

void AlturasWidgetsTest::aLineTellsClassNameAndSizes()
{
    const auto window = shownWindow();
    window->setObjectName("ventana");
    auto* child = new Asking({120, 33}, window.get());
    child->setObjectName("año_nuevo");
    shown(child);
    QCOMPARE(alturasDelArbol(window.get()), "QWidget #ventana  min=0x0  actual=300x200\n"
                                            "  Asking #año_nuevo  min=120x33  actual=7x9\n");
}

void AlturasWidgetsTest::aLineWithoutAName()
{
    const auto window = shownWindow();
    shown(new Asking({1, 2}, shown(new QFrame(window.get()))));
    const QStringList lines = alturasDelArbol(window.get()).split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[2], "    Asking  min=1x2  actual=7x9");
    QCOMPARE(alturasDelArbol(window.get(), 1).split('\n')[0], "  " + lines[0]);
}

void AlturasWidgetsTest::theNeedIsTheLargerOfHintAndMinimum_data()
{
    QTest::addColumn<QSize>("hint");
    QTest::addColumn<QSize>("minimum");
    QTest::addColumn<QString>("text");
    QTest::newRow("the hint") << QSize(50, 60) << QSize(10, 20) << "min=50x60";
    QTest::newRow("the minimum") << QSize(5, 6) << QSize(10, 20) << "min=10x20";
    QTest::newRow("one of each") << QSize(50, 6) << QSize(10, 20) << "min=50x20";
    QTest::newRow("no hint") << QSize(-1, -1) << QSize(0, 20) << "min=0x20";
}

void AlturasWidgetsTest::theNeedIsTheLargerOfHintAndMinimum()
{
    QFETCH(QSize, hint);
    QFETCH(QSize, minimum);
    QFETCH(QString, text);
    const auto window = shownWindow();
    shown(new Asking(hint, window.get()))->setMinimumSize(minimum);
    const QString line = alturasDelArbol(window.get()).split('\n')[1];
    QVERIFY2(line.contains("  " + text + "  "), qPrintable(line));
}

void AlturasWidgetsTest::hiddenWidgetsAreLeftOutWithTheirChildren()
{
    const auto window = shownWindow();
    auto* hidden = new Asking({9, 90}, window.get());
    shown(new Asking({9, 90}, hidden));
    QCOMPARE(linesOf(alturasDelArbol(window.get())), 1);
    shown(hidden);
    QCOMPARE(linesOf(alturasDelArbol(window.get())), 3);
    window->hide();
    QCOMPARE(alturasDelArbol(window.get()), "");
}

void AlturasWidgetsTest::belowTheThirdLevelOnlyTallWidgetsHaveALine_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("written");
    QTest::newRow("low, at depth 2") << 2 << 1 << true;
    QTest::newRow("low, at depth 3") << 3 << 1 << false;
    QTest::newRow("39, at depth 3") << 3 << 39 << false;
    QTest::newRow("40, at depth 3") << 3 << 40 << true;
    QTest::newRow("40, at depth 8") << 8 << 40 << true;
    QTest::newRow("39, at depth 8") << 8 << 39 << false;
}

void AlturasWidgetsTest::belowTheThirdLevelOnlyTallWidgetsHaveALine()
{
    QFETCH(int, depth);
    QFETCH(int, height);
    QFETCH(bool, written);
    const auto window = shownWindow();
    const auto* asking = shown(new Asking({500, height}, window.get()));
    const QString line =
        QString("%1Asking  min=500x%2  actual=7x9\n").arg(QString(2 * depth, ' ')).arg(height);
    QCOMPARE(alturasDelArbol(asking, depth), written ? line : "");
}

void AlturasWidgetsTest::childrenOfAWidgetWithoutALineAreSeen()
{
    const auto window = shownWindow();
    auto* low = shown(new Asking({9, 9}, window.get()));
    shown(new Asking({9, 90}, low));
    QCOMPARE(alturasDelArbol(low, 4), "          Asking  min=9x90  actual=7x9\n");
}

void AlturasWidgetsTest::theWalkEndsAtTheNinthLevel()
{
    const auto window = shownWindow();
    QWidget* parent = window.get();
    for (int depth = 1; depth <= 15; ++depth)
        parent = shown(new Asking({9, 100 + depth}, parent));
    const QString text = alturasDelArbol(window.get());
    QCOMPARE(linesOf(text), 10);
    QVERIFY(text.endsWith(QString(18, ' ') + "Asking  min=9x109  actual=7x9\n"));
}

void AlturasWidgetsTest::windowsOfAWindowAreNoPartOfIt()
{
    const auto window = shownWindow();
    auto* dialog = new QDialog(window.get());
    shown(dialog);
    QCOMPARE(linesOf(alturasDelArbol(window.get())), 1);
    QCOMPARE(linesOf(alturasDelArbol(dialog)), 1);
}

void AlturasWidgetsTest::otherObjectsAreNoPartOfIt()
{
    const auto window = shownWindow();
    new QTimer(window.get());
    auto* holder = new QObject(window.get());
    holder->setObjectName("ribbon");
    QCOMPARE(linesOf(alturasDelArbol(window.get())), 1);
}

void AlturasWidgetsTest::twoSecondsLaterTheFileIsWrittenOnce()
{
    const QTemporaryDir dir;
    const QString empty = dir.filePath("empty");
    QVERIFY(QDir().mkpath(empty) && QDir::setCurrent(empty));
    const QString path = dir.filePath("alturas ñ.txt");

    qunsetenv("MEDIR_ALTURAS");
    medirAlturasSiHaceFalta();
    qputenv("MEDIR_ALTURAS", "");
    medirAlturasSiHaceFalta();
    qputenv("MEDIR_ALTURAS", dir.path().toUtf8());
    medirAlturasSiHaceFalta();
    qputenv("MEDIR_ALTURAS", path.toUtf8());
    medirAlturasSiHaceFalta();
    // The variable is read at once, the widgets when the time has come.
    qputenv("MEDIR_ALTURAS", dir.filePath("otro.txt").toUtf8());
    const auto window = shownWindow();
    const auto other = shownWindow();
    other->setObjectName("otra");
    shown(new Asking({120, 33}, other.get()));

    QTest::qWait(1500);
    QVERIFY(!QFile::exists(path));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path), 3000);
    QTRY_VERIFY(bytesOf(path).size() > 0);
    QByteArrayList found = bytesOf(path).split('\n');
    std::ranges::sort(found);
    QByteArrayList expected =
        (alturasDelArbol(window.get()) + alturasDelArbol(other.get())).toUtf8().split('\n');
    expected.removeLast();
    expected.append("");
    std::ranges::sort(expected);
    QCOMPARE(found, expected);
    QVERIFY(!QFile::exists(dir.filePath("otro.txt")));
    QVERIFY(QDir(empty).isEmpty());
    QVERIFY(QFile::remove(path));
    QTest::qWait(600);
    QVERIFY(!QFile::exists(path));
    QDir::setCurrent(QDir::rootPath());
}

VELTA_TEST(AlturasWidgetsTest)

} // namespace AlturasWidgetsTests

#include "AlturasWidgetsTest.moc"
