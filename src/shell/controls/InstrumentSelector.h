#pragma once

#include <QComboBox>

class InstrumentLibrary;

/// The box in which a track chooses its instrument. It lists the whole library and follows it, and
/// marks what sounds only approximately because its recorded bank is not installed.
class InstrumentSelector : public QComboBox {
    Q_OBJECT

public:
    /// The library is not owned; without one the box stays empty.
    explicit InstrumentSelector(InstrumentLibrary* library, QWidget* parent = nullptr);

    /// Selects an instrument without emitting anything. An id that is not listed leaves the
    /// selection as it is.
    void setCurrentInstrument(const QString& id);

    /// Empty where nothing is selected.
    QString currentInstrumentId() const;

    /// Lists the library anew, looking for the banks on disk. The selection stays, and nothing is
    /// emitted.
    void repopulate();

signals:
    /// The user has chosen another instrument.
    void instrumentSelected(const QString& id);

private:
    void announce(int index);

    InstrumentLibrary* library_;
};
