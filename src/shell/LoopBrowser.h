#pragma once

#include "model/Project.h"

#include <QPointer>
#include <QWidget>

class ChoiceBox;
class ContentCatalog;
class ContentDownloadManager;
class InstalledContentRegistry;
class InstrumentLibrary;
class LoopLibrary;
class PlaybackEngine;
class QFormLayout;
class QVBoxLayout;
struct LoopLayer;
struct LoopVariant;

/// The loops of the library, narrowed down by style, rhythm and layer to one card for each section
/// of a song, with a button for each variant. Holds nothing of the project: it says what the user
/// chose.
class LoopBrowser : public QWidget {
    Q_OBJECT

public:
    /// None of the services is owned. Without `instruments` layers show their label alone, and
    /// without `engine` nothing is heard; the others must be there.
    LoopBrowser(LoopLibrary* library, InstrumentLibrary* instruments, ContentCatalog* catalog,
                ContentDownloadManager* downloads, InstalledContentRegistry* registry,
                PlaybackEngine* engine, QWidget* parent = nullptr);

    /// The work whose meter rhythms have to share to be chosen. Not owned; may be null, and then
    /// any rhythm may be chosen but none placed.
    void setProject(Project* project);

    /// The cards scroll where height is short, however wide the help stands.
    bool hasHeightForWidth() const override { return false; }

    /// Shows the rhythms that can be installed, one of those that are wanted chosen.
    void openOnlineSearch(const QStringList& wanted = {});

signals:
    /// A variant was clicked. The block starts at -1, for the bar of the playhead, and lasts as
    /// long as the variant, in beats. `displayName` suits the track of a new layer.
    void loopChosen(const LoopBlock& block, const QString& instrumentId,
                    const QString& displayName);

private:
    QFormLayout* buildChoices();
    QWidget* buildCards();

    /// Offers other rhythms where the work has got another meter.
    void followMeter();

    /// Puts itself on the rhythm with which the work begins. False, with nothing changed, where the
    /// library has none that fits.
    bool showRhythmOfWork();

    // Each fills its own step and then runs the next.
    void reloadStyles();
    void reloadRhythms();
    void reloadLayers();
    void rebuildSectionCards();
    /// Lets the Tab key come to the cards between the choices above them and what stands below.
    void orderByTab();

    void fillRhythms();

    /// Of the rhythm and the layer that are chosen; empty where none is.
    QList<LoopLayer> layersOfRhythm() const;
    QList<LoopVariant> variantsOf(LoopSection section) const;

    /// Stands in the place of the cards where no rhythm of the style has the meter of the work.
    QWidget* buildNoRhythms();
    QWidget* buildCard(LoopSection section, const QList<LoopVariant>& variants, int shade);
    QWidget* buildColumn(LoopSection section, int variantIndex);

    /// The least height of the place of the cards.
    int heightInSight() const;

    void previewVariant(LoopSection section, int variantIndex);
    void placeVariant(LoopSection section, int variantIndex);

    LoopLibrary* library_;
    InstrumentLibrary* instruments_;
    ContentCatalog* catalog_;
    ContentDownloadManager* downloads_;
    InstalledContentRegistry* registry_;
    PlaybackEngine* engine_;
    QPointer<Project> project_;
    /// Which the rhythms have been measured by.
    TimeSignature meter_;
    /// Their items hold ids.
    ChoiceBox* styleCombo_;
    ChoiceBox* rhythmCombo_;
    ChoiceBox* layerCombo_;
    /// The cards, and behind them the stretch that holds them together.
    QVBoxLayout* sectionsLayout_;
    /// Those up to "Normal", which is used most; none where it is missing.
    int cardsInSight_ = 0;
};
