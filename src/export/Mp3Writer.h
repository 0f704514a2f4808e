#pragma once

#include "export/ExportProgress.h"

#include <QList>

#include <memory>

class QIODevice;
struct lame_global_struct;

/// Encodes a stereo mix as MP3 through LAME: 192 kbit/s, quality 5, at kSampleRate.
class Mp3Writer {
public:
    Mp3Writer();

    /// False when LAME refused its parameters; encode() must not be called then.
    bool isReady() const { return ready_; }

    /// Encodes interleaved stereo samples into an open device, once. What is not a number counts
    /// as silence, and values beyond full scale are held there. False if the device does not take
    /// the bytes, or the progress is to stop; should LAME itself stop half way, what it gave so far
    /// stays and counts.
    bool encode(const QList<float>& samples, QIODevice& device,
                const ExportProgress& progress = {});

private:
    struct Closer {
        void operator()(lame_global_struct* lame) const;
    };

    std::unique_ptr<lame_global_struct, Closer> lame_;
    bool ready_ = false;
};
