#include "views/arranger/BlockLabels.h"

#include <QFontMetricsF>

#include <memory>

namespace {

QStaticText shaped(const QString& label, const QString& fullLabel, qreal width, const QFont& font)
{
    QStaticText text;
    text.setTextFormat(Qt::PlainText);
    const auto fits = [&](const QString& words) {
        text.setText(words);
        text.prepare({}, font);
        return text.size().width() <= width;
    };
    if ((fullLabel.isEmpty() || !fits(fullLabel)) && !fits(label))
        fits(QFontMetricsF(font).elidedText(label, Qt::ElideRight, width));
    return text;
}

} // namespace

QStaticText BlockLabels::of(const QString& label, const QString& fullLabel, qreal width,
                            const QFont& font)
{
    if (font_ != font) {
        kept_.clear();
        font_ = font;
    }
    const Words words{label, fullLabel, width};
    if (const QStaticText* known = kept_.object(words))
        return *known;
    const QStaticText text = shaped(label, fullLabel, width, font);
    kept_.insert(words, std::make_unique<QStaticText>(text).release());
    return text;
}
