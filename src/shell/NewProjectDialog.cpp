#include "shell/NewProjectDialog.h"

#include "shell/SongBoxes.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QSpinBox>

using namespace Qt::Literals::StringLiterals;

NewProjectDialog::NewProjectDialog(QWidget* parent)
    : QDialog(parent), name_(new QLineEdit(tr("Mi canción"))), meter_(SongBoxes::meters()),
      root_(SongBoxes::keys(u"%2 / %1"_s)), mode_(SongBoxes::modes()), bpm_(SongBoxes::tempo())
{
    setWindowTitle(tr("Nuevo proyecto"));
    name_->selectAll();

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* form = new QFormLayout(this);
    form->addRow(tr("Nombre"), name_);
    form->addRow(tr("Compás"), meter_);
    form->addRow(tr("Tonalidad"), root_);
    form->addRow(tr("Modo"), mode_);
    form->addRow(tr("BPM"), bpm_);
    form->addRow(buttons);
}

QString NewProjectDialog::name() const
{
    return name_->text().trimmed();
}

TimeSignature NewProjectDialog::timeSignature() const
{
    return meter_->currentData().value<TimeSignature>();
}

KeySignature NewProjectDialog::key() const
{
    return {.rootPitchClass = root_->currentIndex(),
            .mode = mode_->currentIndex() == 1 ? KeyMode::Minor : KeyMode::Major};
}

int NewProjectDialog::bpm() const
{
    return bpm_->value();
}
