#include "shell/controls/InstrumentSelector.h"

#include "support/ContentFixture.h"
#include "support/ContextTranslator.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

Instrument recorded(const QString& id, const QString& name, const QString& bank)
{
    return {.id = id,
            .name = name,
            .category = InstrumentCategory::Folklorico,
            .source = InstrumentSource::CustomRecordedBank,
            .generalMidiProgram = 0,
            .soundfontBankPath = bank};
}

Instrument builtIn(const QString& id, const QString& name)
{
    Instrument instrument;
    instrument.id = id;
    instrument.name = name;
    return instrument;
}

QStringList texts(const QComboBox& box)
{
    QStringList result;
    for (int i = 0; i < box.count(); ++i)
        result.append(box.itemText(i));
    return result;
}

QString lastText(const QComboBox& box)
{
    return box.itemText(box.count() - 1);
}

} // namespace

class InstrumentSelectorTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void listsTheLibraryInItsOrder();
    void startsOnTheFirstInstrument();
    void recordedInstrumentWithoutItsBankIsMarked_data();
    void recordedInstrumentWithoutItsBankIsMarked();
    void theMarkIsTranslatable();
    void namesAreShownAsTheyAre();

    void selectsAnInstrumentSilently();
    void unlistedInstrumentChangesNothing_data();
    void unlistedInstrumentChangesNothing();
    void theFirstOfEqualIdsIsSelected();

    void choiceWithTheKeyboardIsAnnounced();
    void choiceInTheListIsAnnounced();
    void choosingTheSameAgainIsSilent();
    void instrumentWithoutAnIdIsNotAnnounced();

    void installedBankTakesTheMarkAway();
    void selectionStaysAsTheLibraryGrows();
    void choiceIsStillAnnouncedAfterARefill();
    void refillWithAnOpenListIsHarmless();

    void withoutALibraryIsEmpty();
    void emptyLibraryGivesAnEmptyBoxUntilItIsFilled();
    void longNamesDoNotWidenIt();

private:
    void makeBox()
    {
        box_ = std::make_unique<InstrumentSelector>(&content_->instruments());
        selected_ =
            std::make_unique<QSignalSpy>(box_.get(), &InstrumentSelector::instrumentSelected);
        indexChanged_ = std::make_unique<QSignalSpy>(box_.get(), &QComboBox::currentIndexChanged);
    }

    bool isSilent() const { return selected_->isEmpty() && indexChanged_->isEmpty(); }

    void installBank(const QString& path) const
    {
        ContentFixture::write(content_->bankRoot() + '/' + path, "bank");
    }

    std::unique_ptr<ContentFixture> content_;
    std::unique_ptr<InstrumentSelector> box_;
    std::unique_ptr<QSignalSpy> selected_;
    std::unique_ptr<QSignalSpy> indexChanged_;
};

void InstrumentSelectorTest::init()
{
    content_ = std::make_unique<ContentFixture>();
    content_->instruments().loadBuiltinGmInstruments();
    content_->instruments().registerInstrument(recorded("quena", "Quena", "andes/quena.sf2"));
    makeBox();
}

void InstrumentSelectorTest::cleanup()
{
    selected_.reset();
    indexChanged_.reset();
    box_.reset();
    content_.reset();
}

// ---- The list ------------------------------------------------------------------------------

void InstrumentSelectorTest::listsTheLibraryInItsOrder()
{
    QCOMPARE(texts(*box_),
             (QStringList{"Piano", "Piano eléctrico", "Guitarra criolla (GM)", "Guitarra eléctrica",
                          "Cuerdas", "Violín", "Bajo", "Bajo acústico", "Flauta", "Flauta de pan",
                          "Trompeta", "Saxo", "Sintetizador", "Pad suave", "Marimba", "Batería",
                          "Quena (aprox. GM)"}));
    QCOMPARE(box_->itemData(2).toString(), "gm_guitarra_nylon");
    QCOMPARE(box_->itemData(16).toString(), "quena");
}

void InstrumentSelectorTest::startsOnTheFirstInstrument()
{
    QCOMPARE(box_->currentInstrumentId(), "gm_piano");
    QVERIFY(isSilent());
}

void InstrumentSelectorTest::recordedInstrumentWithoutItsBankIsMarked_data()
{
    QTest::addColumn<InstrumentSource>("source");
    QTest::addColumn<QString>("bank");
    QTest::addColumn<QString>("text");

    const auto gm = InstrumentSource::GeneralMidiBank;
    const auto own = InstrumentSource::CustomRecordedBank;
    QTest::newRow("bank on disk") << own << "there.sf2"
                                  << "Erke";
    QTest::newRow("bank missing") << own << "missing.sf2"
                                  << "Erke (aprox. GM)";
    QTest::newRow("no bank named") << own << ""
                                   << "Erke (aprox. GM)";
    QTest::newRow("General MIDI") << gm << ""
                                  << "Erke";
    QTest::newRow("General MIDI with the name of a missing bank") << gm << "missing.sf2"
                                                                  << "Erke";
    QTest::newRow("unknown source") << static_cast<InstrumentSource>(9) << ""
                                    << "Erke";
}

void InstrumentSelectorTest::recordedInstrumentWithoutItsBankIsMarked()
{
    QFETCH(InstrumentSource, source);
    QFETCH(QString, bank);
    installBank("there.sf2");
    Instrument erke = recorded("erke", "Erke", bank);
    erke.source = source;
    content_->instruments().registerInstrument(erke);
    QTEST(lastText(*box_), "text");
}

void InstrumentSelectorTest::theMarkIsTranslatable()
{
    ContextTranslator translator;
    QApplication::installTranslator(&translator);
    box_->repopulate();
    QApplication::removeTranslator(&translator);
    QCOMPARE(lastText(*box_), "QuenaInstrumentSelector:  (aprox. GM)");
    QCOMPARE(box_->itemText(0), "Piano");
}

void InstrumentSelectorTest::namesAreShownAsTheyAre()
{
    content_->instruments().registerInstrument(builtIn("x", "<b>Bombo</b> & \"caja\" %1"));
    QCOMPARE(lastText(*box_), "<b>Bombo</b> & \"caja\" %1");
}

// ---- Selecting by code ---------------------------------------------------------------------

void InstrumentSelectorTest::selectsAnInstrumentSilently()
{
    for (const Instrument& instrument : content_->instruments().instruments()) {
        box_->setCurrentInstrument(instrument.id);
        QCOMPARE(box_->currentInstrumentId(), instrument.id);
    }
    QCOMPARE(box_->currentText(), "Quena (aprox. GM)");
    QVERIFY(isSilent());
}

void InstrumentSelectorTest::unlistedInstrumentChangesNothing_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("unknown") << "theremin";
    QTest::newRow("empty") << "";
    QTest::newRow("null") << QString();
    QTest::newRow("other case") << "GM_PIANO";
    QTest::newRow("its name") << "Flauta";
}

void InstrumentSelectorTest::unlistedInstrumentChangesNothing()
{
    QFETCH(QString, id);
    box_->setCurrentInstrument("gm_violin");
    box_->setCurrentInstrument(id);
    QCOMPARE(box_->currentInstrumentId(), "gm_violin");
    QVERIFY(isSilent());
}

void InstrumentSelectorTest::theFirstOfEqualIdsIsSelected()
{
    box_->addItem("Otra flauta", "gm_flauta");
    box_->setCurrentInstrument("gm_flauta");
    QCOMPARE(box_->currentText(), "Flauta");
}

// ---- The user's choice ---------------------------------------------------------------------

void InstrumentSelectorTest::choiceWithTheKeyboardIsAnnounced()
{
    QTest::keyClick(box_.get(), Qt::Key_Down);
    QTest::keyClick(box_.get(), Qt::Key_End);
    const QList<QVariantList> expected{{"gm_epiano"}, {"quena"}};
    QCOMPARE(QList<QVariantList>(*selected_), expected);
    QCOMPARE(box_->currentInstrumentId(), "quena");
}

void InstrumentSelectorTest::choiceInTheListIsAnnounced()
{
    box_->show();
    QVERIFY(QTest::qWaitForWindowExposed(box_.get()));
    box_->showPopup();
    QTest::keyClick(box_->view(), Qt::Key_Down);
    QTest::keyClick(box_->view(), Qt::Key_Down);
    QVERIFY(selected_->isEmpty());
    QTest::keyClick(box_->view(), Qt::Key_Return);
    const QList<QVariantList> expected{{"gm_guitarra_nylon"}};
    QCOMPARE(QList<QVariantList>(*selected_), expected);
}

void InstrumentSelectorTest::choosingTheSameAgainIsSilent()
{
    QTest::keyClick(box_.get(), Qt::Key_Home);
    QVERIFY(isSilent());
}

void InstrumentSelectorTest::instrumentWithoutAnIdIsNotAnnounced()
{
    content_->instruments().registerInstrument(builtIn("", "Nadie"));
    QTest::keyClick(box_.get(), Qt::Key_End);
    QCOMPARE(box_->currentText(), "Nadie");
    QVERIFY(selected_->isEmpty());
}

// ---- The library changes -------------------------------------------------------------------

void InstrumentSelectorTest::installedBankTakesTheMarkAway()
{
    box_->setCurrentInstrument("quena");
    installBank("andes/quena.sf2");
    content_->instruments().registerInstrument(recorded("quena", "Quena", "andes/quena.sf2"));
    QCOMPARE(box_->count(), 17);
    QCOMPARE(lastText(*box_), "Quena");
    QCOMPARE(box_->currentInstrumentId(), "quena");
    QCOMPARE(box_->currentText(), "Quena");
    QVERIFY(isSilent());
}

void InstrumentSelectorTest::selectionStaysAsTheLibraryGrows()
{
    box_->setCurrentInstrument("gm_saxo");
    content_->instruments().registerInstrument(recorded("erke", "Erke", ""));
    content_->instruments().registerInstrument(builtIn("gm_saxo", "Saxo tenor"));
    QCOMPARE(box_->count(), 18);
    QCOMPARE(box_->currentInstrumentId(), "gm_saxo");
    QCOMPARE(box_->currentText(), "Saxo tenor");
    QVERIFY(isSilent());
}

void InstrumentSelectorTest::choiceIsStillAnnouncedAfterARefill()
{
    box_->repopulate();
    box_->repopulate();
    QTest::keyClick(box_.get(), Qt::Key_Down);
    const QList<QVariantList> expected{{"gm_epiano"}};
    QCOMPARE(QList<QVariantList>(*selected_), expected);
}

void InstrumentSelectorTest::refillWithAnOpenListIsHarmless()
{
    box_->show();
    QVERIFY(QTest::qWaitForWindowExposed(box_.get()));
    box_->setCurrentInstrument("gm_bajo");
    box_->showPopup();
    QTest::keyClick(box_->view(), Qt::Key_End);
    content_->instruments().registerInstrument(recorded("erke", "Erke", ""));
    box_->hidePopup();
    QCOMPARE(box_->currentInstrumentId(), "gm_bajo");
    QVERIFY(selected_->isEmpty());
}

// ---- Little and much -----------------------------------------------------------------------

void InstrumentSelectorTest::withoutALibraryIsEmpty()
{
    InstrumentSelector box(nullptr);
    box.repopulate();
    box.setCurrentInstrument("gm_piano");
    QCOMPARE(box.count(), 0);
    QCOMPARE(box.currentInstrumentId(), QString());
}

void InstrumentSelectorTest::emptyLibraryGivesAnEmptyBoxUntilItIsFilled()
{
    InstrumentLibrary empty("");
    InstrumentSelector box(&empty);
    QCOMPARE(box.count(), 0);
    QCOMPARE(box.currentInstrumentId(), QString());
    QSignalSpy selected(&box, &InstrumentSelector::instrumentSelected);
    empty.loadBuiltinGmInstruments();
    QCOMPARE(box.currentInstrumentId(), "gm_piano");
    QVERIFY(selected.isEmpty());
}

void InstrumentSelectorTest::longNamesDoNotWidenIt()
{
    const QSize hint = box_->sizeHint();
    const QSize least = box_->minimumSizeHint();
    content_->instruments().registerInstrument(recorded("x", QString(400, 'm'), ""));
    makeBox();
    box_->setCurrentInstrument("x");
    QCOMPARE(box_->sizeHint(), hint);
    QCOMPARE(box_->minimumSizeHint(), least);
    QVERIFY(least.width() <= 160);
}

QTEST_MAIN(InstrumentSelectorTest)
#include "InstrumentSelectorTest.moc"
