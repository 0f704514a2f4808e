#include "files/FileNames.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

/// What some system forbids in a name, or takes for a separator, a drive or a stream.
bool isForbidden(QChar character)
{
    return character.category() == QChar::Other_Control ||
           QStringView(u"/\\:*?\"<>|").contains(character);
}

/// Windows has these names stand for devices in every folder, whatever suffix they bear.
bool isDevice(const QString& name)
{
    static const QRegularExpression device(u"^(con|prn|aux|nul|conin\\$|conout\\$|"
                                           "(com|lpt)[0-9\u00B9\u00B2\u00B3]) *(\\.|$)"_s,
                                           QRegularExpression::CaseInsensitiveOption);
    return device.match(name).hasMatch();
}

} // namespace

bool FileNames::isPlain(const QString& name)
{
    return !name.isEmpty() && !name.startsWith(u'.') && name.isValidUtf16() &&
           std::ranges::none_of(name, isForbidden) && !isDevice(name);
}
