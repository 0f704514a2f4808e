#include "voice/CorrelationScreen.h"

#include <algorithm>
#include <array>

namespace {

/// Sums kept side by side. Wide enough for any vector unit, and for its latency.
constexpr int kLanes = 16;

using Lanes = std::array<float, kLanes>;

/// Adds products of whole groups of kLanes samples from `from` on; returns where it stopped.
int addProducts(const float* a, const float* b, int from, int to, Lanes& sums)
{
    int i = from;
    for (; i + kLanes <= to; i += kLanes) {
        for (int lane = 0; lane < kLanes; ++lane)
            sums[static_cast<std::size_t>(lane)] += a[i + lane] * b[i + lane];
    }
    return i;
}

float total(const Lanes& sums)
{
    Lanes halves = sums;
    for (std::size_t width = kLanes / 2; width > 0; width /= 2) {
        for (std::size_t lane = 0; lane < width; ++lane)
            halves[lane] += halves[lane + width];
    }
    return halves[0];
}

} // namespace

CorrelationScreen::CorrelationScreen(const QList<float>& samples, int lagMin, int lagMax)
    : samples_(samples), lagMin_(lagMin), lagMax_(lagMax), ring_(kStretches),
      window_(static_cast<std::size_t>(kHopSize + lagMax)),
      products_(static_cast<std::size_t>(lagMax - lagMin + 1))
{
    for (Stretch& sums : ring_) {
        sums.whole.resize(products_.size());
        sums.head.resize(products_.size());
    }
    for (qsizetype index = 0; index + 1 < kStretches; ++index)
        sumStretch(index);
}

CorrelationScreen::Stretch& CorrelationScreen::stretch(qsizetype index)
{
    return ring_[static_cast<std::size_t>(index % kStretches)];
}

void CorrelationScreen::sumStretch(qsizetype index)
{
    const qsizetype start = index * kHopSize;
    const qsizetype available =
        std::clamp<qsizetype>(samples_.size() - start, 0, static_cast<qsizetype>(window_.size()));
    // Where the samples end, no whole frame asks for the sums of what the window keeps behind them.
    std::copy_n(samples_.constBegin() + (available > 0 ? start : 0), available, window_.begin());

    Stretch& sums = stretch(index);
    for (int lag = lagMin_; lag <= lagMax_; ++lag) {
        const float* a = window_.data();
        const float* b = a + lag;
        const int headSize = (kFrameSize - lag) % kHopSize;
        const auto at = static_cast<std::size_t>(lag - lagMin_);
        Lanes lanes{};
        int i = addProducts(a, b, 0, headSize, lanes);
        float head = total(lanes);
        for (int rest = i; rest < headSize; ++rest)
            head += a[rest] * b[rest];
        addProducts(a, b, i, kHopSize, lanes);
        sums.head[at] = head;
        sums.whole[at] = total(lanes);
    }
}

const std::vector<double>& CorrelationScreen::nextFrame()
{
    sumStretch(frame_ + kStretches - 1);
    for (int lag = lagMin_; lag <= lagMax_; ++lag) {
        const auto at = static_cast<std::size_t>(lag - lagMin_);
        const int wholeStretches = (kFrameSize - lag) / kHopSize;
        double sum = 0.0;
        for (int i = 0; i < wholeStretches; ++i)
            sum += static_cast<double>(stretch(frame_ + i).whole[at]);
        if (wholeStretches < kStretches)
            sum += static_cast<double>(stretch(frame_ + wholeStretches).head[at]);
        products_[at] = sum;
    }
    ++frame_;
    return products_;
}
