#include "shell/OpenProjectDialog.h"
#include "shell/ProjectGallery.h"
#include "shell/RecoveryBar.h"
#include "shell/controls/PlainText.h"
#include "storage/RecoveryCopy.h"
#include "support/ProjectBuilder.h"
#include "support/StaticServer.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QJsonArray>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace ForeignTextsTests {

using namespace ProjectBuilder;
using namespace Qt::Literals::StringLiterals;

namespace {

/// Where a widget takes this for rich, it opens the file and shows the letters without the marks.
const QString kName = "<img src='velta_foreign.png'><b>Do</b>";

/// A package that says the name wherever it says a text that is shown.
QByteArray package()
{
    const QJsonObject meter{{"numerator", 4}, {"denominator", 4}};
    const QJsonObject rhythm{
        {"id", "rich"}, {"displayName", kName}, {"styleId", kName}, {"timeSignature", meter}};
    const QJsonObject layer{{"id", "rich_layer"},
                            {"rhythmId", "rich"},
                            {"label", kName},
                            {"instrumentId", "rich_instrument"}};
    const QJsonObject variant{
        {"layerId", "rich_layer"}, {"section", "Normal"}, {"variantIndex", 1}, {"durationBars", 1}};
    const QJsonObject instrument{{"id", "rich_instrument"}, {"name", kName}, {"category", "Piano"}};
    return QJsonDocument(
               QJsonObject{{"musicalStyle", QJsonObject{{"id", kName}, {"displayName", kName}}},
                           {"rhythm", rhythm},
                           {"loopLayers", QJsonArray{layer}},
                           {"loopVariants", QJsonArray{variant}},
                           {"instruments", QJsonArray{instrument}}})
        .toJson();
}

QByteArray catalogue()
{
    return QJsonDocument(
               QJsonObject{{"rhythms", QJsonArray{QJsonObject{{"rhythmId", "offered"},
                                                              {"displayName", kName},
                                                              {"styleDisplayName", kName},
                                                              {"estimatedDownloadBytes", 10}}}}})
        .toJson();
}

void writeWork(Project& work)
{
    work.name = kName;
    Track track = melodyTrack({melody({note(60, 0.0)})}, "rich_instrument");
    Track accompaniment = loopTrack({loop("rich", "rich_layer", 0.0, 4.0)}, kName);
    AudioTrack voice = voiceTrack({clip(kName + ".wav")});
    track.name = accompaniment.name = voice.name = kName;
    work.tracks = {track, accompaniment};
    work.audioTracks = {voice};
    work.collapsedGroups = {kName};
}

bool isRich(const QString& text)
{
    return Qt::mightBeRichText(text) && text.contains("<img");
}

/// What a walk over widgets has seen: every text with the name, and those that are not shown as
/// they stand.
struct Texts {
    int seen = 0;
    QStringList rich;

    void look(const QString& where, const QString& text, bool isPlain)
    {
        if (!text.contains("velta_foreign"))
            return;
        ++seen;
        if (!isPlain && isRich(text))
            rich.append(where + ": " + text);
    }

    void look(const QAbstractItemView& view)
    {
        const QAbstractItemModel* model = view.model();
        for (int row = 0; model && row < model->rowCount(); ++row) {
            const QModelIndex index = model->index(row, 0);
            look("item", index.data().toString(), true);
            for (const int role : {Qt::ToolTipRole, Qt::WhatsThisRole})
                look("tool tip of an item", index.data(role).toString(), false);
        }
    }

    void look(const QWidget& widget)
    {
        const QString name = QString::fromLatin1(widget.metaObject()->className());
        look("tool tip of " + name, widget.toolTip(), false);
        look("help of " + name, widget.whatsThis(), false);
        if (const auto* label = qobject_cast<const QLabel*>(&widget))
            look(name, label->text(), label->textFormat() == Qt::PlainText);
        if (const auto* field = qobject_cast<const QLineEdit*>(&widget))
            look(name, field->text(), true);
        if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
            look(name, button->text(), true);
        if (const auto* view = qobject_cast<const QAbstractItemView*>(&widget))
            look(*view);
        if (const auto* box = qobject_cast<const QComboBox*>(&widget))
            look(*box->view());
    }
};

/// All of a window.
Texts textsOf(const QWidget& root)
{
    Texts texts;
    texts.look(root);
    for (const QWidget* widget : root.findChildren<QWidget*>())
        texts.look(*widget);
    return texts;
}

} // namespace

/// What comes from a file or a server is read as it stands.
class ForeignTextsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theWindowShowsThemAsTheyStand_data();
    void theWindowShowsThemAsTheyStand();
    void dialogsOfWorksShowThemAsTheyStand();
    void theGalleryShowsThemAsTheyStand();
    void theSearchShowsThemAsTheyStand();
    void theRecoveryBarShowsThemAsTheyStand();
    void titlesKeepTheirBrackets();
    void toolTipsOfOrdinaryTextsStayAsTheyAre();

private:
    std::unique_ptr<WindowStage> stage_;
    std::unique_ptr<StaticServer> server_;
};

void ForeignTextsTest::init()
{
    stage_ = std::make_unique<WindowStage>();
    const UserHome& home = stage_->home();
    QVERIFY(QDir().mkpath(home.filePath("resources/loops/installed")));
    QVERIFY(QDir().mkpath(home.filePath("served")));
    writeBytes(home.filePath("resources/loops/installed/rich.content.json"), package());
    writeBytes(home.filePath("served/catalog.json"), catalogue());
    server_ = std::make_unique<StaticServer>(home.filePath("served"));
    QVERIFY2(server_->problem().isEmpty(), qPrintable(server_->problem()));
    qputenv("VELTA_CONTENT_URL", server_->url().toString().toUtf8());
    Project work;
    writeWork(work);
    QVERIFY(stage_->saveWork("rich", work));
    stage_->window().openProject("rich");
    QVERIFY(stage_->showWindow());
}

void ForeignTextsTest::cleanup()
{
    stage_.reset();
    server_.reset();
    qunsetenv("VELTA_CONTENT_URL");
}

void ForeignTextsTest::theWindowShowsThemAsTheyStand_data()
{
    QTest::addColumn<int>("track");
    QTest::addColumn<int>("least");

    // The caption, the name, the style, the rhythm, the layer and the instrument.
    QTest::newRow("a melody") << 0 << 6;
    QTest::newRow("an accompaniment") << 1 << 5;
    QTest::newRow("a voice") << -1 << 4;
}

void ForeignTextsTest::theWindowShowsThemAsTheyStand()
{
    QFETCH(int, track);
    QFETCH(int, least);
    auto& arranger = *stage_->window().findChild<TrackArranger*>();
    if (track < 0)
        arranger.selectAudioTrack(0);
    else
        arranger.selectNoteTrack(track, false);
    const Texts texts = textsOf(stage_->window());
    QCOMPARE(texts.rich, QStringList());
    QVERIFY2(texts.seen >= least, qPrintable(QString::number(texts.seen)));
}

void ForeignTextsTest::dialogsOfWorksShowThemAsTheyStand()
{
    Texts texts;
    stage_->prompts().inDialog([&](QDialog& dialog) {
        texts = textsOf(dialog);
        dialog.reject();
    });
    stage_->window().openProjectDialog();
    QCOMPARE(texts.rich, QStringList());
    QCOMPARE(texts.seen, 1);
}

void ForeignTextsTest::theGalleryShowsThemAsTheyStand()
{
    LocalStorageProvider storage{QString()};
    const ProjectGallery gallery(&storage);
    const Texts texts = textsOf(gallery);
    QCOMPARE(texts.rich, QStringList());
    // The name and its tool tip.
    QCOMPARE(texts.seen, 2);
}

void ForeignTextsTest::theSearchShowsThemAsTheyStand()
{
    Texts texts;
    QTimer look;
    connect(&look, &QTimer::timeout, this, [&] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog)
            return;
        texts = textsOf(*dialog);
        if (texts.seen > 0)
            dialog->close();
    });
    look.start(5);
    QTimer::singleShot(20000, this, [] {
        if (QWidget* dialog = QApplication::activeModalWidget())
            dialog->close();
    });
    Widgets::withText<QPushButton>(stage_->window(), "Buscar más ritmos…")->click();
    QCOMPARE(texts.rich, QStringList());
    QVERIFY(texts.seen > 0);
}

void ForeignTextsTest::theRecoveryBarShowsThemAsTheyStand()
{
    stage_->destroyWindow();
    Project lost;
    // Behind the mark that turns all letters round, over many lines, and for a whole page.
    lost.name = kName + u"\u202E"_s + "\n" + QString(5000, 'x');
    {
        RecoveryCopy copy(RecoveryCopy::standardFolder());
        QVERIFY(copy.keepNow({{}, {}, {}, lost}));
    }
    QVERIFY(stage_->showWindow());
    auto& bar = *stage_->window().findChild<RecoveryBar*>();
    QVERIFY(bar.isVisible());
    const Texts texts = textsOf(bar);
    QCOMPARE(texts.rich, QStringList());
    QCOMPARE(texts.seen, 1);
    const QString sentence = bar.findChild<QLabel*>()->text();
    QVERIFY2(sentence.startsWith("Velta se cerró sin guardar «" + kName + " xxx") &&
                 sentence.endsWith("x…»."),
             qPrintable(sentence));
    QVERIFY(sentence.size() < 250);
}

void ForeignTextsTest::titlesKeepTheirBrackets()
{
    Project bracketed;
    bracketed.name = "Canción [*]";
    QVERIFY(stage_->saveWork("bracketed", bracketed));
    stage_->window().openProject("bracketed");
    QTRY_COMPARE(stage_->window().windowHandle()->title().left(19), u"Velta — Canción [*]"_s);
}

void ForeignTextsTest::toolTipsOfOrdinaryTextsStayAsTheyAre()
{
    for (const char* text : {"Zamba", "1 < 2 & 3", "a\nb", ""})
        QCOMPARE(plainToolTip(text), text);
    QCOMPARE(plainToolTip("<b>x</b>"), "<p>&lt;b&gt;x&lt;/b&gt;</p>");
}

VELTA_TEST(ForeignTextsTest)

} // namespace ForeignTextsTests

#include "ForeignTextsTest.moc"
