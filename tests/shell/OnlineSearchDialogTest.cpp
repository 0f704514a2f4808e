#include "shell/OnlineSearchDialog.h"

#include "BrowserStage.h"
#include "shell/OnlineSearchModel.h"
#include "support/ContextTranslator.h"
#include "support/LocalServer.h"
#include "support/StaticServer.h"
#include "support/TestProgram.h"

#include <QDialogButtonBox>
#include <QListView>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <limits>
#include <memory>

namespace OnlineSearchDialogTests {

namespace {

const QString kAsking = "Consultando el catálogo…";

QByteArray catalogOf(const QList<CatalogEntry>& entries)
{
    QJsonArray rhythms;
    for (const CatalogEntry& entry : entries)
        rhythms.append(QJsonObject{
            {"rhythmId", entry.rhythmId},
            {"displayName", entry.displayName},
            {"styleDisplayName", entry.styleDisplayName},
            {"estimatedDownloadBytes", static_cast<double>(entry.estimatedDownloadBytes)}});
    return QJsonDocument(QJsonObject{{"rhythms", rhythms}}).toJson();
}

CatalogEntry offer(const QString& id, const QString& name, const QString& style, qint64 bytes)
{
    CatalogEntry entry;
    entry.rhythmId = id;
    entry.displayName = name;
    entry.styleDisplayName = style;
    entry.estimatedDownloadBytes = bytes;
    return entry;
}

const CatalogEntry kHuayno = offer("huayno", "Huayno", "Andino", 1500000);
const CatalogEntry kZamba = offer("b_zamba", "Zamba de la red", "Folklore", 0);

TestRhythm huayno()
{
    return {.id = "huayno",
            .name = "Huayno",
            .style = "andino",
            .layers = {layerOf("h", "huayno", "Bombo")},
            .variants = {variantOf("h", LoopSection::Normal, 1)}};
}

/// Serves a catalogue, and of everything else what a test has it do.
LocalServer::Service catalogServer(const QByteArray& catalog,
                                   const LocalServer::Behaviour& rest = keepsSilent())
{
    return [=](QTcpSocket& connection, const QByteArray& request) {
        if (request.startsWith("GET /catalog.json "))
            sends(httpAnswer("200 OK", catalog))(connection);
        else
            rest(connection);
    };
}

/// What a rhythm of the library shows on the search's list: "text [id] installed".
QString lineOf(const OnlineSearchRow& row)
{
    return row.text() + " [" + row.rhythmId + ']' + (row.installed ? " installed" : "");
}

} // namespace

class OnlineSearchDialogTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // The rows
    void whatIsInstalledComesFirst();
    void anInstalledRhythmShowsItsNameIfThereIsOne();
    void sizesAreInMegabytes_data();
    void sizesAreInMegabytes();
    void namesAreTakenAsTheyAre();
    void theProgramsOwnRhythmsAreNotOffered();
    void namesFromElsewhereStayInTheirLine_data();
    void namesFromElsewhereStayInTheirLine();
    void nothingInstalledAndNothingOfferedIsNothing();

    // The dialog
    void itStandsFromTopToBottom();
    void itemsHoldTheirRhythm();
    void closeAndEscapeReject();
    void wordsAreTranslatedInItsOwnContext();
    void aLongMessageDoesNotWidenIt();

    // The catalogue
    void itAsksForTheCatalogueAndListsWhatIsInstalledMeanwhile();
    void theCatalogueEmptiesTheStatusAndFillsTheList();
    void withoutAServerWhatIsInstalledIsListed();
    void withoutAServerTheLastCatalogueIsListedAndNamed();
    void withoutAnAddressItTellsSo();
    void aBrokenCatalogueIsTold();
    void anEarlierCatalogueIsListedAtOnce();
    void tenThousandRhythmsAreListed();
    void messagesOfAnyLengthAreCut();

    // Installing
    void progressIsShownAsItStands();
    void aFailureIsShown();
    void withoutACurrentRhythmNothingHappens();
    void whatIsInstalledIsNotInstalledAgain();
    void whatIsOfferedIsNotUninstalled();
    void whatResistsChangesNothing();
    void aSecondInstallIsRefused();
    void theFocusShowsWhatItMakesCurrent();
    void theKeyboardChoosesAndInstalls();

    // Against a server
    void aRhythmIsInstalledAndUninstalled();
    void theBrowserShowsWhatTheSearchInstalled();
    void aMissingRhythmIsToldAndMayBeTriedAgain();
    void wantedRhythmsAreChosenOneAfterTheOther();
    void anInstallGoesOnWhenTheDialogCloses();
    void aLaterDialogHearsOfARunningInstall();
    void aDownloadMayBeCancelled();
    void nobodyListensWhenItIsGone();

private:
    BrowserStage& stage() { return *stage_; }

    /// A stage with the address of a server.
    void use(const QUrl& server) { stage_ = std::make_unique<BrowserStage>(server); }

    void open()
    {
        dialog_ = std::make_unique<OnlineSearchDialog>(stage().library(), stage().catalog,
                                                       stage().downloads, stage().registry);
        dialog_->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog_.get()));
    }

    /// Opens the dialog and waits for the catalogue.
    void openLoaded()
    {
        const QSignalSpy loaded(&stage().catalog, &ContentCatalog::catalogLoaded);
        open();
        QTRY_COMPARE_WITH_TIMEOUT(loaded.count(), 1, 20000);
    }

    QString status() const { return dialog_->findChild<QLabel*>()->text(); }

    QListView& list() const { return *dialog_->findChild<QListView*>(); }

    QModelIndex line(int row) const { return list().model()->index(row, 0); }

    QPushButton& cancel() const { return *Widgets::withText<QPushButton>(*dialog_, "Cancelar"); }

    QStringList lines() const
    {
        QStringList lines;
        for (int row = 0; row < list().model()->rowCount(); ++row)
            lines.append(line(row).data().toString());
        return lines;
    }

    void choose(int row) const
    {
        QTest::mouseClick(list().viewport(), Qt::LeftButton, {},
                          list().visualRect(line(row)).center());
    }

    void clickInstall() const
    {
        Widgets::click(Widgets::withText<QPushButton>(*dialog_, "Instalar ritmo"));
    }

    void clickUninstall() const
    {
        Widgets::click(Widgets::withText<QPushButton>(*dialog_, "Desinstalar ritmo"));
    }

    QStringList rows()
    {
        QStringList lines;
        for (const OnlineSearchRow& row :
             OnlineSearchModel::rows(stage().library(), stage().catalog, stage().registry))
            lines.append(lineOf(row));
        return lines;
    }

    /// Has the catalogue hold these entries.
    void loadCatalog(const QList<CatalogEntry>& entries)
    {
        LocalServer server(catalogServer(catalogOf(entries)));
        use(server.url("http", ""));
        stage().catalog.refresh();
        QTRY_VERIFY_WITH_TIMEOUT(stage().catalog.isLoaded(), 20000);
    }

    std::unique_ptr<BrowserStage> stage_;
    std::unique_ptr<OnlineSearchDialog> dialog_;
};

void OnlineSearchDialogTest::init()
{
    use(QUrl("http://127.0.0.1:1"));
}

void OnlineSearchDialogTest::cleanup()
{
    dialog_.reset();
    stage_.reset();
}

// ---- The rows ------------------------------------------------------------------------------

void OnlineSearchDialogTest::whatIsInstalledComesFirst()
{
    loadCatalog({kHuayno, offer("c_cumbia", "Cumbia", "Popular", 1048576), kZamba});
    stage().addThree();
    stage().registry.registerRhythm("c_cumbia", {});
    stage().registry.registerRhythm("b_zamba", {});
    QCOMPARE(rows(), (QStringList{"Cumbia — instalado [c_cumbia] installed",
                                  "Zamba — instalado [b_zamba] installed",
                                  "Huayno (Andino) — 1.4 MB para descargar [huayno]"}));
}

void OnlineSearchDialogTest::anInstalledRhythmShowsItsNameIfThereIsOne()
{
    stage().addThree();
    stage().registry.registerRhythm("perdido", {});
    stage().registry.registerRhythm("b_zamba", {});
    QCOMPARE(rows(), (QStringList{"perdido — instalado [perdido] installed",
                                  "Zamba — instalado [b_zamba] installed"}));
}

void OnlineSearchDialogTest::sizesAreInMegabytes_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("size");
    QTest::newRow("nothing") << qint64(0) << "0.0";
    QTest::newRow("one megabyte of 1024 x 1024 bytes") << qint64(1048576) << "1.0";
    QTest::newRow("a million bytes is less") << qint64(1000000) << "1.0";
    QTest::newRow("one decimal") << qint64(1500000) << "1.4";
    QTest::newRow("the decimal is rounded") << qint64(1887436) << "1.8";
    QTest::newRow("little is nothing") << qint64(5000) << "0.0";
    QTest::newRow("a large bank") << qint64(155189248) << "148.0";
    QTest::newRow("no dots between thousands") << qint64(4294967296000) << "4096000.0";
}

void OnlineSearchDialogTest::sizesAreInMegabytes()
{
    QFETCH(qint64, bytes);
    QFETCH(QString, size);
    loadCatalog({offer("h", "Huayno", "Andino", bytes)});
    QCOMPARE(rows(), QStringList{"Huayno (Andino) — " + size + " MB para descargar [h]"});
}

void OnlineSearchDialogTest::namesAreTakenAsTheyAre()
{
    loadCatalog({offer("%1", "%2 & <b>%3</b>", "%1", 0)});
    stage().registry.registerRhythm("%1%2", {});
    QCOMPARE(rows(), (QStringList{"%1%2 — instalado [%1%2] installed",
                                  "%2 & <b>%3</b> (%1) — 0.0 MB para descargar [%1]"}));
}

void OnlineSearchDialogTest::nothingInstalledAndNothingOfferedIsNothing()
{
    stage().addThree();
    QCOMPARE(rows(), QStringList());
}

void OnlineSearchDialogTest::theProgramsOwnRhythmsAreNotOffered()
{
    loadCatalog({kZamba, kHuayno, offer("folklore_zamba", "Zamba", "Folklore", 0),
                 offer("FOLKLORE_zamba", "Zamba", "Folklore", 0)});
    stage().addThree();
    QCOMPARE(rows(), QStringList{"Huayno (Andino) — 1.4 MB para descargar [huayno]"});
}

void OnlineSearchDialogTest::namesFromElsewhereStayInTheirLine_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    const QString most(200, 'x');
    QTest::newRow("long") << most << most;
    QTest::newRow("too long") << most + 'x' << most + QChar(0x2026);
    QTest::newRow("a pair of surrogates at the cut")
        << QString(199, 'x') + "😀y" << QString(199, 'x') + QChar(0x2026);
    QTest::newRow("an override of the direction")
        << QString::fromUtf16(u"a\u202Eb\u202Cc") << "abc";
    QTest::newRow("isolates") << QString::fromUtf16(u"\u2066a\u2067b\u2068c\u2069") << "abc";
    QTest::newRow("embeddings") << QString::fromUtf16(u"\u202Aa\u202Bb\u202Dc") << "abc";
    QTest::newRow("marks") << QString::fromUtf16(u"a\u200Eb\u200Fc\u061C") << "abc";
    QTest::newRow("letters that run the other way")
        << QString::fromUtf16(u"\u05D0\u05D1") << QString::fromUtf16(u"\u05D0\u05D1");
    QTest::newRow("lines") << QString::fromUtf16(u"a\nb\r\tc\u2028d\u2029e") << "a b  c d e";
    QTest::newRow("the end of a text") << QString(QChar(u'\0')) + "a"
                                       << " a";
}

void OnlineSearchDialogTest::namesFromElsewhereStayInTheirLine()
{
    QFETCH(QString, name);
    QTEST(OnlineSearchModel::oneLine(name), "shown");
    const OnlineSearchRow row{.rhythmId = name, .name = name, .style = name};
    QFETCH(QString, shown);
    QCOMPARE(row.text(), shown + " (" + shown + ") — 0.0 MB para descargar");
}

// ---- The dialog ----------------------------------------------------------------------------

void OnlineSearchDialogTest::itStandsFromTopToBottom()
{
    open();
    QCOMPARE(dialog_->windowTitle(), "Buscar más ritmos en línea");
    QCOMPARE(dialog_->size(), QSize(460, 360));
    const auto* layout = qobject_cast<QVBoxLayout*>(dialog_->layout());
    QVERIFY(layout);
    QCOMPARE(layout->count(), 4);
    QVERIFY(qobject_cast<QLabel*>(layout->itemAt(0)->widget()));
    QCOMPARE(layout->itemAt(1)->widget(), &list());
    QCOMPARE(layout->stretch(1), 1);

    const auto* row = qobject_cast<QHBoxLayout*>(layout->itemAt(2)->layout());
    QVERIFY(row);
    QCOMPARE(row->count(), 4);
    QCOMPARE(qobject_cast<QPushButton*>(row->itemAt(0)->widget())->text(), "Instalar ritmo");
    QCOMPARE(qobject_cast<QPushButton*>(row->itemAt(1)->widget())->text(), "Desinstalar ritmo");
    QCOMPARE(row->itemAt(2)->widget(), &cancel());
    QVERIFY(!cancel().isVisible());
    QVERIFY(row->itemAt(3)->spacerItem());

    const auto* box = qobject_cast<QDialogButtonBox*>(layout->itemAt(3)->widget());
    QCOMPARE(box->standardButtons(), QDialogButtonBox::Close);
}

void OnlineSearchDialogTest::itemsHoldTheirRhythm()
{
    loadCatalog({kHuayno});
    stage().registry.registerRhythm("otro", {});
    open();
    QCOMPARE(line(0).data(Qt::UserRole), QVariant(QString("otro")));
    QCOMPARE(line(0).data(Qt::UserRole + 1), QVariant(true));
    QCOMPARE(line(1).data(Qt::UserRole), QVariant(QString("huayno")));
    QCOMPARE(line(1).data(Qt::UserRole + 1), QVariant(false));
}

void OnlineSearchDialogTest::closeAndEscapeReject()
{
    open();
    Widgets::click(dialog_->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Close));
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Rejected));
    open();
    QTest::keyClick(&list(), Qt::Key_Escape);
    QVERIFY(!dialog_->isVisible());
}

void OnlineSearchDialogTest::wordsAreTranslatedInItsOwnContext()
{
    stage().registry.registerRhythm("otro", {});
    ContextTranslator translator;
    QApplication::installTranslator(&translator);
    LocalServer silent(keepsSilent());
    use(silent.url("http", ""));
    stage().registry.registerRhythm("otro", {});
    open();
    const QStringList shown = lines();
    QApplication::removeTranslator(&translator);
    QCOMPARE(dialog_->windowTitle(), "OnlineSearchDialog: Buscar más ritmos en línea");
    QCOMPARE(status(), "OnlineSearchDialog: " + kAsking);
    QCOMPARE(shown, QStringList{"OnlineSearchDialog: otro — instalado"});
}

void OnlineSearchDialogTest::aLongMessageDoesNotWidenIt()
{
    open();
    emit stage().catalog.catalogFailed(QString("una razón muy larga ").repeated(40));
    QApplication::processEvents();
    QCOMPARE(dialog_->width(), 460);
    QVERIFY(dialog_->minimumSizeHint().width() <= 460);
}

// ---- The catalogue -------------------------------------------------------------------------

void OnlineSearchDialogTest::itAsksForTheCatalogueAndListsWhatIsInstalledMeanwhile()
{
    LocalServer server(keepsSilent());
    use(server.url("http", ""));
    stage().registry.registerRhythm("otro", {});
    open();
    QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, 20000);
    QVERIFY(server.requests().at(0).startsWith("GET /catalog.json "));
    QCOMPARE(status(), kAsking);
    QCOMPARE(lines(), QStringList{"otro — instalado"});
}

void OnlineSearchDialogTest::theCatalogueEmptiesTheStatusAndFillsTheList()
{
    LocalServer server(catalogServer(catalogOf({kHuayno, kZamba})));
    use(server.url("http", ""));
    stage().registry.registerRhythm("otro", {});
    openLoaded();
    QCOMPARE(status(), "");
    QCOMPARE(lines(), (QStringList{"otro — instalado", "Huayno (Andino) — 1.4 MB para descargar",
                                   "Zamba de la red (Folklore) — 0.0 MB para descargar"}));
    QVERIFY(!list().currentIndex().isValid());
}

void OnlineSearchDialogTest::withoutAServerWhatIsInstalledIsListed()
{
    stage().registry.registerRhythm("otro", {});
    const QSignalSpy failed(&stage().catalog, &ContentCatalog::catalogFailed);
    open();
    QTRY_COMPARE_WITH_TIMEOUT(failed.count(), 1, 20000);
    const QString reason = failed.at(0).at(0).toString();
    QVERIFY(!reason.isEmpty());
    QCOMPARE(status(), "Sin conexión al catálogo (" + reason + "). Se muestra solo lo instalado.");
    QCOMPARE(lines(), QStringList{"otro — instalado"});
}

void OnlineSearchDialogTest::withoutAServerTheLastCatalogueIsListedAndNamed()
{
    loadCatalog({kHuayno});
    const QSignalSpy failed(&stage().catalog, &ContentCatalog::catalogFailed);
    open();
    QTRY_COMPARE_WITH_TIMEOUT(failed.count(), 1, 20000);
    QCOMPARE(status(), "Sin conexión al catálogo (" + failed.at(0).at(0).toString() +
                           "). Se muestra lo instalado y el último catálogo que se recibió.");
    QCOMPARE(lines(), QStringList{"Huayno (Andino) — 1.4 MB para descargar"});
}

void OnlineSearchDialogTest::withoutAnAddressItTellsSo()
{
    use(QUrl());
    open();
    QCOMPARE(status(), "Sin conexión al catálogo (No hay una URL de catálogo configurada.). Se "
                       "muestra solo lo instalado.");
}

void OnlineSearchDialogTest::aBrokenCatalogueIsTold()
{
    LocalServer server(catalogServer("[1]"));
    use(server.url("http", ""));
    open();
    QTRY_COMPARE_WITH_TIMEOUT(status(),
                              "Sin conexión al catálogo (catalog.json inválido.). Se muestra solo "
                              "lo instalado.",
                              20000);
}

void OnlineSearchDialogTest::anEarlierCatalogueIsListedAtOnce()
{
    loadCatalog({kHuayno});
    open();
    QCOMPARE(lines(), QStringList{"Huayno (Andino) — 1.4 MB para descargar"});
    QCOMPARE(status(), kAsking);
    QTRY_VERIFY_WITH_TIMEOUT(status().startsWith("Sin conexión"), 20000);
    QCOMPARE(lines().size(), 1);
}

void OnlineSearchDialogTest::tenThousandRhythmsAreListed()
{
    QList<CatalogEntry> entries;
    for (int i = 0; i < 10000; ++i)
        entries.append(offer(QString("r%1").arg(i), QString("Ritmo %1").arg(i), "Lejano", i));
    LocalServer server(catalogServer(catalogOf(entries)));
    use(server.url("http", ""));
    openLoaded();
    QCOMPARE(list().model()->rowCount(), 10000);
    QTest::keyClick(&list(), Qt::Key_Home);
    QTest::keyClick(&list(), Qt::Key_End);
    QCOMPARE(list().currentIndex().row(), 9999);
    QCOMPARE(line(9999).data().toString(), "Ritmo 9999 (Lejano) — 0.0 MB para descargar");
    QVERIFY(list().viewport()->rect().contains(list().visualRect(line(9999)).center()));
}

void OnlineSearchDialogTest::messagesOfAnyLengthAreCut()
{
    open();
    const QString endless(5'000'000, 'x');
    emit stage().downloads.progress(endless);
    QVERIFY(status().size() < 300);
    emit stage().downloads.installFailed(endless, endless);
    QVERIFY(status().startsWith("Error: xxx") && status().size() < 300);
    emit stage().downloads.rhythmInstalled(endless);
    QVERIFY(status().size() < 300);
    emit stage().catalog.catalogFailed(endless);
    QVERIFY(status().size() < 300);
}

// ---- Installing ----------------------------------------------------------------------------

void OnlineSearchDialogTest::progressIsShownAsItStands()
{
    open();
    emit stage().downloads.progress("Descargando <b>%1</b> &...");
    QCOMPARE(status(), "Descargando <b>%1</b> &...");
    QCOMPARE(dialog_->findChild<QLabel*>()->textFormat(), Qt::PlainText);
}

void OnlineSearchDialogTest::aFailureIsShown()
{
    open();
    emit stage().downloads.installFailed("huayno", "No pude guardar %1");
    QCOMPARE(status(), "Error: No pude guardar %1");
}

void OnlineSearchDialogTest::withoutACurrentRhythmNothingHappens()
{
    LocalServer server(catalogServer(catalogOf({kHuayno})));
    use(server.url("http", ""));
    stage().registry.registerRhythm("otro", {});
    openLoaded();
    clickInstall();
    clickUninstall();
    QCOMPARE(status(), "");
    QVERIFY(!stage().downloads.isBusy());
    QVERIFY(stage().registry.isRhythmInstalled("otro"));
}

void OnlineSearchDialogTest::whatIsInstalledIsNotInstalledAgain()
{
    LocalServer server(keepsSilent());
    use(server.url("http", ""));
    stage().registry.registerRhythm("otro", {});
    open();
    const QSignalSpy installed(&stage().downloads, &ContentDownloadManager::rhythmInstalled);
    choose(0);
    clickInstall();
    QCOMPARE(installed.count(), 0);
    QCOMPARE(status(), kAsking);
}

void OnlineSearchDialogTest::whatIsOfferedIsNotUninstalled()
{
    LocalServer server(catalogServer(catalogOf({kZamba})));
    use(server.url("http", ""));
    openLoaded();
    choose(0);
    clickUninstall();
    QCOMPARE(status(), "");
    QCOMPARE(lines(), QStringList{"Zamba de la red (Folklore) — 0.0 MB para descargar"});
}

void OnlineSearchDialogTest::whatResistsChangesNothing()
{
    LocalServer server(keepsSilent());
    use(server.url("http", ""));
    stage().registry.registerRhythm("otro", {});
    open();
    choose(0);
    stage().registry.unregisterRhythm("otro", {});
    clickUninstall();
    QCOMPARE(status(), kAsking);
    QCOMPARE(lines(), QStringList{"otro — instalado"});
}

void OnlineSearchDialogTest::aSecondInstallIsRefused()
{
    LocalServer server(catalogServer(catalogOf({kHuayno, kZamba})));
    use(server.url("http", ""));
    openLoaded();
    choose(0);
    clickInstall();
    QCOMPARE(status(), "Descargando huayno...");
    choose(1);
    clickInstall();
    QCOMPARE(status(), "Error: Ya hay una descarga en curso.");
    QVERIFY(stage().downloads.isBusy());
}

void OnlineSearchDialogTest::theFocusShowsWhatItMakesCurrent()
{
    stage().registry.registerRhythm("uno", {});
    stage().registry.registerRhythm("otro", {});
    open();
    list().setFocus();
    QVERIFY(list().currentIndex().isValid());
    QCOMPARE(list().selectionModel()->selectedIndexes(), QModelIndexList{list().currentIndex()});
}

void OnlineSearchDialogTest::theKeyboardChoosesAndInstalls()
{
    LocalServer server(catalogServer(catalogOf({kZamba, kHuayno})));
    use(server.url("http", ""));
    openLoaded();
    list().setFocus();
    QTest::keyClick(&list(), Qt::Key_Home);
    QTest::keyClick(&list(), Qt::Key_Down);
    auto* install = Widgets::withText<QPushButton>(*dialog_, "Instalar ritmo");
    install->setFocus();
    QTest::keyClick(install, Qt::Key_Space);
    QCOMPARE(status(), "Descargando huayno...");
}

// ---- Against a server ----------------------------------------------------------------------

namespace {

/// A folder as the content server has it, with one rhythm in it.
class ServedFolder {
public:
    ServedFolder()
    {
        ContentFixture::write(dir_.filePath("catalog.json"), catalogOf({kHuayno}));
        ContentFixture::write(dir_.filePath("grooves/huayno.groove.json"), "{}");
        addContent();
    }

    void addContent() const { ContentFixture::write(contentPath(), huayno().package()); }

    QString contentPath() const { return dir_.filePath("content/huayno.content.json"); }

    QString path() const { return dir_.path(); }

private:
    QTemporaryDir dir_;
};

} // namespace

void OnlineSearchDialogTest::aRhythmIsInstalledAndUninstalled()
{
    const ServedFolder folder;
    StaticServer server(folder.path());
    QCOMPARE(server.problem(), "");
    use(server.url());
    openLoaded();
    choose(0);
    clickInstall();
    QTRY_COMPARE_WITH_TIMEOUT(status(), "Huayno instalado.", 20000);
    QCOMPARE(lines(), QStringList{"Huayno — instalado"});
    QVERIFY(stage().library().findRhythm("huayno"));

    choose(0);
    clickUninstall();
    QCOMPARE(status(), "Huayno desinstalado; se liberó el espacio de los instrumentos que ya no se "
                       "usan.");
    QCOMPARE(lines(), QStringList{"Huayno (Andino) — 1.4 MB para descargar"});
    QVERIFY(!stage().library().findRhythm("huayno"));
    clickUninstall();
    clickInstall();
    QVERIFY(!stage().downloads.isBusy());
}

void OnlineSearchDialogTest::theBrowserShowsWhatTheSearchInstalled()
{
    const ServedFolder folder;
    StaticServer server(folder.path());
    QCOMPARE(server.problem(), "");
    use(server.url());
    connect(&stage().catalog, &ContentCatalog::catalogLoaded, &stage().browser(), [this] {
        auto* dialog = stage().browser().findChild<QDialog*>();
        auto* list = dialog->findChild<QListView*>("lista_ritmos");
        connect(&stage().downloads, &ContentDownloadManager::rhythmInstalled, dialog,
                &QDialog::reject);
        QTimer::singleShot(0, dialog, [dialog, list] {
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                              list->visualRect(list->model()->index(0, 0)).center());
            Widgets::click(Widgets::withText<QPushButton>(*dialog, "Instalar ritmo"));
        });
    });
    Widgets::click(Widgets::withText<QPushButton>(stage().browser(), "Buscar más ritmos…"));
    QCOMPARE(BrowserStage::textsOf(stage().rhythms()), QStringList{"Huayno (4/4)"});
    QCOMPARE(stage().cardLines(), QStringList{"NORMAL 0: 1"});
}

void OnlineSearchDialogTest::aMissingRhythmIsToldAndMayBeTriedAgain()
{
    const ServedFolder folder;
    QVERIFY(QFile::remove(folder.contentPath()));
    StaticServer server(folder.path());
    QCOMPARE(server.problem(), "");
    use(server.url());
    openLoaded();
    choose(0);
    clickInstall();
    QTRY_VERIFY_WITH_TIMEOUT(status().startsWith("Error: "), 20000);
    QCOMPARE(lines(), QStringList{"Huayno (Andino) — 1.4 MB para descargar"});
    folder.addContent();
    clickInstall();
    QTRY_COMPARE_WITH_TIMEOUT(status(), "Huayno instalado.", 20000);
}

void OnlineSearchDialogTest::wantedRhythmsAreChosenOneAfterTheOther()
{
    const ServedFolder folder;
    StaticServer server(folder.path());
    QCOMPARE(server.problem(), "");
    use(server.url());
    openLoaded();
    QVERIFY(!list().currentIndex().isValid());
    dialog_->choose({"no such rhythm"});
    QVERIFY(!list().currentIndex().isValid());
    dialog_->choose({"no such rhythm", "huayno"});
    QCOMPARE(list().currentIndex().data(OnlineSearchModel::kRhythmIdRole).toString(), "huayno");
    clickInstall();
    QTRY_COMPARE_WITH_TIMEOUT(status(), "Huayno instalado.", 20000);
    QVERIFY(!list().currentIndex().isValid());
    QCOMPARE(lines(), QStringList{"Huayno — instalado"});
}

void OnlineSearchDialogTest::anInstallGoesOnWhenTheDialogCloses()
{
    QPointer<QTcpSocket> waiting;
    const auto answer = [&](QTcpSocket& connection, const QByteArray& request) {
        if (request.startsWith("GET /catalog.json "))
            sends(httpAnswer("200 OK", catalogOf({kHuayno})))(connection);
        else if (request.startsWith("GET /content/huayno.content.json "))
            waiting = &connection;
        else
            sends(httpAnswer("200 OK", "{}"))(connection);
    };
    LocalServer server(answer);
    use(server.url("http", ""));
    openLoaded();
    choose(0);
    clickInstall();
    QTRY_VERIFY_WITH_TIMEOUT(waiting, 20000);
    Widgets::click(dialog_->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Close));
    dialog_.reset();
    QVERIFY(stage().downloads.isBusy());
    sends(httpAnswer("200 OK", huayno().package()))(*waiting);
    QTRY_VERIFY_WITH_TIMEOUT(stage().registry.isRhythmInstalled("huayno"), 20000);
    QVERIFY(stage().library().findRhythm("huayno"));
    QCOMPARE(BrowserStage::textsOf(stage().rhythms()), QStringList{"Huayno (4/4)"});
}

void OnlineSearchDialogTest::aLaterDialogHearsOfARunningInstall()
{
    LocalServer server(catalogServer(catalogOf({kHuayno})));
    use(server.url("http", ""));
    openLoaded();
    choose(0);
    clickInstall();
    dialog_.reset();
    openLoaded();
    QCOMPARE(status(), "");
    choose(0);
    clickInstall();
    QCOMPARE(status(), "Error: Ya hay una descarga en curso.");
    emit stage().downloads.progress("Descargando instrumento charango...");
    QCOMPARE(status(), "Descargando instrumento charango...");
}

void OnlineSearchDialogTest::aDownloadMayBeCancelled()
{
    LocalServer server(catalogServer(catalogOf({kHuayno})));
    use(server.url("http", ""));
    openLoaded();
    QVERIFY(!cancel().isVisible());
    choose(0);
    clickInstall();
    QVERIFY(cancel().isVisible());
    dialog_.reset();
    openLoaded();
    QVERIFY(cancel().isVisible());
    Widgets::click(&cancel());
    QCOMPARE(status(), "Descarga cancelada.");
    QVERIFY(list().hasFocus());
    QVERIFY(!cancel().isVisible());
    QVERIFY(!stage().downloads.isBusy());
    QCOMPARE(lines(), QStringList{"Huayno (Andino) — 1.4 MB para descargar"});
}

void OnlineSearchDialogTest::nobodyListensWhenItIsGone()
{
    stage().registry.registerRhythm("otro", {});
    open();
    choose(0);
    dialog_.reset();
    emit stage().catalog.catalogLoaded();
    emit stage().catalog.catalogFailed("a");
    emit stage().downloads.progress("b");
    emit stage().downloads.rhythmInstalled("c");
    emit stage().downloads.installFailed("d", "e");
    QVERIFY(stage().downloads.uninstallRhythm("otro"));
}

VELTA_TEST(OnlineSearchDialogTest)

} // namespace OnlineSearchDialogTests

#include "OnlineSearchDialogTest.moc"
