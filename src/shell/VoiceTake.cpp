#include "shell/VoiceTake.h"

#include "playback/PlaybackEngine.h"

#include <QFileInfo>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

VoiceTake::VoiceTake(Project& work, const PlaybackEngine& engine, const QString& folder)
    : work_(work), engine_(engine), folder_(folder), startBeat_(engine.playheadBeat()),
      playedAlong_(engine.isPlaying()),
      playback_(QObject::connect(&engine, &PlaybackEngine::playingChanged,
                                 [this](bool playing) { playedAlong_ = playedAlong_ && playing; }))
{}

VoiceTake::~VoiceTake()
{
    QObject::disconnect(playback_);
}

QString VoiceTake::file() const
{
    QString path;
    int number = 1;
    do {
        path = folder_ + u"/voz_%1.wav"_s.arg(number++);
    } while (QFileInfo::exists(path));
    return path;
}

void VoiceTake::end()
{
    QObject::disconnect(playback_);
    if (playedAlong_)
        endBeat_ = engine_.playheadBeat();
}

double VoiceTake::offsetOf(double durationBeats) const
{
    return endBeat_ ? std::max(0.0, *endBeat_ - durationBeats) : startBeat_;
}
