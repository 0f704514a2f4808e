#include "shell/StaleHover.h"

#include "shell/theme/ThemeManager.h"
#include "support/Contrast.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace StaleHoverTests {

/// A window with a box and a button, and the mouse that comes and goes.
class StaleHoverTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theMarkOfTheMouseIsSeen();
    void aBoxLosesItsFrameWithItsList_data();
    void aBoxLosesItsFrameWithItsList();
    void aBoxUnderTheMouseKeepsItsFrame();
    void aButtonLosesItsFrameWithItsDialog();
    void aButtonLosesItsFrameWithAMenu();

private:
    /// Over the middle of a widget, wherever that is on the screen.
    void moveTo(QWidget& widget)
    {
        const QPoint place = widget.mapTo(widget.window(), widget.rect().center());
        QCursor::setPos(widget.window()->mapToGlobal(place));
        QTest::mouseMove(widget.window()->windowHandle(), place);
        QApplication::processEvents();
    }

    /// What X11 comes to when the mouse moves on over a list: nobody tells what was under it. The
    /// screen of the tests tells.
    void missTheLeaveOf(QWidget& widget)
    {
        moveTo(*elsewhere_);
        widget.setAttribute(Qt::WA_UnderMouse);
        QVERIFY(widget.underMouse());
    }

    QImage pictureOf(QWidget& widget) { return Contrast::pictureOf(*window_, widget.geometry()); }

    UserHome home_;
    std::unique_ptr<QWidget> window_;
    std::unique_ptr<StaleHover> staleHover_;
    QComboBox* box_ = nullptr;
    QPushButton* button_ = nullptr;
    QWidget* elsewhere_ = nullptr;
};

void StaleHoverTest::init()
{
    ThemeManager::instance()->setDark(false);
    staleHover_ = std::make_unique<StaleHover>();
    window_ = std::make_unique<QWidget>();
    window_->resize(300, 600);
    auto* layout = new QVBoxLayout(window_.get());
    box_ = new QComboBox;
    box_->addItems({"C / Do", "D / Re"});
    button_ = new QPushButton("Buscar");
    elsewhere_ = new QWidget;
    layout->addWidget(box_);
    layout->addWidget(button_);
    layout->addWidget(elsewhere_, 1);
    window_->show();
    QVERIFY(QTest::qWaitForWindowExposed(window_.get()));
    elsewhere_->setFocus();
    moveTo(*elsewhere_);
}

void StaleHoverTest::cleanup()
{
    window_.reset();
    staleHover_.reset();
    qApp->setStyleSheet(QString());
}

void StaleHoverTest::theMarkOfTheMouseIsSeen()
{
    for (QWidget* widget : {static_cast<QWidget*>(box_), static_cast<QWidget*>(button_)}) {
        const QImage before = pictureOf(*widget);
        moveTo(*widget);
        QVERIFY(widget->underMouse());
        QVERIFY(pictureOf(*widget) != before);
        moveTo(*elsewhere_);
        QCOMPARE(pictureOf(*widget), before);
    }
}

void StaleHoverTest::aBoxLosesItsFrameWithItsList_data()
{
    QTest::addColumn<bool>("chosen");
    QTest::newRow("by a choice") << true;
    QTest::newRow("given up") << false;
}

void StaleHoverTest::aBoxLosesItsFrameWithItsList()
{
    QFETCH(bool, chosen);
    const QImage before = pictureOf(*box_);
    moveTo(*box_);
    box_->showPopup();
    QTRY_VERIFY(box_->view()->isVisible());
    missTheLeaveOf(*box_);
    QTest::keyClick(box_->view(), chosen ? Qt::Key_Return : Qt::Key_Escape);
    QTRY_VERIFY(!box_->view()->isVisible());
    QTRY_VERIFY(!box_->underMouse());
    elsewhere_->setFocus();
    QCOMPARE(pictureOf(*box_), before);
}

void StaleHoverTest::aBoxUnderTheMouseKeepsItsFrame()
{
    moveTo(*box_);
    box_->showPopup();
    QTRY_VERIFY(box_->view()->isVisible());
    box_->hidePopup();
    QTRY_VERIFY(!box_->view()->isVisible());
    moveTo(*box_);
    QVERIFY(box_->underMouse());
}

void StaleHoverTest::aButtonLosesItsFrameWithItsDialog()
{
    const QImage before = pictureOf(*button_);
    moveTo(*button_);
    QDialog dialog(window_.get());
    dialog.open();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    missTheLeaveOf(*button_);
    dialog.reject();
    QTRY_VERIFY(!button_->underMouse());
    elsewhere_->setFocus();
    QCOMPARE(pictureOf(*button_), before);
}

void StaleHoverTest::aButtonLosesItsFrameWithAMenu()
{
    const QImage before = pictureOf(*button_);
    moveTo(*button_);
    QMenu menu(window_.get());
    menu.addAction("Acorde I");
    menu.popup(window_->mapToGlobal(elsewhere_->geometry().center()));
    QTRY_VERIFY(menu.isVisible());
    missTheLeaveOf(*button_);
    QTest::keyClick(&menu, Qt::Key_Escape);
    QTRY_VERIFY(!button_->underMouse());
    QCOMPARE(pictureOf(*button_), before);
}

VELTA_TEST(StaleHoverTest)

} // namespace StaleHoverTests

#include "StaleHoverTest.moc"
