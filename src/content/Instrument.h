#pragma once

#include <QString>

/// The family under which an instrument is listed, and by which it finds a stand-in.
enum class InstrumentCategory : qint32 {
    Piano = 0,
    Strings = 1,
    Percussion = 2,
    Bass = 3,
    Winds = 4,
    Synth = 5,
    Folklorico = 6
};

/// Where the sound of an instrument comes from.
enum class InstrumentSource : qint32 { GeneralMidiBank = 0, CustomRecordedBank = 1 };

/// Something that a track or a loop layer may name by its id.
struct Instrument {
    QString id;
    /// Shown to users.
    QString name;
    InstrumentCategory category = InstrumentCategory::Piano;
    InstrumentSource source = InstrumentSource::GeneralMidiBank;
    /// Zero-based.
    qint32 generalMidiProgram = 0;
    /// For a recorded instrument, its bank relative to the bank root, with forward slashes.
    QString soundfontBankPath;

    friend bool operator==(const Instrument&, const Instrument&) = default;
};

/// The word of a category in content packages; "Piano" for a value that names none.
QString instrumentCategoryToString(InstrumentCategory category);

/// The category of a word, compared exactly; Piano for any other text.
InstrumentCategory instrumentCategoryFromString(const QString& text);

/// The word of a source; "GeneralMidiBank" for a value that names none.
QString instrumentSourceToString(InstrumentSource source);

/// The source of a word, compared exactly; GeneralMidiBank for any other text.
InstrumentSource instrumentSourceFromString(const QString& text);
