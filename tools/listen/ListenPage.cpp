#include "listen/ListenPage.h"

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString kHead = uR"(<!doctype html>
<html lang="es"><head><meta charset="utf-8"><title>Ritmos de Velta</title>
<style>
body { font: 15px sans-serif; margin: 2em; }
h3 { margin: 1.2em 0 0.3em; }
audio { width: 30em; display: block; }
img { display: block; margin: 0.4em 0 1em; }
td, th { padding: 0.1em 0.8em; text-align: right; }
td:first-child, th:first-child, td:nth-child(2), th:nth-child(2) { text-align: left; }
tr.off { font-weight: bold; color: #b00020; }
</style></head><body>
<h1>Ritmos de Velta</h1>
)"_s;

QString layerHtml(const RenderedLayer& layer)
{
    return u"<p>%1 · %2 LUFS</p>\n<audio controls preload=\"none\" src=\"%3\"></audio>\n"_s.arg(
        layer.label.toHtmlEscaped(), QString::number(layer.loudness.lufs, 'f', 1),
        layer.sound.toHtmlEscaped());
}

QString measured(double seconds, const Loudness& loudness)
{
    return u"<p>%1 s · %2 LUFS · pico %3 dB</p>\n"_s.arg(QString::number(seconds, 'f', 1),
                                                         QString::number(loudness.lufs, 'f', 1),
                                                         QString::number(loudness.peakDb, 'f', 1));
}

QString songHtml(const RenderedSong& song)
{
    const QString links =
        u"<p><a href=\"%1\">WAV</a> · <a href=\"%2\">MP3</a> · <a href=\"%3\">obra de Velta</a></p>\n"_s
            .arg(song.wav.toHtmlEscaped(), song.mp3.toHtmlEscaped(),
                 song.projectFolder.toHtmlEscaped());
    return u"<h3>Canción</h3>\n"_s + measured(song.seconds, song.loudness) + links +
           u"<audio controls preload=\"none\" src=\"%1\"></audio>\n<img src=\"%2\" alt=\"\">\n"_s
               .arg(song.mp3.toHtmlEscaped(), song.picture.toHtmlEscaped());
}

QString loopHtml(const RenderedLoop& loop)
{
    QString html =
        u"<h3>%1</h3>\n"_s.arg(loop.title.toHtmlEscaped()) + measured(loop.seconds, loop.loudness) +
        u"<audio controls preload=\"none\" src=\"%1\"></audio>\n<img src=\"%2\" alt=\"\">\n"_s.arg(
            loop.sound.toHtmlEscaped(), loop.picture.toHtmlEscaped());
    for (const RenderedLayer& layer : loop.layers)
        html += layerHtml(layer);
    return html;
}

QString signedDb(double decibels)
{
    // Without a sign before nothing.
    const double tenths = std::round(10.0 * decibels) / 10.0;
    return (tenths > 0.0 ? u"+"_s : QString()) + QString::number(tenths + 0.0, 'f', 1);
}

QString levelHtml(const LevelInMix& level)
{
    return u"<tr%1><td>%2</td><td>%3</td><td>%4</td><td>%5</td><td>%6</td></tr>\n"_s.arg(
        level.off ? u" class=\"off\""_s : QString(), level.layer.toHtmlEscaped(),
        level.role.toHtmlEscaped(), signedDb(level.aboveBassDb), signedDb(level.targetDb),
        signedDb(level.aboveBassDb - level.targetDb));
}

QString levelsHtml(const QList<LevelInMix>& levels)
{
    if (levels.isEmpty())
        return {};
    QString rows;
    for (const LevelInMix& level : levels)
        rows += levelHtml(level);
    return u"<table><tr><th>Capa</th><th>Papel</th><th>dB sobre el bajo</th><th>pide</th>"
           "<th>diferencia</th></tr>\n"_s +
           rows + u"</table>\n"_s;
}

} // namespace

QString listenPage(const QList<RenderedRhythm>& rhythms)
{
    QString page = kHead;
    for (const RenderedRhythm& rhythm : rhythms) {
        page += u"<h2>%1</h2>\n"_s.arg(rhythm.title.toHtmlEscaped());
        if (!rhythm.groove.isEmpty())
            page += u"<p>Groove: %1</p>\n"_s.arg(rhythm.groove.toHtmlEscaped());
        page += levelsHtml(rhythm.levels);
        if (rhythm.song)
            page += songHtml(*rhythm.song);
        for (const RenderedLoop& loop : rhythm.loops)
            page += loopHtml(loop);
    }
    return page + "</body></html>\n"_L1;
}
