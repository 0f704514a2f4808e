#include "voice/WaveOutlines.h"

#include <algorithm>

WaveOutlines::WaveOutlines(QObject* parent) : QObject(parent)
{
    thread_.setMaxThreadCount(1);
    // What is heard comes before what is seen.
    thread_.setThreadPriority(QThread::LowPriority);
}

WaveOutlines::~WaveOutlines()
{
    stop_.request_stop();
    thread_.clear();
}

std::shared_ptr<const WavePeaks> WaveOutlines::of(const ClipSource& file)
{
    const auto known = outlines_.constFind(file.path);
    if (known != outlines_.constEnd() && known->file == file)
        return known->peaks;
    outlines_.insert(file.path, {file, nullptr});
    read(file);
    return nullptr;
}

void WaveOutlines::read(const ClipSource& file)
{
    thread_.start([this, file, stop = stop_.get_token()] {
        auto peaks = std::make_shared<const WavePeaks>(WavePeaks::read(file.path, stop));
        if (!stop.stop_requested())
            QMetaObject::invokeMethod(this, [this, file, peaks] { take(file, peaks); });
    });
}

void WaveOutlines::take(const ClipSource& file, const std::shared_ptr<const WavePeaks>& peaks)
{
    const auto known = outlines_.find(file.path);
    // Another file has taken its place meanwhile, or another work that of the file's.
    if (known == outlines_.end() || known->file != file)
        return;
    known->peaks = peaks;
    emit arrived();
}

bool WaveOutlines::isReading() const
{
    return std::ranges::any_of(outlines_, [](const Outline& outline) { return !outline.peaks; });
}

void WaveOutlines::forget()
{
    stop_.request_stop();
    stop_ = std::stop_source();
    thread_.clear();
    outlines_.clear();
}
