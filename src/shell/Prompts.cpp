#include "shell/Prompts.h"

#include "shell/SaveFolder.h"

#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QPushButton>

namespace {

/// Texts hold the names of works, which must not be taken for markup.
QMessageBox::StandardButton showBox(QWidget* parent, QMessageBox::Icon icon, const QString& title,
                                    const QString& text, QMessageBox::StandardButtons buttons,
                                    QMessageBox::StandardButton byDefault = QMessageBox::NoButton)
{
    QMessageBox box(icon, title, text, buttons, parent);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(byDefault);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

/// A work may be called "Vals 3/4" or "A: la ida", which must not lead a dialog elsewhere.
QString inFolder(const QDir& folder, QString fileName)
{
    return folder.filePath(fileName.replace(u'/', u'_').replace(u'\\', u'_'));
}

/// What file dialogs ask, in their words.
bool mayReplace(QWidget* parent, const QString& title, const QString& path)
{
    const QString question = QFileDialog::tr("%1 already exists.\nDo you want to replace it?")
                                 .arg(QFileInfo(path).fileName());
    return showBox(parent, QMessageBox::Warning, title, question,
                   QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

} // namespace

Prompts& Prompts::dialogs()
{
    static Prompts dialogs;
    return dialogs;
}

void Prompts::warn(QWidget* parent, const QString& title, const QString& text)
{
    showBox(parent, QMessageBox::Warning, title, text, QMessageBox::Ok);
}

void Prompts::inform(QWidget* parent, const QString& title, const QString& text)
{
    showBox(parent, QMessageBox::Information, title, text, QMessageBox::Ok);
}

QMessageBox::StandardButton Prompts::ask(QWidget* parent, const QString& title, const QString& text,
                                         QMessageBox::StandardButtons buttons,
                                         QMessageBox::StandardButton byDefault)
{
    return showBox(parent, QMessageBox::Question, title, text, buttons, byDefault);
}

bool Prompts::suggest(QWidget* parent, const QString& title, const QString& text,
                      const QString& action)
{
    QMessageBox box(QMessageBox::Information, title, text, QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    const QPushButton* button = box.addButton(action, QMessageBox::ActionRole);
    box.setEscapeButton(QMessageBox::Ok);
    box.exec();
    return box.clickedButton() == button;
}

bool Prompts::offer(QWidget* parent, const QString& title, const QString& text,
                    const QString& wayOut)
{
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Discard, parent);
    box.setTextFormat(Qt::PlainText);
    QPushButton* button = box.addButton(wayOut, QMessageBox::AcceptRole);
    box.setDefaultButton(button);
    box.exec();
    return box.clickedButton() == button;
}

std::optional<QString> Prompts::askText(QWidget* parent, const QString& title, const QString& label,
                                        const QString& text)
{
    bool accepted = false;
    const QString answer =
        QInputDialog::getText(parent, title, label, QLineEdit::Normal, text, &accepted);
    return accepted ? std::optional(answer) : std::nullopt;
}

std::optional<QString> Prompts::askOpenFile(QWidget* parent, const QString& title,
                                            const QString& filter)
{
    const QString path = QFileDialog::getOpenFileName(parent, title, QString(), filter);
    return path.isEmpty() ? std::nullopt : std::optional(path);
}

std::optional<QString> Prompts::askSaveFile(QWidget* parent, const QString& title,
                                            const QString& proposal, const QString& filter)
{
    const QDir folder(SaveFolder::after(saveFolder_));
    QString path = QFileDialog::getSaveFileName(parent, title, inFolder(folder, proposal), filter);
    if (path.isEmpty())
        return std::nullopt;
    saveFolder_ = QFileInfo(path).path();
    if (!QFileInfo(path).suffix().isEmpty())
        return path;
    path += u'.' + QFileInfo(proposal).suffix();
    // The dialog has asked for the name as it was typed.
    if (QFileInfo::exists(path) && !mayReplace(parent, title, path))
        return askSaveFile(parent, title, proposal, filter);
    return path;
}

bool Prompts::run(QDialog& dialog)
{
    return dialog.exec() == QDialog::Accepted;
}
