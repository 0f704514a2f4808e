#include "shell/controls/ClockText.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

QString clockText(qint64 seconds)
{
    const qint64 shown = std::max<qint64>(0, seconds);
    return u"%1:%2"_s.arg(shown / 60).arg(shown % 60, 2, 10, '0'_L1);
}
