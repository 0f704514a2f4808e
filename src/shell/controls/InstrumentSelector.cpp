#include "shell/controls/InstrumentSelector.h"

#include "content/InstrumentLibrary.h"

#include <QSignalBlocker>

namespace {

/// Letters that the box has room for when it is at its narrowest.
constexpr int kLeastLetters = 10;

} // namespace

InstrumentSelector::InstrumentSelector(InstrumentLibrary* library, QWidget* parent)
    : QComboBox(parent), library_(library)
{
    // The names come from packages, and a long one must not widen the column that the box is in.
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(kLeastLetters);
    repopulate();
    if (library_)
        connect(library_, &InstrumentLibrary::instrumentsChanged, this,
                &InstrumentSelector::repopulate);
    connect(this, &QComboBox::currentIndexChanged, this, &InstrumentSelector::announce);
}

void InstrumentSelector::setCurrentInstrument(const QString& id)
{
    for (int index = 0; index < count(); ++index) {
        if (itemData(index).toString() == id) {
            const QSignalBlocker blocker(this);
            setCurrentIndex(index);
            return;
        }
    }
}

QString InstrumentSelector::currentInstrumentId() const
{
    return currentData().toString();
}

void InstrumentSelector::repopulate()
{
    if (!library_)
        return;
    const QString former = currentInstrumentId();
    const QSignalBlocker blocker(this);
    clear();
    for (const Instrument& instrument : library_->instruments()) {
        const bool approximate = instrument.source == InstrumentSource::CustomRecordedBank &&
                                 !library_->customBankAvailable(instrument);
        addItem(approximate ? instrument.name + tr(" (aprox. GM)") : instrument.name,
                instrument.id);
    }
    if (!former.isEmpty())
        setCurrentInstrument(former);
}

void InstrumentSelector::announce(int index)
{
    const QString id = itemData(index).toString();
    if (!id.isEmpty())
        emit instrumentSelected(id);
}
