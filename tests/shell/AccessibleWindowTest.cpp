#include "BrowserStage.h"
#include "shell/theme/ThemeManager.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/ScreenListener.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerHeaderColumn.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoKeyboardWidget.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>

namespace AccessibleWindowTests {

using namespace ProjectBuilder;

namespace {

QAccessibleInterface* partOf(QObject* widget)
{
    return QAccessible::queryAccessibleInterface(widget);
}

/// What a user works, but for what the toolkit puts into its own controls.
bool isControl(const QWidget* widget)
{
    if (widget->objectName().startsWith("qt_") || qobject_cast<const QScrollBar*>(widget) ||
        qobject_cast<const QAbstractSpinBox*>(widget->parentWidget()))
        return false;
    return qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           qobject_cast<const QAbstractSlider*>(widget) ||
           qobject_cast<const QAbstractSpinBox*>(widget) ||
           qobject_cast<const QLineEdit*>(widget) ||
           (widget->focusPolicy() & Qt::TabFocus && !widget->focusProxy());
}

QByteArray told(const QWidget* widget)
{
    return widget->metaObject()->className() + (' ' + widget->objectName().toUtf8());
}

} // namespace

/// The window for those who hear it.
class AccessibleWindowTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void everyControlHasANameAndARole();
    void everyControlOfAVoiceHasAName();
    void whatHoldsAValueTellsIt();
    void boxesAreCalledByTheirCaptions();
    void noTwoControlsOfAPartAreCalledAlike();
    void previewsTellWhatTheyPlay();
    void childrenFollowEditsAndUndo();
    void childrenFollowAnotherWork();
    void everyPartCanBeWalkedAtAnyTime();

private:
    QList<QWidget*> controls()
    {
        QList<QWidget*> found;
        for (QWidget* widget : stage_->window().findChildren<QWidget*>()) {
            if (widget->isVisible() && isControl(widget))
                found.append(widget);
        }
        return found;
    }

    PianoRollCanvas& roll() { return *stage_->window().findChild<PianoRollCanvas*>(); }

    TrackArranger& arranger() { return *stage_->window().findChild<TrackArranger*>(); }

    QStringList notes() { return ScreenListener::namesIn(roll().view()); }

    QStringList blocks() { return ScreenListener::namesIn(arranger().view()); }

    std::unique_ptr<ScreenListener> listener_;
    std::unique_ptr<WindowStage> stage_;
};

void AccessibleWindowTest::init()
{
    FluidSpy::reset();
    listener_ = std::make_unique<ScreenListener>();
    stage_ = std::make_unique<WindowStage>();
    writeBytes(stage_->home().filePath("resources/loops/installed/rock.content.json"),
               rockWithABass().package());
    QVERIFY(stage_->showWindow());
}

void AccessibleWindowTest::cleanup()
{
    stage_.reset();
    listener_.reset();
}

void AccessibleWindowTest::everyControlHasANameAndARole()
{
    QVERIFY(controls().size() > 40);
    for (QWidget* widget : controls()) {
        const QAccessibleInterface* part = partOf(widget);
        QVERIFY2(part, told(widget));
        QVERIFY2(!part->text(QAccessible::Name).isEmpty(), told(widget));
        QVERIFY2(part->role() != QAccessible::NoRole && part->role() != QAccessible::Client,
                 told(widget));
    }
    const QList<QWidget*> parts{roll().keyboard(),
                                roll().view(),
                                arranger().view(),
                                arranger().headerColumn(),
                                &stage_->ribbon(),
                                stage_->window().findChild<TrackHeaderPanel*>(),
                                stage_->window().findChild<LoopBrowser*>()};
    for (QWidget* part : parts) {
        QVERIFY2(!partOf(part)->text(QAccessible::Name).isEmpty(), part->metaObject()->className());
        QVERIFY2(partOf(part)->role() != QAccessible::Client, part->metaObject()->className());
    }
}

void AccessibleWindowTest::everyControlOfAVoiceHasAName()
{
    stage_->song().audioTracks = {voiceTrack({clip("a.wav")})};
    emit stage_->song().changed();
    arranger().selectAudioTrack(0);
    QStringList names;
    for (QWidget* widget :
         stage_->window().findChild<TrackHeaderPanel*>()->findChildren<QWidget*>()) {
        if (widget->isVisible() && isControl(widget))
            names.append(partOf(widget)->text(QAccessible::Name));
    }
    QCOMPARE(names, QStringList({"Nombre", "Volumen", "Mute", "Solo", "Afinar voz",
                                 "Cuánto se corrige la afinación"}));
}

void AccessibleWindowTest::whatHoldsAValueTellsIt()
{
    for (QWidget* widget : controls()) {
        QAccessibleInterface* part = partOf(widget);
        if (qobject_cast<QAbstractSlider*>(widget) || qobject_cast<QAbstractSpinBox*>(widget))
            QVERIFY2(part->valueInterface() && part->valueInterface()->currentValue().isValid(),
                     told(widget));
        if (const auto* box = qobject_cast<QComboBox*>(widget))
            QCOMPARE(part->text(QAccessible::Value), box->currentText());
        if (const auto* button = qobject_cast<QAbstractButton*>(widget))
            QCOMPARE(bool(part->state().checked), button->isChecked());
    }
}

void AccessibleWindowTest::boxesAreCalledByTheirCaptions()
{
    QStringList names;
    for (QComboBox* box : stage_->window().findChildren<QComboBox*>()) {
        names.append(partOf(box)->text(QAccessible::Name));
        QCOMPARE(partOf(box)->role(), QAccessible::ComboBox);
        QCOMPARE(partOf(box)->child(0)->parent(), partOf(box));
    }
    names.sort();
    QCOMPARE(names, QStringList({"Capa", "Compás", "Estilo", "Grilla", "Instrumento", "Modo",
                                 "Ritmo", "Tonalidad"}));
    auto* mode = Widgets::over<QComboBox>(stage_->ribbon(), "Modo");
    partOf(mode)->actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
    QVERIFY(mode->view()->isVisible());
    QVERIFY(partOf(mode)->state().expanded);
    partOf(mode)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(!mode->view()->isVisible());
}

void AccessibleWindowTest::noTwoControlsOfAPartAreCalledAlike()
{
    QSet<QString> seen;
    for (QWidget* widget : controls()) {
        const QString name = partOf(widget)->text(QAccessible::Name);
        QVERIFY2(!seen.contains(name), qPrintable(name));
        seen.insert(name);
    }
}

void AccessibleWindowTest::previewsTellWhatTheyPlay()
{
    QStringList names;
    for (QToolButton* button :
         stage_->window().findChild<LoopBrowser*>()->findChildren<QToolButton*>())
        names.append(partOf(button)->text(QAccessible::Name));
    QCOMPARE(names, QStringList({"Normal 1", "Escuchar Normal 1", "Normal 2", "Escuchar Normal 2",
                                 "Final 1", "Escuchar Final 1"}));
}

void AccessibleWindowTest::childrenFollowEditsAndUndo()
{
    QTest::keyClick(&roll(), Qt::Key_E);
    QTest::keyClick(&roll(), Qt::Key_Return);
    QCOMPARE(notes(), QStringList({"Mi 4, compás 1, corchea"}));
    QAccessibleInterface* note = partOf(roll().view())->child(0);
    QCOMPARE(blocks(), QStringList({"Melodía (1 nota), compás 1, 8 compases"}));
    stage_->choose("Deshacer");
    QCOMPARE(notes(), QStringList());
    // The place may hold a note again.
    stage_->choose("Rehacer");
    QCOMPARE(notes(), QStringList({"Mi 4, compás 1, corchea"}));
    note = partOf(roll().view())->child(0);
    QVERIFY(note->isValid());
    arranger().setFocus();
    QTest::keyClick(&arranger(), Qt::Key_G);
    QCOMPARE(blocks().first(), QStringLiteral("Acorde V, Sol mayor, compás 1, 1 compás"));
    stage_->choose("Deshacer");
    QCOMPARE(blocks().size(), 1);
}

void AccessibleWindowTest::childrenFollowAnotherWork()
{
    QTest::keyClick(&roll(), Qt::Key_Return);
    QAccessibleInterface* note = partOf(roll().view())->child(0);
    QAccessibleInterface* block = partOf(arranger().view())->child(0);
    QVERIFY(note->isValid() && block->isValid());
    const QAccessible::Id id = QAccessible::uniqueId(note);
    stage_->window().startBlankProject();
    QCOMPARE(notes(), QStringList());
    const QAccessibleInterface* left = QAccessible::accessibleInterface(id);
    QVERIFY(!left || !left->isValid());
    QCOMPARE(blocks(), QStringList({"Melodía (0 notas), compás 1, 8 compases"}));
    stage_->destroyWindow();
    QVERIFY(!QAccessible::accessibleInterface(id));
}

namespace {

/// Asks everything of everything, as a screen reader may.
int walk(QAccessibleInterface* part, int depth = 0)
{
    if (!part || !part->isValid() || depth > 30)
        return 0;
    for (int kind = QAccessible::Name; kind <= QAccessible::Accelerator; ++kind)
        part->text(static_cast<QAccessible::Text>(kind));
    part->rect();
    part->role();
    part->state();
    part->focusChild();
    int count = 1;
    for (int i = 0; i < part->childCount(); ++i)
        count += walk(part->child(i), depth + 1);
    return count;
}

} // namespace

void AccessibleWindowTest::everyPartCanBeWalkedAtAnyTime()
{
    MainWindow& window = stage_->window();
    QVERIFY(walk(partOf(&window)) > 100);
    for (int i = 0; i < 6; ++i) {
        QTest::keyClick(&roll(), Qt::Key_Return);
        walk(partOf(&window));
    }
    for (int i = 0; i < 4; ++i) {
        stage_->choose("Deshacer");
        walk(partOf(&window));
    }
    stage_->choose("Agregar velta");
    walk(partOf(&window));
    stage_->choose("Quitar velta");
    stage_->choose("Quitar velta");
    walk(partOf(&window));
    window.startBlankProject();
    walk(partOf(&window));
}

VELTA_TEST(AccessibleWindowTest)

} // namespace AccessibleWindowTests

#include "AccessibleWindowTest.moc"
