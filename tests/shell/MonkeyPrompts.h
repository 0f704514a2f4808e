#pragma once

#include "shell/Prompts.h"
#include "support/SeededRandom.h"
#include "support/Widgets.h"

#include <QDialog>
#include <QDir>

#include <optional>

/// Answers every question at random, without a dialog but for those of the program's own.
class MonkeyPrompts : public Prompts {
public:
    MonkeyPrompts(SeededRandom& random, const QDir& files) : random_(random), files_(files) {}

    /// Exports of songs this long would leave no time for anything else.
    bool mayExport = true;

    void warn(QWidget*, const QString&, const QString&) override {}

    void inform(QWidget*, const QString&, const QString&) override {}

    bool suggest(QWidget*, const QString&, const QString&, const QString&) override
    {
        return false;
    }

    QMessageBox::StandardButton ask(QWidget*, const QString&, const QString&,
                                    QMessageBox::StandardButtons buttons,
                                    QMessageBox::StandardButton) override
    {
        QList<QMessageBox::StandardButton> offered;
        for (const auto button : {QMessageBox::Ok, QMessageBox::Save, QMessageBox::Discard,
                                  QMessageBox::Cancel, QMessageBox::Yes, QMessageBox::No}) {
            if (buttons.testFlag(button))
                offered.append(button);
        }
        return offered.isEmpty() ? QMessageBox::Cancel : random_.pick(offered);
    }

    std::optional<QString> askText(QWidget*, const QString&, const QString&,
                                   const QString& text) override
    {
        static const QStringList names{"",        "Zamba",           "<b>%1</b> & \"x\"",
                                       "Ñandú 😀", QString(500, 'x'), "../arriba"};
        return random_.oneIn(4) ? std::nullopt
                                : std::optional(random_.oneIn(3) ? text : random_.pick(names));
    }

    std::optional<QString> askOpenFile(QWidget*, const QString&, const QString&) override
    {
        static const QStringList names{"voz.wav", "texto.wav", "falta.wav"};
        return random_.oneIn(4) ? std::nullopt
                                : std::optional(files_.filePath(random_.pick(names)));
    }

    std::optional<QString> askSaveFile(QWidget*, const QString&, const QString& proposal,
                                       const QString&) override
    {
        return mayExport && random_.oneIn(2) ? std::optional(files_.filePath("out_" + proposal))
                                             : std::nullopt;
    }

    bool run(QDialog& dialog) override
    {
        dialog.show();
        for (int clicks = random_.between(0, 4); clicks > 0; --clicks) {
            const auto widgets = dialog.findChildren<QWidget*>();
            if (!widgets.isEmpty())
                Widgets::click(random_.pick(widgets));
        }
        if (random_.oneIn(2))
            dialog.accept();
        return dialog.result() == QDialog::Accepted;
    }

private:
    SeededRandom& random_;
    QDir files_;
};
