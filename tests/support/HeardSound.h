#pragma once

#include "voice/AudioRecorder.h"

#include <QAudioSource>
#include <QSignalSpy>
#include <QTest>

/// Runs the event loop until so many seconds more of sound have come to a recorder that records;
/// false if they do not come. However busy the machine is, a take is then about as long as that.
inline bool hearMore(const AudioRecorder& recorder, double seconds)
{
    constexpr int kPatienceMs = 20000;
    const auto microphones = recorder.findChildren<QAudioSource*>();
    QSignalSpy heard(&recorder, &AudioRecorder::levelHeard);
    if (microphones.isEmpty() || !heard.wait(kPatienceMs))
        return false;
    const QAudioSource& microphone = *microphones.last();
    const qint64 end = microphone.processedUSecs() + static_cast<qint64>(1e6 * seconds);
    return QTest::qWaitFor([&] { return microphone.processedUSecs() >= end; }, kPatienceMs) &&
           heard.wait(kPatienceMs);
}
