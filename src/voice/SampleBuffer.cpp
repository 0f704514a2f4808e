#include "voice/SampleBuffer.h"

#include <new>

QList<float> silentSamples(qint64 count)
{
    // Versions of Qt differ in how they tell that an allocation failed.
    QList<float> samples;
    try {
        samples.reserve(count);
    } catch (const std::bad_alloc&) {
        return {};
    }
    if (samples.capacity() < count)
        return {};
    samples.resize(count);
    return samples;
}
