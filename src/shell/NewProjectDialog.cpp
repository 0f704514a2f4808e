#include "shell/NewProjectDialog.h"

#include "shell/Meters.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QSpinBox>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kPitchClasses = 12;

QComboBox* meterBox()
{
    auto* box = new QComboBox;
    for (const TimeSignature& meter : kOfferedMeters)
        box->addItem(meterText(meter), QVariant::fromValue(meter));
    return box;
}

QComboBox* rootBox()
{
    auto* box = new QComboBox;
    box->setMaxVisibleItems(kPitchClasses);
    for (int pitchClass = 0; pitchClass < kPitchClasses; ++pitchClass)
        box->addItem(u"%1 / %2"_s.arg(KeySignature::solfegeName(pitchClass),
                                      KeySignature::letterName(pitchClass)));
    return box;
}

} // namespace

NewProjectDialog::NewProjectDialog(QWidget* parent)
    : QDialog(parent), name_(new QLineEdit(tr("Mi canción"))), meter_(meterBox()), root_(rootBox()),
      mode_(new QComboBox), bpm_(new QSpinBox)
{
    setWindowTitle(tr("Nuevo proyecto"));
    name_->selectAll();
    mode_->addItems({tr("Mayor"), tr("Menor")});
    bpm_->setRange(40, 240);
    bpm_->setValue(120);

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
