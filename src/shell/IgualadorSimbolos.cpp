#include "shell/IgualadorSimbolos.h"

#include <QEvent>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QHash>
#include <QRegularExpression>
#include <QToolButton>

#include <algorithm>
#include <cstdio>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace ovelin {

namespace {

constexpr double kBoxWidth = 20;
constexpr double kBoxHeight = 16;
constexpr int kSmallestSymbol = 11;
constexpr int kSmallestWord = 10;
constexpr int kLargest = 40;

/// A glyph this high, in font sizes, fills the em box, as colour emoji do.
constexpr double kFullHeight = 0.95;

/// Less ink than this, in pixels, and the font does not have the glyph.
constexpr double kLeastInk = 1;

bool isSquareButton(const QToolButton* button)
{
    return button->objectName() == "btn_toolbar"_L1 || button->objectName() == "btn_sigla"_L1;
}

bool isSymbol(const QString& face)
{
    constexpr auto kLettersOfAWord = 2;
    return std::ranges::count_if(face, [](QChar c) { return c.isLetterOrNumber(); }) <
           kLettersOfAWord;
}

double pixelSizeOf(const QFont& font)
{
    return font.pixelSize() > 0 ? font.pixelSize() : QFontInfo(font).pixelSize();
}

/// The ink of a face. Buttons come and go with the same few faces, and measuring is dear.
QSizeF inkOf(const QString& face, const QFont& font)
{
    static QHash<QPair<QString, QString>, QSizeF> measured;
    static const auto forgetting =
        QObject::connect(qApp, &QGuiApplication::fontDatabaseChanged, [] { measured.clear(); });
    QSizeF& ink = measured[{font.key(), face}];
    if (!ink.isValid())
        ink = QFontMetricsF(font).tightBoundingRect(face).size();
    return ink;
}

/// How much to scale a face with this ink; nothing if it is to be left alone.
std::optional<double> scaleOf(const QString& face, const QSizeF& ink, double px)
{
    if (ink.width() < kLeastInk || ink.height() < kLeastInk)
        return std::nullopt;
    if (!isSymbol(face))
        return std::min(kBoxWidth / ink.width(), 1.0);
    const double scale = std::min(kBoxWidth / ink.width(), kBoxHeight / ink.height());
    if (scale < 1 && ink.height() >= kFullHeight * px)
        return std::nullopt;
    return scale;
}

int rounded(double px)
{
    return static_cast<int>(px + 0.5);
}

void report(const QString& face, const QSizeF& ink, double px, int target)
{
    if (qEnvironmentVariableIsSet("OVELIN_SIMBOLOS"))
        std::fprintf(stderr, "simbolo \"%s\" tinta %.0fx%.0f a %.0fpx -> %dpx\n",
                     face.toUtf8().constData(), ink.width(), ink.height(), px, target);
}

void setFontSize(QToolButton* button, int px)
{
    static const QRegularExpression kTamano(uR"(font-size\s*:\s*[0-9.]+px\s*;?)"_s);
    QString sheet = button->styleSheet().remove(kTamano);
    button->setStyleSheet(sheet.append(u" font-size: %1px;"_s.arg(px)));
}

void evenOut(QToolButton* button)
{
    const QString face = button->text().trimmed();
    if (face.isEmpty() || !button->icon().isNull())
        return;
    // The font of the application's style sheet comes with the polish.
    button->ensurePolished();
    const double px = pixelSizeOf(button->font());
    const QSizeF ink = inkOf(face, button->font());
    const std::optional<double> scale = scaleOf(face, ink, px);
    if (!scale)
        return;
    const int smallest = isSymbol(face) ? kSmallestSymbol : kSmallestWord;
    const int target = std::clamp(rounded(*scale * px), smallest, kLargest);
    report(face, ink, px, target);
    if (target != rounded(px))
        setFontSize(button, target);
}

} // namespace

void igualarSimbolos(QWidget* root)
{
    for (QToolButton* button : root->findChildren<QToolButton*>()) {
        if (isSquareButton(button))
            evenOut(button);
    }
}

bool IgualadorSimbolos::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && watched->isWidgetType()) {
        auto* widget = static_cast<QWidget*>(watched);
        if (widget->isWindow())
            igualarSimbolos(widget);
    }
    return false;
}

} // namespace ovelin
