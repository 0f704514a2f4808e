#include "listen/ListenPage.h"

using namespace Qt::Literals::StringLiterals;

namespace {

const QString kHead = uR"(<!doctype html>
<html lang="es"><head><meta charset="utf-8"><title>Ritmos de Velta</title>
<style>
body { font: 15px sans-serif; margin: 2em; }
h3 { margin: 1.2em 0 0.3em; }
audio { width: 30em; display: block; }
img { display: block; margin: 0.4em 0 1em; }
</style></head><body>
<h1>Ritmos de Velta</h1>
)"_s;

QString layerHtml(const RenderedLayer& layer)
{
    return u"<p>%1 · %2 LUFS</p>\n<audio controls preload=\"none\" src=\"%3\"></audio>\n"_s.arg(
        layer.label.toHtmlEscaped(), QString::number(layer.loudness.lufs, 'f', 1),
        layer.sound.toHtmlEscaped());
}

QString loopHtml(const RenderedLoop& loop)
{
    QString html =
        u"<h3>%1</h3>\n<p>%2 s · %3 LUFS · pico %4 dB</p>\n"
        u"<audio controls preload=\"none\" src=\"%5\"></audio>\n<img src=\"%6\" alt=\"\">\n"_s.arg(
            loop.title.toHtmlEscaped(), QString::number(loop.seconds, 'f', 1),
            QString::number(loop.loudness.lufs, 'f', 1),
            QString::number(loop.loudness.peakDb, 'f', 1), loop.sound.toHtmlEscaped(),
            loop.picture.toHtmlEscaped());
    for (const RenderedLayer& layer : loop.layers)
        html += layerHtml(layer);
    return html;
}

} // namespace

QString listenPage(const QList<RenderedRhythm>& rhythms)
{
    QString page = kHead;
    for (const RenderedRhythm& rhythm : rhythms) {
        page += u"<h2>%1</h2>\n"_s.arg(rhythm.title.toHtmlEscaped());
        for (const RenderedLoop& loop : rhythm.loops)
            page += loopHtml(loop);
    }
    return page + "</body></html>\n"_L1;
}
