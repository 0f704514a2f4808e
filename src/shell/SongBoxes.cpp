#include "shell/SongBoxes.h"

#include "model/Song.h"
#include "shell/Meters.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QSpinBox>

#include <algorithm>

namespace {

constexpr int kPitchClasses = 12;
constexpr int kSlowest = 40;
constexpr int kFastest = 240;

void addMeter(QComboBox& box, const TimeSignature& meter)
{
    box.addItem(meterText(meter), QVariant::fromValue(meter));
}

} // namespace

QComboBox* SongBoxes::meters()
{
    auto* box = new QComboBox;
    for (const TimeSignature& meter : kOfferedMeters)
        addMeter(*box, meter);
    return box;
}

void SongBoxes::showMeter(QComboBox& box, const TimeSignature& meter)
{
    while (box.count() > static_cast<int>(kOfferedMeters.size()))
        box.removeItem(box.count() - 1);
    const auto offered = std::ranges::find(kOfferedMeters, meter);
    if (offered == kOfferedMeters.end())
        addMeter(box, meter);
    box.setCurrentIndex(static_cast<int>(offered - kOfferedMeters.begin()));
}

QComboBox* SongBoxes::keys(const QString& pattern)
{
    auto* box = new QComboBox;
    box->setMaxVisibleItems(kPitchClasses);
    for (int pitchClass = 0; pitchClass < kPitchClasses; ++pitchClass)
        box->addItem(pattern.arg(KeySignature::letterName(pitchClass),
                                 KeySignature::solfegeName(pitchClass)));
    return box;
}

QComboBox* SongBoxes::modes()
{
    auto* box = new QComboBox;
    box->addItems({QCoreApplication::translate("Modos", "Mayor"),
                   QCoreApplication::translate("Modos", "Menor")});
    return box;
}

QSpinBox* SongBoxes::tempo()
{
    auto* box = new QSpinBox;
    box->setRange(kSlowest, kFastest);
    box->setValue(Song::kDefaultBpm);
    return box;
}
