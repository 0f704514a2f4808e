#include "shell/ShortcutsDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Wide enough for the longest row of both columns.
constexpr QSize kInitialSize(760, 560);

/// As the platform calls them in the user's language.
QString nativeText(const QList<QKeySequence>& keys)
{
    return QKeySequence::listToString(keys, QKeySequence::NativeText);
}

/// Whether a keyboard of a school has a key: the platform has keys for commands beyond the twelve
/// of the upper row, and names keys of their own for some.
bool isOnKeyboards(const QKeySequence& keys)
{
    const int key = keys[0].key();
    return key <= Qt::Key_F12 || (key > Qt::Key_F35 && key < Qt::Key_Back);
}

QList<QKeySequence> keysOf(const QAction& action)
{
    QList<QKeySequence> keys = action.shortcuts();
    keys.removeIf([](const QKeySequence& one) { return !isOnKeyboards(one); });
    return keys;
}

/// The words of a menu without the mark of its letter.
QString plainText(QString text)
{
    return text.remove(u'&');
}

QTreeWidgetItem* addHeading(QTreeWidget* list, const QString& text)
{
    auto* heading = new QTreeWidgetItem(list, {text});
    QFont font = list->font();
    font.setBold(true);
    heading->setFont(0, font);
    heading->setFlags(Qt::ItemIsEnabled);
    return heading;
}

} // namespace

ShortcutsDialog::ShortcutsDialog(const QMenuBar& menus, QWidget* parent)
    : QDialog(parent), list_(new QTreeWidget)
{
    setWindowTitle(tr("Atajos de teclado"));
    resize(kInitialSize);
    list_->setColumnCount(2);
    list_->setHeaderLabels({tr("Qué hace"), tr("Teclas")});
    list_->setRootIsDecorated(false);
    list_->setAccessibleName(windowTitle());
    addMenus(menus);
    addEditors();
    list_->expandAll();
    list_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(list_, 1);
    layout->addWidget(buttons);
}

void ShortcutsDialog::addMenus(const QMenuBar& menus)
{
    for (const QAction* title : menus.actions()) {
        QTreeWidgetItem* heading = nullptr;
        for (const QAction* action : title->menu()->actions()) {
            const QList<QKeySequence> keys = keysOf(*action);
            if (keys.isEmpty())
                continue;
            if (!heading)
                heading = addHeading(list_, plainText(title->text()));
            new QTreeWidgetItem(heading, {plainText(action->text()), nativeText(keys)});
        }
    }
}

void ShortcutsDialog::addEditors()
{
    addRoll();
    addArranger();
}

void ShortcutsDialog::addRoll()
{
    QTreeWidgetItem* roll = addHeading(list_, tr("En el piano roll"));
    new QTreeWidgetItem(roll, {tr("Tocar notas"), u"A-G"_s});
    new QTreeWidgetItem(
        roll, {tr("Tocar notas con sostenido"), nativeText({Qt::SHIFT | Qt::Key_A}) + u"-G"_s});
    new QTreeWidgetItem(roll, {tr("Bajar o subir una octava"), u"Z, X"_s});
    new QTreeWidgetItem(roll, {tr("Escribir en el cabezal la última nota que tocaste"),
                               nativeText({Qt::Key_Return})});
    new QTreeWidgetItem(roll, {tr("Ir a la nota anterior o a la siguiente"),
                               nativeText({Qt::CTRL | Qt::Key_Left, Qt::CTRL | Qt::Key_Right})});
    new QTreeWidgetItem(roll,
                        {tr("Mover las notas seleccionadas"),
                         nativeText({Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down})});
    addBoth(roll);
    new QTreeWidgetItem(roll, {tr("Subir o bajar la vista"),
                               nativeText({Qt::CTRL | Qt::Key_Up, Qt::CTRL | Qt::Key_Down})});
}

void ShortcutsDialog::addArranger()
{
    QTreeWidgetItem* arranger = addHeading(list_, tr("En el arreglo"));
    new QTreeWidgetItem(arranger, {tr("Poner un acorde en el cabezal"), u"A-G"_s});
    new QTreeWidgetItem(arranger, {tr("Con séptima, sin nada seleccionado"),
                                   nativeText({Qt::CTRL | Qt::Key_B}) + u", C, D, F, G"_s});
    new QTreeWidgetItem(arranger, {tr("Con novena"), nativeText({Qt::ALT | Qt::Key_A}) + u"-G"_s});
    new QTreeWidgetItem(
        arranger, {tr("Elegir un acorde, en el carril de acordes"), nativeText({Qt::Key_Return})});
    new QTreeWidgetItem(arranger,
                        {tr("Abrir la melodía, plegar el grupo"), nativeText({Qt::Key_Return})});
    new QTreeWidgetItem(arranger,
                        {tr("Ir al bloque anterior o al siguiente"),
                         nativeText({Qt::CTRL | Qt::Key_Left, Qt::CTRL | Qt::Key_Right})});
    new QTreeWidgetItem(arranger, {tr("Ir al carril de arriba o de abajo"),
                                   nativeText({Qt::CTRL | Qt::Key_Up, Qt::CTRL | Qt::Key_Down})});
    new QTreeWidgetItem(arranger, {tr("Seleccionar también el de arriba o el de abajo"),
                                   nativeText({Qt::CTRL | Qt::SHIFT | Qt::Key_Up,
                                               Qt::CTRL | Qt::SHIFT | Qt::Key_Down})});
    new QTreeWidgetItem(arranger, {tr("Mover los bloques seleccionados"),
                                   nativeText({Qt::Key_Left, Qt::Key_Right})});
    addBoth(arranger);
    addClip(arranger);
}

void ShortcutsDialog::addClip(QTreeWidgetItem* arranger)
{
    new QTreeWidgetItem(arranger, {tr("Subir o bajar el volumen de la voz seleccionada"),
                                   nativeText({Qt::Key_Up, Qt::Key_Down})});
    new QTreeWidgetItem(arranger, {tr("Que la voz seleccionada entre de a poco"),
                                   nativeText({Qt::ALT | Qt::Key_Right, Qt::ALT | Qt::Key_Left})});
    new QTreeWidgetItem(arranger, {tr("Que la voz seleccionada se vaya de a poco"),
                                   nativeText({Qt::ALT | Qt::Key_Up, Qt::ALT | Qt::Key_Down})});
}

void ShortcutsDialog::addBoth(QTreeWidgetItem* editor)
{
    new QTreeWidgetItem(editor,
                        {tr("Alargar o acortar lo seleccionado"),
                         nativeText({Qt::SHIFT | Qt::Key_Left, Qt::SHIFT | Qt::Key_Right})});
    new QTreeWidgetItem(editor, {tr("Seleccionar también lo anterior o lo siguiente"),
                                 nativeText({Qt::CTRL | Qt::SHIFT | Qt::Key_Left,
                                             Qt::CTRL | Qt::SHIFT | Qt::Key_Right})});
    new QTreeWidgetItem(editor, {tr("Borrar lo seleccionado"), nativeText({Qt::Key_Delete})});
    new QTreeWidgetItem(editor, {tr("No seleccionar nada"), nativeText({Qt::Key_Escape})});
    new QTreeWidgetItem(editor, {tr("Mover el cabezal, sin nada seleccionado"),
                                 nativeText({Qt::Key_Left, Qt::Key_Right})});
    new QTreeWidgetItem(
        editor, {tr("Mover el cabezal un compás"), nativeText({Qt::Key_PageUp, Qt::Key_PageDown})});
}
