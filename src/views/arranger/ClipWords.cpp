#include "views/arranger/ClipWords.h"

#include "views/MusicWords.h"

#include <QCoreApplication>
#include <QLocale>

#include <array>
#include <cmath>

namespace {

constexpr std::array kHandles{ClipHandle::Gain, ClipHandle::FadeIn, ClipHandle::FadeOut};

QString said(const char* text)
{
    return QCoreApplication::translate("TrackArranger", text);
}

QString seconds(float value)
{
    return QLocale().toString(std::round(static_cast<double>(value) * 100.0) / 100.0, 'g',
                              QLocale::FloatingPointShortest);
}

QString gestureOf(ClipHandle handle)
{
    switch (handle) {
    case ClipHandle::FadeIn:
        return said(QT_TRANSLATE_NOOP("TrackArranger", "Arrastrá, o Alt+← →"));
    case ClipHandle::FadeOut:
        return said(QT_TRANSLATE_NOOP("TrackArranger", "Arrastrá, o Alt+↑ ↓"));
    case ClipHandle::Gain:
        break;
    }
    return said(QT_TRANSLATE_NOOP("TrackArranger", "Arrastrá, o ↑ ↓"));
}

} // namespace

QString ClipWords::level(const ClipLevels& levels, ClipHandle handle)
{
    switch (handle) {
    case ClipHandle::FadeIn:
        return said(QT_TRANSLATE_NOOP("TrackArranger", "Entra de a poco: %1 s"))
            .arg(seconds(levels.fadeIn));
    case ClipHandle::FadeOut:
        return said(QT_TRANSLATE_NOOP("TrackArranger", "Se va de a poco: %1 s"))
            .arg(seconds(levels.fadeOut));
    case ClipHandle::Gain:
        break;
    }
    return said(QT_TRANSLATE_NOOP("TrackArranger", "Volumen: %1 %"))
        .arg(std::round(static_cast<double>(levels.gain) * 100.0));
}

QString ClipWords::tip(const ClipLevels& levels, ClipHandle handle)
{
    return level(levels, handle) + u'\n' + gestureOf(handle);
}

QString ClipWords::changes(const ClipLevels& levels)
{
    return levels == ClipLevels() ? QString() : all(levels);
}

QString ClipWords::all(const ClipLevels& levels)
{
    QStringList words;
    for (const ClipHandle handle : kHandles)
        words.append(level(levels, handle));
    return MusicWords::list(words);
}
