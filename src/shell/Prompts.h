#pragma once

#include <QMessageBox>
#include <QString>

#include <optional>

class QDialog;
class QWidget;

/// Every message and question to the user. What is asked here can be answered without a dialog by
/// whoever takes its place.
class Prompts {
public:
    Prompts() = default;
    virtual ~Prompts() = default;
    Prompts(const Prompts&) = delete;
    Prompts& operator=(const Prompts&) = delete;

    /// The real dialogs. Modal, over `parent`, with texts taken as plain text.
    static Prompts& dialogs();

    virtual void warn(QWidget* parent, const QString& title, const QString& text);
    virtual void inform(QWidget* parent, const QString& title, const QString& text);

    /// The button that was chosen; that of giving up when the question was closed. `byDefault` is
    /// the one that Enter chooses; none leaves that to the system.
    virtual QMessageBox::StandardButton ask(
        QWidget* parent, const QString& title, const QString& text,
        QMessageBox::StandardButtons buttons,
        QMessageBox::StandardButton byDefault = QMessageBox::NoButton);

    /// Informs, and offers one thing to do about it. True when the user wants that.
    virtual bool suggest(QWidget* parent, const QString& title, const QString& text,
                         const QString& action);

    /// Warns, and offers one way out beside giving up what the warning is about. True when the way
    /// out was taken. A key alone does not give up.
    virtual bool offer(QWidget* parent, const QString& title, const QString& text,
                       const QString& wayOut);

    /// One line of text, or nothing when the user gave up.
    virtual std::optional<QString> askText(QWidget* parent, const QString& title,
                                           const QString& label, const QString& text);

    /// A file to read, or nothing when the user gave up.
    virtual std::optional<QString> askOpenFile(QWidget* parent, const QString& title,
                                               const QString& filter);

    /// A path to write to, or nothing when the user gave up. `proposal` names a file without its
    /// folder: that of the last answer, or another that takes files (SaveFolder). A name that is
    /// typed without an ending gets the one of the proposal.
    virtual std::optional<QString> askSaveFile(QWidget* parent, const QString& title,
                                               const QString& proposal, const QString& filter);

    /// Shows a dialog of the program's own; true when it was accepted.
    virtual bool run(QDialog& dialog);

private:
    /// Of the last file that was to be written; empty at first.
    QString saveFolder_;
};
