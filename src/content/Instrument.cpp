#include "content/Instrument.h"

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

/// By value of InstrumentCategory.
constexpr std::array kCategoryWords{"Piano"_L1, "Strings"_L1, "Percussion"_L1, "Bass"_L1,
                                    "Winds"_L1, "Synth"_L1,   "Folklorico"_L1};

constexpr auto kGeneralMidiBank = "GeneralMidiBank"_L1;
constexpr auto kCustomRecordedBank = "CustomRecordedBank"_L1;

} // namespace

QString instrumentCategoryToString(InstrumentCategory category)
{
    const auto index = static_cast<qint32>(category);
    const bool known = index >= 0 && index < static_cast<qint32>(kCategoryWords.size());
    return kCategoryWords[known ? static_cast<std::size_t>(index) : 0];
}

InstrumentCategory instrumentCategoryFromString(const QString& text)
{
    const auto found = std::ranges::find(kCategoryWords, text);
    if (found == kCategoryWords.end())
        return InstrumentCategory::Piano;
    return static_cast<InstrumentCategory>(found - kCategoryWords.begin());
}

QString instrumentSourceToString(InstrumentSource source)
{
    return source == InstrumentSource::CustomRecordedBank ? kCustomRecordedBank : kGeneralMidiBank;
}

InstrumentSource instrumentSourceFromString(const QString& text)
{
    return text == kCustomRecordedBank ? InstrumentSource::CustomRecordedBank
                                       : InstrumentSource::GeneralMidiBank;
}
