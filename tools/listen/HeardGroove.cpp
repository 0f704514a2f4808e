#include "listen/HeardGroove.h"

#include "music/GrooveTemplate.h"
#include "music/HumanizeSettings.h"

#include <QStringList>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double kMsPerMinute = 60000.0;
constexpr double kLeastMs = 0.5;

double heardMs(const GrooveOffset& offset, int bpm)
{
    return offset.timingOffsetBeats * static_cast<double>(HumanizeSettings{}.intensity) *
           kMsPerMinute / bpm;
}

QString signedMs(double ms)
{
    return (ms > 0 ? u"+"_s : u"−"_s) + QString::number(std::lround(std::abs(ms)));
}

} // namespace

QString heardGroove(const GrooveTemplate& groove, int bpm)
{
    QStringList leans;
    for (const GrooveOffset& offset : groove.offsets) {
        if (const double ms = heardMs(offset, bpm); std::abs(ms) >= kLeastMs)
            leans << u"%1: %2 ms"_s.arg(QString::number(offset.position), signedMs(ms));
    }
    return leans.isEmpty() ? u"sin desvíos"_s : leans.join(u" · "_s);
}
