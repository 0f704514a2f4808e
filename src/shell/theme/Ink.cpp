#include "shell/theme/Ink.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

/// What a text needs to be read, by WCAG 2 (success criterion 1.4.3).
constexpr double kEnough = 4.5;

/// Of each of the values that a channel may have; a painter asks for every note.
std::array<double, 256> linearChannels()
{
    std::array<double, 256> linear{};
    for (std::size_t value = 0; value < linear.size(); ++value) {
        const double channel = static_cast<double>(value) / 255.0;
        linear[value] =
            channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    }
    return linear;
}

double luminance(const QColor& color)
{
    static const std::array<double, 256> kLinear = linearChannels();
    const auto linear = [](int channel) { return kLinear.at(static_cast<std::size_t>(channel)); };
    return 0.2126 * linear(color.red()) + 0.7152 * linear(color.green()) +
           0.0722 * linear(color.blue());
}

} // namespace

double contrast(const QColor& text, const QColor& ground)
{
    const auto [darker, lighter] = std::minmax({luminance(text), luminance(ground)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor inkOn(const QColor& ground)
{
    for (const QColor& ink : {QColor(Qt::white), QColor(0x22, 0x22, 0x22)}) {
        if (contrast(ink, ground) >= kEnough)
            return ink;
    }
    return Qt::black;
}
