#include "playback/VoiceMixer.h"

#include <QPromise>

VoiceMixer::VoiceMixer() : mix_(QtFuture::makeReadyFuture(QList<float>()))
{
    thread_.setMaxThreadCount(1);
    // Nobody waits for most mixes, while the synthesiser and the window are always in a hurry.
    thread_.setThreadPriority(QThread::LowPriority);
}

VoiceMixer::~VoiceMixer()
{
    stop_.request_stop();
}

void VoiceMixer::prepare(const VoiceMix::Voices& voices)
{
    if (voices == voices_)
        return;
    stop_.request_stop();
    stop_ = std::stop_source();
    voices_ = voices;
    auto promise = std::make_shared<QPromise<QList<float>>>();
    mix_ = promise->future();
    // A result can be waited for from here on.
    promise->start();
    thread_.start([promise, voices, clips = clips_.get(), stop = stop_.get_token()] {
        promise->addResult(VoiceMix::renderToTheEnd(voices, *clips, stop));
        promise->finish();
    });
}

bool VoiceMixer::isReady(const VoiceMix::Voices& voices) const
{
    return voices == voices_ && mix_.isFinished();
}

QList<float> VoiceMixer::mix(const VoiceMix::Voices& voices)
{
    prepare(voices);
    // A result comes a little before the end, and isReady() asks for the end.
    mix_.waitForFinished();
    return mix_.result();
}
