#include "shell/LevelMeter.h"

#include "views/AccessibleItems.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr QSize kSize(64, 14);
constexpr int kFallMs = 50;
/// Of what is shown, at each step down: some 30 dB in a second.
constexpr float kFall = 0.84F;

/// From where on one sings too loud, and from where on the sound is cut, in decibels.
constexpr double kLoud = -6.0;
constexpr double kCut = -0.5;

// On their own ground in both looks, so that they are told from it.
constexpr QColor kGround(0x15, 0x1a, 0x0f);
constexpr QColor kEdge(0x7a, 0x9a, 0x57);
constexpr QColor kGood(0x8b, 0xc3, 0x4a);
constexpr QColor kWarning(0xff, 0xca, 0x28);
constexpr QColor kTooMuch(0xff, 0x6e, 0x6a);

QColor colorOf(double decibels)
{
    if (decibels >= kCut)
        return kTooMuch;
    return decibels >= kLoud ? kWarning : kGood;
}

QAccessibleInterface* meterOf(const QString& className, QObject* object)
{
    if (className != QLatin1StringView("LevelMeter"))
        return nullptr;
    auto* meter = static_cast<LevelMeter*>(object);
    return new AccessibleTeller(meter, QAccessible::Indicator, [meter] {
        return LevelMeter::tr("%1 dB").arg(std::round(meter->decibels()));
    });
}

} // namespace

LevelMeter::LevelMeter(QWidget* parent) : QWidget(parent)
{
    QAccessible::installFactory(meterOf);
    setAccessibleName(tr("Nivel del micrófono"));
    setToolTip(tr("Qué tan fuerte se oye el micrófono: en rojo, la voz se corta"));
    setFixedSize(kSize);
    falling_.setInterval(kFallMs);
    connect(&falling_, &QTimer::timeout, this, &LevelMeter::fall);
}

QSize LevelMeter::sizeHint() const
{
    return kSize;
}

void LevelMeter::take(float peak)
{
    // In this order of arguments, what is no number is silence.
    level_ = std::max(level_, std::min(std::max(0.0F, peak), 1.0F));
    falling_.start();
    update();
}

void LevelMeter::clear()
{
    level_ = 0.0F;
    falling_.stop();
    update();
}

void LevelMeter::fall()
{
    level_ *= kFall;
    if (decibels() <= kLeast)
        clear();
    update();
}

double LevelMeter::decibels() const
{
    return level_ > 0.0F ? std::max(kLeast, 20.0 * std::log10(static_cast<double>(level_)))
                         : kLeast;
}

void LevelMeter::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setPen(kEdge);
    painter.setBrush(kGround);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    QRectF bar = QRectF(rect()).adjusted(2, 2, -2, -2);
    bar.setWidth(bar.width() * (1.0 - decibels() / kLeast));
    painter.fillRect(bar, colorOf(decibels()));
}
