#include "content/InstrumentLibrary.h"

#include <QFileInfo>
#include <QHash>
#include <QMap>

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

struct BuiltinInstrument {
    QLatin1StringView id;
    const char16_t* name;
    InstrumentCategory category;
    qint32 program;
};

constexpr std::array<BuiltinInstrument, 16> kBuiltins{{
    {"gm_piano"_L1, u"Piano", InstrumentCategory::Piano, 0},
    {"gm_epiano"_L1, u"Piano eléctrico", InstrumentCategory::Piano, 4},
    {"gm_guitarra_nylon"_L1, u"Guitarra criolla (GM)", InstrumentCategory::Strings, 24},
    {"gm_guitarra_electrica"_L1, u"Guitarra eléctrica", InstrumentCategory::Strings, 27},
    {"gm_cuerdas"_L1, u"Cuerdas", InstrumentCategory::Strings, 48},
    {"gm_violin"_L1, u"Violín", InstrumentCategory::Strings, 40},
    {"gm_bajo"_L1, u"Bajo", InstrumentCategory::Bass, 33},
    {"gm_bajo_acustico"_L1, u"Bajo acústico", InstrumentCategory::Bass, 32},
    {"gm_flauta"_L1, u"Flauta", InstrumentCategory::Winds, 73},
    {"gm_flauta_pan"_L1, u"Flauta de pan", InstrumentCategory::Winds, 75},
    {"gm_trompeta"_L1, u"Trompeta", InstrumentCategory::Winds, 56},
    {"gm_saxo"_L1, u"Saxo", InstrumentCategory::Winds, 65},
    {"gm_sintetizador"_L1, u"Sintetizador", InstrumentCategory::Synth, 81},
    {"gm_pad"_L1, u"Pad suave", InstrumentCategory::Synth, 89},
    {"gm_marimba"_L1, u"Marimba", InstrumentCategory::Piano, 12},
    {"gm_bateria"_L1, u"Batería", InstrumentCategory::Percussion, 0},
}};

/// Stand-ins by category, for a recorded instrument that kById does not know.
constexpr std::array<int, 7> kByCategory{0, 48, 117, 33, 73, 81, 24};

int gmFallbackProgramFor(const Instrument& instrument)
{
    static const QMap<QString, int> kById{
        {u"bombo_leguero"_s, 117}, {u"charango"_s, 24},  {u"guitarra_criolla"_s, 24},
        {u"acordeon"_s, 21},       {u"bandoneon"_s, 23}, {u"quena"_s, 75},
    };
    if (const auto row = kById.constFind(instrument.id); row != kById.cend())
        return *row;
    const auto category = static_cast<qint32>(instrument.category);
    const bool known = category >= 0 && category < static_cast<qint32>(kByCategory.size());
    return kByCategory[known ? static_cast<std::size_t>(category) : 0];
}

} // namespace

InstrumentLibrary::InstrumentLibrary(const QString& bankRoot, QObject* parent)
    : InstrumentLibrary(ContentFolder(bankRoot), parent)
{}

InstrumentLibrary::InstrumentLibrary(const ContentFolder& banks, QObject* parent)
    : QObject(parent), banks_(banks)
{}

void InstrumentLibrary::loadBuiltinGmInstruments()
{
    for (const BuiltinInstrument& builtin : kBuiltins) {
        registerInstrument({.id = builtin.id,
                            .name = QString::fromUtf16(builtin.name),
                            .category = builtin.category,
                            .source = InstrumentSource::GeneralMidiBank,
                            .generalMidiProgram = builtin.program,
                            .soundfontBankPath = {}});
    }
}

void InstrumentLibrary::registerInstrument(const Instrument& instrument)
{
    registerInstruments({instrument});
}

void InstrumentLibrary::registerInstruments(const QList<Instrument>& instruments)
{
    QHash<QString, qsizetype> places;
    for (qsizetype place = instruments_.size() - 1; place >= 0; --place)
        places.insert(instruments_.at(place).id, place);
    for (const Instrument& instrument : instruments) {
        if (const auto known = places.constFind(instrument.id); known != places.cend()) {
            instruments_[*known] = instrument;
        } else {
            places.insert(instrument.id, instruments_.size());
            instruments_.append(instrument);
        }
    }
    emit instrumentsChanged();
}

const Instrument* InstrumentLibrary::find(const QString& id) const
{
    const auto found = std::ranges::find(instruments_, id, &Instrument::id);
    return found == instruments_.end() ? nullptr : &*found;
}

QString InstrumentLibrary::customBankAbsolutePath(const Instrument& instrument) const
{
    if (instrument.soundfontBankPath.isEmpty())
        return {};
    return banks_.find(instrument.soundfontBankPath);
}

bool InstrumentLibrary::customBankAvailable(const Instrument& instrument) const
{
    return instrument.source == InstrumentSource::CustomRecordedBank &&
           QFileInfo::exists(customBankAbsolutePath(instrument));
}

int InstrumentLibrary::effectiveGmProgram(const Instrument& instrument) const
{
    return instrument.source == InstrumentSource::GeneralMidiBank
               ? instrument.generalMidiProgram
               : gmFallbackProgramFor(instrument);
}
