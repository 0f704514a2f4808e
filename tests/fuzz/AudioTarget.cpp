#include "FuzzLaws.h"
#include "FuzzTargets.h"
#include "voice/AudioDecoder.h"

using FuzzLaws::require;

void FuzzTargets::audio(const QByteArray& input)
{
    const QString path = FuzzLaws::file(QStringLiteral("sound"), input);
    const AudioDecoder::Result result = AudioDecoder::decode(path);
    require(result.ok == result.error.isEmpty(), "what is not read has a reason");
    if (!result.ok)
        return;
    require(result.sampleRate > 0 && result.channels > 0, "sound has a rate and channels");
    require(!result.samples.isEmpty() && result.samples.size() % result.channels == 0 &&
                result.samples.size() <= AudioDecoder::kMaxSamples,
            "sound is whole frames, some, and not too many");
    require(AudioDecoder::toMono(result).size() == result.samples.size() / result.channels,
            "a mono sound has as many frames");
}
