#include "shell/QtTexts.h"

#include "support/TestProgram.h"

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

namespace QtTextsTests {

/// What Qt itself says to the user.
class QtTextsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void questionsSpeakAsTheProgramDoes();
    void filesAndFoldersAreCalledAsTheProgramCallsThem();
    void keysAreCalledAsTheProgramCallsThem_data();
    void keysAreCalledAsTheProgramCallsThem();
    void whatIsNotSpokenOfStaysAsItIs();

private:
    QtTexts texts_;
};

void QtTextsTest::initTestCase()
{
    texts_.loadSpanish();
    QVERIFY(QCoreApplication::installTranslator(&texts_));
}

void QtTextsTest::cleanupTestCase()
{
    QCoreApplication::removeTranslator(&texts_);
}

void QtTextsTest::questionsSpeakAsTheProgramDoes()
{
    QCOMPARE(QFileDialog::tr("%1 already exists.\nDo you want to replace it?"),
             "%1 ya existe.\n¿Querés reemplazarlo?");
    QCOMPARE(QFileDialog::tr("Are you sure you want to delete '%1'?"),
             "¿Seguro que querés borrar «%1»?");
}

void QtTextsTest::filesAndFoldersAreCalledAsTheProgramCallsThem()
{
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    QStringList words;
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        words.append(label->text());
    QVERIFY2(words.contains("&Nombre de archivo:"), qPrintable(words.join(", ")));
    for (const QString& word : words)
        QVERIFY2(!word.contains("fichero", Qt::CaseInsensitive), qPrintable(word));
    const auto* model = dialog.findChild<QAbstractItemModel*>("qt_filesystem_model");
    QVERIFY(model);
    QCOMPARE(model->headerData(3, Qt::Horizontal).toString(), "Cambiado");
}

void QtTextsTest::keysAreCalledAsTheProgramCallsThem_data()
{
    QTest::addColumn<QKeyCombination>("keys");
    QTest::addColumn<QString>("words");
    QTest::newRow("new work") << (Qt::CTRL | Qt::Key_N) << "Ctrl+N";
    QTest::newRow("stop") << (Qt::SHIFT | Qt::Key_Space) << "Shift+Espacio";
    QTest::newRow("redo") << (Qt::CTRL | Qt::SHIFT | Qt::Key_Z) << "Ctrl+Shift+Z";
    QTest::newRow("enter") << QKeyCombination(Qt::Key_Return) << "Enter";
    QTest::newRow("MIDI") << (Qt::CTRL | Qt::ALT | Qt::Key_E) << "Ctrl+Alt+E";
}

void QtTextsTest::keysAreCalledAsTheProgramCallsThem()
{
    QFETCH(QKeyCombination, keys);
    QFETCH(QString, words);
    QCOMPARE(QKeySequence(keys).toString(QKeySequence::NativeText), words);
}

void QtTextsTest::whatIsNotSpokenOfStaysAsItIs()
{
    QCOMPARE(QCoreApplication::translate("MainWindow", "Veltas"), "Veltas");
    QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), "Cancelar");
}

VELTA_TEST(QtTextsTest)

} // namespace QtTextsTests

#include "QtTextsTest.moc"
