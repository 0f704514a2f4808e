#include "shell/LoopBrowser.h"

#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "model/ProjectEdits.h"
#include "playback/PlaybackEngine.h"
#include "shell/ChoiceBox.h"
#include "shell/ChosenLoop.h"
#include "shell/FittingArea.h"
#include "shell/IgualadorSimbolos.h"
#include "shell/Meters.h"
#include "shell/OnlineSearchDialog.h"
#include "shell/VariationButton.h"
#include "shell/WrappingRow.h"
#include "shell/controls/WheelGuard.h"
#include "shell/controls/WrappedLabel.h"
#include "views/SectionWords.h"

#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Means: wherever the playhead stands.
constexpr double kAtThePlayhead = -1.0;

constexpr int kShades = 3;
constexpr int kPreviewButtonHeight = 18;

/// Of the cards, in pixels: about one, and two of one line each.
constexpr int kLeastInSight = 74;
constexpr int kMostInSight = 166;

constexpr double kDefaultBarBeats = 4.0;

/// Far above any real section. A damaged package may list more variants than there is room for
/// widgets.
constexpr int kMaxVariants = 200;

QLabel* headerLabel(const QString& text)
{
    auto* label = new QLabel(text);
    label->setObjectName(u"header_grupo"_s);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

/// A part of a card that shows the card through.
QWidget* transparentRow()
{
    auto* row = new QWidget;
    row->setObjectName(u"fila_btns"_s);
    return row;
}

bool isForeign(const TimeSignature& meter, const Project* project)
{
    return project && meter != project->timeSignature;
}

QString rhythmText(const Rhythm& rhythm)
{
    return u"%1 (%2)"_s.arg(rhythm.displayName, meterText(rhythm.timeSignature));
}

QString layerText(const LoopLayer& layer, const Instrument* instrument)
{
    if (!instrument || layer.label.startsWith(instrument->name))
        return layer.label;
    return u"%1 · %2"_s.arg(layer.label, instrument->name);
}

/// Makes the entry of an id the current one, in silence, if it can be. False where that changes
/// nothing.
bool choose(ChoiceBox& box, const QString& id)
{
    const int index = box.findData(id);
    if (index < 0 || index == box.currentIndex() ||
        !(box.model()->flags(box.model()->index(index, 0)) & Qt::ItemIsEnabled))
        return false;
    const QSignalBlocker blocker(box);
    box.setCurrentIndex(index);
    return true;
}

/// A drag runs the event loop and must not lose the button that it started from.
void deleteCard(QWidget* card)
{
    card->hide();
    for (const VariationButton* button : card->findChildren<VariationButton*>()) {
        if (button->isDragging()) {
            QObject::connect(button, &VariationButton::dragFinished, card, &QObject::deleteLater);
            return;
        }
    }
    card->deleteLater();
}

} // namespace

LoopBrowser::LoopBrowser(LoopLibrary* library, InstrumentLibrary* instruments,
                         ContentCatalog* catalog, ContentDownloadManager* downloads,
                         InstalledContentRegistry* registry, PlaybackEngine* engine,
                         QWidget* parent)
    : QWidget(parent), library_(library), instruments_(instruments), catalog_(catalog),
      downloads_(downloads), registry_(registry), engine_(engine)
{
    setAccessibleName(tr("Ritmos"));
    auto* help = new WrappedLabel(tr("Click coloca la variación donde está el cabezal.\n"
                                     "Arrastrala para elegir el compás exacto."));
    auto* search = new QPushButton(tr("Buscar más ritmos…"));
    search->setToolTip(tr("Buscar ritmos que no estén instalados, en línea"));
    search->setFocusPolicy(Qt::TabFocus);
    connect(search, &QPushButton::clicked, this, [this] { openOnlineSearch(); });

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->setSpacing(6);
    layout->addWidget(headerLabel(tr("ACOMPAÑAMIENTO")));
    layout->addLayout(buildChoices());
    layout->addWidget(buildCards(), 1);
    layout->addWidget(help);
    layout->addWidget(search);

    WheelGuard::guardAllIn(*this);
    connect(library_, &LoopLibrary::libraryChanged, this, &LoopBrowser::reloadStyles);
    reloadStyles();
}

QFormLayout* LoopBrowser::buildChoices()
{
    styleCombo_ = new ChoiceBox(tr("Estilo musical"));
    rhythmCombo_ = new ChoiceBox(tr("Ritmo dentro del estilo"));
    layerCombo_ =
        new ChoiceBox(tr("Capa de instrumento del ritmo (cada una tiene su carril en la línea "
                         "de tiempo)"));
    connect(styleCombo_, &QComboBox::currentIndexChanged, this, &LoopBrowser::reloadRhythms);
    connect(rhythmCombo_, &QComboBox::currentIndexChanged, this, &LoopBrowser::reloadLayers);
    connect(layerCombo_, &QComboBox::currentIndexChanged, this, &LoopBrowser::rebuildSectionCards);

    auto* form = new QFormLayout;
    form->setContentsMargins(0, 0, 0, 0);
    form->setSpacing(4);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("Estilo"), styleCombo_);
    form->addRow(tr("Ritmo"), rhythmCombo_);
    form->addRow(tr("Capa"), layerCombo_);
    return form;
}

QWidget* LoopBrowser::buildCards()
{
    QWidget* cards = transparentRow();
    sectionsLayout_ = new QVBoxLayout(cards);
    sectionsLayout_->setContentsMargins(0, 0, 0, 0);
    sectionsLayout_->setSpacing(6);
    sectionsLayout_->addStretch();

    return new FittingArea(cards, FittingArea::Wish::Least, [this] { return heightInSight(); });
}

int LoopBrowser::heightInSight() const
{
    const int width = sectionsLayout_->parentWidget()->width();
    int height = 0;
    for (int card = 0; card < cardsInSight_; ++card)
        height += sectionsLayout_->itemAt(card)->heightForWidth(width) + sectionsLayout_->spacing();
    return std::clamp(height - sectionsLayout_->spacing(), kLeastInSight, kMostInSight);
}

void LoopBrowser::setProject(Project* project)
{
    if (project_)
        disconnect(project_, nullptr, this, nullptr);
    project_ = project;
    if (project) {
        meter_ = project->timeSignature;
        connect(project, &Project::changed, this, &LoopBrowser::followMeter);
    }
    if (!showRhythmOfWork())
        reloadRhythms();
}

bool LoopBrowser::showRhythmOfWork()
{
    const Rhythm* rhythm =
        project_ ? library_->findRhythm(ProjectEdits::firstRhythm(*project_)) : nullptr;
    if (!rhythm || isForeign(rhythm->timeSignature, project_))
        return false;
    choose(*styleCombo_, rhythm->styleId);
    reloadRhythms();
    if (choose(*rhythmCombo_, rhythm->id))
        reloadLayers();
    return true;
}

void LoopBrowser::followMeter()
{
    if (meter_ == project_->timeSignature)
        return;
    meter_ = project_->timeSignature;
    const QString rhythm = rhythmCombo_->currentId();
    reloadRhythms();
    if (choose(*rhythmCombo_, rhythm))
        reloadLayers();
    else if (rhythmCombo_->currentId() != rhythm)
        showRhythmOfWork();
}

void LoopBrowser::reloadStyles()
{
    {
        const QSignalBlocker blocker(styleCombo_);
        styleCombo_->clear();
        for (const MusicalStyle& style : library_->styles())
            styleCombo_->addItem(style.displayName, style.id);
    }
    reloadRhythms();
}

void LoopBrowser::reloadRhythms()
{
    {
        const QSignalBlocker blocker(rhythmCombo_);
        rhythmCombo_->clear();
        fillRhythms();
        rhythmCombo_->selectFirstEnabled();
    }
    reloadLayers();
}

void LoopBrowser::fillRhythms()
{
    for (const Rhythm& rhythm : library_->rhythmsForStyle(styleCombo_->currentId())) {
        rhythmCombo_->addItem(rhythmText(rhythm), rhythm.id);
        if (isForeign(rhythm.timeSignature, project_))
            rhythmCombo_->disableItem(rhythmCombo_->count() - 1,
                                      tr("Compás distinto al del proyecto — no se puede mezclar"));
    }
}

void LoopBrowser::reloadLayers()
{
    {
        const QSignalBlocker blocker(layerCombo_);
        layerCombo_->clear();
        for (const LoopLayer& layer : layersOfRhythm()) {
            const Instrument* instrument =
                instruments_ ? instruments_->find(layer.instrumentId) : nullptr;
            layerCombo_->addItem(layerText(layer, instrument), layer.id);
        }
    }
    rebuildSectionCards();
}

QList<LoopLayer> LoopBrowser::layersOfRhythm() const
{
    // No choice is no id, not even that of damaged layers without a rhythm.
    if (rhythmCombo_->currentIndex() < 0)
        return {};
    return library_->layersForRhythm(rhythmCombo_->currentId());
}

QList<LoopVariant> LoopBrowser::variantsOf(LoopSection section) const
{
    if (layerCombo_->currentIndex() < 0)
        return {};
    return library_->variantsFor(layerCombo_->currentId(), section);
}

void LoopBrowser::rebuildSectionCards()
{
    while (sectionsLayout_->count() > 1) {
        const std::unique_ptr<QLayoutItem> item(sectionsLayout_->takeAt(0));
        deleteCard(item->widget());
    }
    int card = 0;
    cardsInSight_ = 0;
    for (const LoopSection section : kSectionOrder) {
        const QList<LoopVariant> variants = variantsOf(section);
        if (variants.isEmpty())
            continue;
        sectionsLayout_->insertWidget(card, buildCard(section, variants, card % kShades));
        ++card;
        if (section == LoopSection::Normal)
            cardsInSight_ = card;
    }
    if (project_ && rhythmCombo_->count() > 0 && rhythmCombo_->currentIndex() < 0)
        sectionsLayout_->insertWidget(0, buildNoRhythms());
    orderByTab();
    // A window evens out its faces when it is shown, those of later cards are left to us.
    if (isVisible())
        ovelin::igualarSimbolos(sectionsLayout_->parentWidget());
}

void LoopBrowser::orderByTab()
{
    // Who comes later stands at the end of the order, wherever it is on the screen.
    QWidget* former = layerCombo_;
    for (QToolButton* button : sectionsLayout_->parentWidget()->findChildren<QToolButton*>()) {
        setTabOrder(former, button);
        former = button;
    }
}

QWidget* LoopBrowser::buildNoRhythms()
{
    auto* sentence = new WrappedLabel(
        tr("No hay ritmos de %1 en este estilo.").arg(meterText(project_->timeSignature)));
    QWidget* row = transparentRow();
    auto* layout = new QVBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(sentence);
    return row;
}

QWidget* LoopBrowser::buildCard(LoopSection section, const QList<LoopVariant>& variants, int shade)
{
    auto* card = new QFrame;
    card->setObjectName(u"grupo_ribbon"_s);
    card->setProperty("alt", QString::number(shade));
    auto* layout = new QVBoxLayout(card);
    layout->setContentsMargins(0, 0, 0, 5);
    layout->setSpacing(4);
    layout->addWidget(headerLabel(sectionWord(section).toUpper()));

    QWidget* row = transparentRow();
    auto* columns = new WrappingRow(row);
    columns->setContentsMargins(6, 0, 6, 0);
    columns->setSpacing(6);
    for (const LoopVariant& variant :
         variants.first(std::min<qsizetype>(variants.size(), kMaxVariants)))
        columns->addWidget(buildColumn(section, variant.variantIndex));
    columns->addStretch();
    layout->addWidget(row);
    return card;
}

QWidget* LoopBrowser::buildColumn(LoopSection section, int variantIndex)
{
    auto* place = new VariationButton(rhythmCombo_->currentId(), layerCombo_->currentId(), section,
                                      variantIndex);
    connect(place, &QToolButton::clicked, this,
            [this, section, variantIndex] { placeVariant(section, variantIndex); });

    auto* preview = new QToolButton;
    preview->setObjectName(u"btn_escuchar"_s);
    preview->setText(u"▶"_s);
    preview->setToolTip(tr("Escuchar esta variación"));
    preview->setAccessibleName(tr("Escuchar %1").arg(place->accessibleName()));
    preview->setFixedHeight(kPreviewButtonHeight);
    preview->setCursor(Qt::PointingHandCursor);
    connect(preview, &QToolButton::clicked, this,
            [this, section, variantIndex] { previewVariant(section, variantIndex); });

    QWidget* column = transparentRow();
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(place, 0, Qt::AlignHCenter);
    layout->addWidget(preview, 0, Qt::AlignHCenter);
    return column;
}

void LoopBrowser::previewVariant(LoopSection section, int variantIndex)
{
    const LoopVariant* variant =
        library_->findVariant(layerCombo_->currentId(), section, variantIndex);
    if (!variant || !engine_)
        return;
    const LoopLayer* layer = library_->findLayer(layerCombo_->currentId());
    const Rhythm* rhythm = library_->findRhythm(rhythmCombo_->currentId());
    const int rhythmBpm = rhythm ? rhythm->referenceBpm : Project::kDefaultBpm;
    engine_->previewVariant(*variant, layer ? layer->instrumentId : QString(),
                            project_ ? project_->bpm : rhythmBpm,
                            rhythm ? rhythm->timeSignature.beatsPerBar() : kDefaultBarBeats);
}

void LoopBrowser::placeVariant(LoopSection section, int variantIndex)
{
    const LoopLayer* layer = library_->findLayer(layerCombo_->currentId());
    const auto loop = layer ? chosenLoop(*library_, layer->rhythmId, layer->id, section,
                                         variantIndex, kAtThePlayhead)
                            : std::nullopt;
    if (project_ && loop)
        emit loopChosen(loop->block, loop->instrumentId, loop->trackName);
}

void LoopBrowser::openOnlineSearch(const QStringList& wanted)
{
    OnlineSearchDialog dialog(*library_, *catalog_, *downloads_, *registry_, this);
    dialog.choose(wanted);
    dialog.exec();
}
