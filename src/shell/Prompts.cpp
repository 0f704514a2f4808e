#include "shell/Prompts.h"

#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>

namespace {

/// Texts hold the names of works, which must not be taken for markup.
QMessageBox::StandardButton showBox(QWidget* parent, QMessageBox::Icon icon, const QString& title,
                                    const QString& text, QMessageBox::StandardButtons buttons)
{
    QMessageBox box(icon, title, text, buttons, parent);
    box.setTextFormat(Qt::PlainText);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

/// A work may be called "Vals 3/4" or "A: la ida", which must not lead a dialog elsewhere.
QString inCurrentFolder(QString fileName)
{
    return QDir::current().filePath(fileName.replace(u'/', u'_').replace(u'\\', u'_'));
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
                                         QMessageBox::StandardButtons buttons)
{
    return showBox(parent, QMessageBox::Question, title, text, buttons);
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
    const QString path =
        QFileDialog::getSaveFileName(parent, title, inCurrentFolder(proposal), filter);
    return path.isEmpty() ? std::nullopt : std::optional(path);
}

bool Prompts::run(QDialog& dialog)
{
    return dialog.exec() == QDialog::Accepted;
}
