#include "shell/StatusLine.h"

#include "shell/controls/PlainText.h"
#include "shell/theme/ThemeManager.h"

#include <QLabel>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;

namespace {

QPushButton* roundButton(const QString& text)
{
    auto* button = new QPushButton(text);
    button->setObjectName(u"toggle_modo"_s);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

} // namespace

StatusLine::StatusLine(const QString& missingBank, QWidget* parent)
    : QStatusBar(parent),
      hint_(new QLabel(
          tr("Espacio reproduce · A-G tocan notas (Shift = sostenido, Z/X cambian de octava) · "
             "Shift+arrastre selecciona"))),
      takeNotice_(new QLabel), themeButton_(roundButton(QString()))
{
    // It ends at the edge of a narrow window, which is no reason to make that wider.
    hint_->setMinimumWidth(1);
    addWidget(hint_);
    // The bar itself hides nothing behind a message that comes before the window is shown.
    connect(this, &QStatusBar::messageChanged, this, &StatusLine::updateHint);
    // What lasts has to be permanent: a message takes everything else out of sight, and any menu
    // wipes a message away.
    takeNotice_->setObjectName(u"grabando"_s);
    addPermanentWidget(takeNotice_);
    showSinging(Singing::No);
    if (!missingBank.isEmpty())
        addMissingBankMark(missingBank);
    addThemeButton();
}

void StatusLine::showSinging(Singing singing)
{
    sings_ = singing != Singing::No;
    takeNotice_->setText(singing == Singing::SoonByTheCount
                             ? tr("Un compás y grabamos… Esc cancela.")
                             : tr("Grabando voz… tocá «Grabar voz» de nuevo para terminar."));
    takeNotice_->setVisible(sings_);
    updateHint();
}

void StatusLine::updateHint()
{
    hint_->setVisible(!sings_ && currentMessage().isEmpty());
}

void StatusLine::addMissingBankMark(const QString& path)
{
    const QString sentence =
        tr("Falta el banco de sonidos %1 — la app funciona sin sonido.").arg(path);
    auto* mark = new QLabel(tr("Falta el banco de sonidos"));
    mark->setObjectName(u"falta_banco"_s);
    mark->setToolTip(plainToolTip(sentence));
    QPushButton* whatToDo = roundButton(tr("¿Qué hago?"));
    addPermanentWidget(mark);
    addPermanentWidget(whatToDo);
    connect(whatToDo, &QPushButton::clicked, this,
            [this, sentence] { emit missingBankAsked(sentence); });
}

void StatusLine::addThemeButton()
{
    // After a click the keys are still those of the editors.
    themeButton_->setFocusPolicy(Qt::TabFocus);
    addPermanentWidget(themeButton_);
    ThemeManager* theme = ThemeManager::instance();
    showTheme(theme->isDark());
    connect(themeButton_, &QPushButton::clicked, theme,
            [theme] { theme->setDark(!theme->isDark()); });
    connect(theme, &ThemeManager::themeChanged, this, &StatusLine::showTheme);
}

void StatusLine::showTheme(bool dark)
{
    themeButton_->setText(dark ? tr("☀ Modo claro") : tr("🌙 Modo oscuro"));
    // A screen reader would spell the symbol.
    themeButton_->setAccessibleName(dark ? tr("Modo claro") : tr("Modo oscuro"));
}
