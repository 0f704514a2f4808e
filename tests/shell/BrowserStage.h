#pragma once

#include "content/ContentCatalog.h"
#include "content/ContentDownloadManager.h"
#include "content/InstalledContentRegistry.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "shell/LoopBrowser.h"
#include "shell/VariationButton.h"
#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "support/TinyBank.h"
#include "support/Widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QScrollArea>
#include <QUrl>
#include <QVBoxLayout>

#include <memory>

/// A rhythm of a package, for tests that look at names and meters.
struct TestRhythm {
    QString id;
    QString name;
    QString style;
    TimeSignature meter = {};
    QList<LoopLayer> layers = {};
    QList<LoopVariant> variants = {};
    int referenceBpm = 120;

    QByteArray package() const
    {
        QJsonArray layerArray;
        for (const LoopLayer& layer : layers)
            layerArray.append(QJsonObject{{"id", layer.id},
                                          {"rhythmId", layer.rhythmId},
                                          {"label", layer.label},
                                          {"instrumentId", layer.instrumentId}});
        QJsonArray variantArray;
        for (const LoopVariant& variant : variants)
            variantArray.append(variantJson(variant));
        const QJsonObject meterObject{{"numerator", meter.numerator},
                                      {"denominator", meter.denominator},
                                      {"isCompound", meter.isCompound}};
        const QJsonObject rhythm{{"id", id},
                                 {"displayName", name},
                                 {"styleId", style},
                                 {"timeSignature", meterObject},
                                 {"referenceBpm", referenceBpm}};
        const QJsonObject styleObject{{"id", style}, {"displayName", style.toUpper()}};
        return QJsonDocument(QJsonObject{{"musicalStyle", styleObject},
                                         {"rhythm", rhythm},
                                         {"loopLayers", layerArray},
                                         {"loopVariants", variantArray}})
            .toJson();
    }
};

inline LoopLayer layerOf(const QString& id, const QString& rhythmId, const QString& label,
                         const QString& instrumentId = {})
{
    return {.id = id, .rhythmId = rhythmId, .label = label, .instrumentId = instrumentId};
}

inline LoopVariant variantOf(const QString& layerId, LoopSection section, int index, int bars = 1,
                             const QList<NoteEvent>& notes = {})
{
    return {.layerId = layerId,
            .section = section,
            .variantIndex = index,
            .notes = notes,
            .durationBars = bars};
}

/// A rhythm of one layer, a bass with two variants for the song and one for its end.
inline TestRhythm rockWithABass()
{
    return {.id = "rock",
            .name = "Rock",
            .style = "popular",
            .layers = {layerOf("bajo", "rock", "Bajo")},
            .variants = {variantOf("bajo", LoopSection::Normal, 1),
                         variantOf("bajo", LoopSection::Normal, 2),
                         variantOf("bajo", LoopSection::Final, 1)}};
}

/// A variant that a browser gave out.
struct Chosen {
    LoopBlock block;
    QString instrumentId;
    QString displayName;
};

/// Writes down what a browser gives out.
class Listener : public QObject {
public:
    explicit Listener(LoopBrowser& browser)
    {
        connect(&browser, &LoopBrowser::loopChosen, this,
                [this](const LoopBlock& block, const QString& instrument, const QString& name) {
                    chosen.append({block, instrument, name});
                });
    }

    QList<Chosen> chosen;
};

/// A browser of loops over a library that a test writes, with all that it needs.
class BrowserStage {
public:
    /// The content server is one that nobody runs, unless a test gives another.
    explicit BrowserStage(const QUrl& server = QUrl("http://127.0.0.1:1"))
        : catalog(server),
          registry(files.filePath("loops/installed_registry.json"), files.bankRoot()),
          downloads(&catalog, &registry, &files.library(), &files.instruments())
    {
        files.instruments().loadBuiltinGmInstruments();
        files.instruments().registerInstrument({.id = "contrabajo",
                                                .name = "Contrabajo",
                                                .category = InstrumentCategory::Bass,
                                                .generalMidiProgram = 32,
                                                .soundfontBankPath = {}});
    }

    ~BrowserStage() { destroyBrowser(); }

    LoopLibrary& library() { return files.library(); }

    void add(const TestRhythm& rhythm) { files.addPackage(rhythm.id, rhythm.package()); }

    /// A library of this rhythm alone.
    void load(const TestRhythm& rhythm)
    {
        add(rhythm);
        library().reload();
    }

    /// A library of one rhythm with one layer "l", named "L".
    void load(const QList<LoopVariant>& variants)
    {
        load({.id = "r",
              .name = "R",
              .style = "s",
              .layers = {layerOf("l", "r", "L")},
              .variants = variants});
    }

    /// Two styles, three rhythms in two meters, one of them with all that a rhythm may have.
    void addThree()
    {
        add({.id = "a_chacarera",
             .name = "Chacarera",
             .style = "folklore",
             .meter = {.numerator = 6, .denominator = 8, .isCompound = true},
             .layers = {layerOf("chac_bombo", "a_chacarera", "Bombo")},
             .variants = {variantOf("chac_bombo", LoopSection::Normal, 1, 2)}});
        add({.id = "b_zamba",
             .name = "Zamba",
             .style = "folklore",
             .layers = {layerOf("zam_bajo", "b_zamba", "Bajo", "contrabajo"),
                        layerOf("zam_piano", "b_zamba", "Piano izquierda", "gm_piano")},
             .variants = {variantOf("zam_bajo", LoopSection::Final, 1),
                          variantOf("zam_bajo", LoopSection::Normal, 2),
                          variantOf("zam_bajo", LoopSection::Normal, 1, 4),
                          variantOf("zam_bajo", LoopSection::Intermedio, 1),
                          variantOf("zam_bajo", LoopSection::Intro, 1),
                          variantOf("zam_piano", LoopSection::Normal, 1),
                          variantOf("zam_piano", LoopSection::Intro, 7)}});
        add({.id = "c_cumbia",
             .name = "Cumbia",
             .style = "popular",
             .layers = {layerOf("cum_guiro", "c_cumbia", "Güiro")},
             .variants = {variantOf("cum_guiro", LoopSection::Final, 1)}});
        library().reload();
    }

    /// Made on first use, on the screen of a narrow panel.
    LoopBrowser& browser()
    {
        if (!browser_) {
            browser_ = std::make_unique<LoopBrowser>(&library(), &files.instruments(), &catalog,
                                                     &downloads, &registry, engine.get());
            browser_->resize(252, 600);
            browser_->show();
            QApplication::processEvents();
        }
        return *browser_;
    }

    void destroyBrowser() { browser_.reset(); }

    /// Gives the browser something to be heard with. To be called ahead of it.
    void addEngine()
    {
        ContentFixture::write(files.filePath("gm.sf2"),
                              TinyBank::bytes({{0, 0, 100}, {0, 32, 80}, {128, 0, 50}}));
        player = std::make_unique<SoundfontPlayer>(SoundfontPlayer::Mode::Realtime);
        player->loadGmBank(files.filePath("gm.sf2"));
        engine = std::make_unique<PlaybackEngine>(player.get(), &library(), &files.instruments());
    }

    // ---- What is on the screen ----

    QComboBox& styles() { return *browser().findChildren<QComboBox*>().at(0); }

    QComboBox& rhythms() { return *browser().findChildren<QComboBox*>().at(1); }

    QComboBox& layers() { return *browser().findChildren<QComboBox*>().at(2); }

    QScrollArea& area() { return *browser().findChild<QScrollArea*>(); }

    /// The cards in their order from the top.
    QList<QFrame*> cards()
    {
        QList<QFrame*> cards;
        const QLayout* layout = area().widget()->layout();
        for (int i = 0; i < layout->count(); ++i) {
            if (auto* card = qobject_cast<QFrame*>(layout->itemAt(i)->widget()))
                cards.append(card);
        }
        return cards;
    }

    /// One line for each card: its title, its shade and the numbers of its variants.
    QStringList cardLines()
    {
        QStringList lines;
        for (const QFrame* card : cards()) {
            QString line = card->findChild<QLabel*>("header_grupo")->text() + ' ' +
                           card->property("alt").toString() + ':';
            for (const VariationButton* button : card->findChildren<VariationButton*>())
                line += ' ' + button->text();
            lines.append(line);
        }
        return lines;
    }

    /// The button of a variant on the card of this title.
    VariationButton* variant(const QString& title, int number)
    {
        for (const QFrame* card : cards()) {
            if (card->findChild<QLabel*>("header_grupo")->text() == title)
                return Widgets::withText<VariationButton>(*card, QString::number(number));
        }
        return nullptr;
    }

    /// The button under that of a variant.
    QToolButton* preview(const QString& title, int number)
    {
        return Widgets::withText<QToolButton>(*variant(title, number)->parentWidget(), "▶");
    }

    static QStringList textsOf(const QComboBox& combo)
    {
        QStringList texts;
        for (int i = 0; i < combo.count(); ++i)
            texts.append(combo.itemText(i));
        return texts;
    }

    static QStringList idsOf(const QComboBox& combo)
    {
        QStringList ids;
        for (int i = 0; i < combo.count(); ++i)
            ids.append(combo.itemData(i).toString());
        return ids;
    }

    ContentFixture files;
    ContentCatalog catalog;
    InstalledContentRegistry registry;
    ContentDownloadManager downloads;
    std::unique_ptr<SoundfontPlayer> player;
    std::unique_ptr<PlaybackEngine> engine;

private:
    std::unique_ptr<LoopBrowser> browser_;
};
