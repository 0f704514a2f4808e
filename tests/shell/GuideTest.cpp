#include "support/FluidSpy.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QDesktopServices>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QXmlStreamReader>

namespace GuideTests {

namespace {

QString readText(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The words that the program shows, as its sources spell them, without the marks of menu letters.
QSet<QString> textsOfTheProgram()
{
    static const QRegularExpression literal(
        QStringLiteral(R"re("((?:[^"\\\n]|\\.)*)"(?:\s*"((?:[^"\\\n]|\\.)*)")*)re"));
    static const QRegularExpression seam(QStringLiteral(R"re((?<!\\)"\s*")re"));
    QSet<QString> texts;
    for (const char* folder : {"/src/shell", "/src/views"}) {
        QDirIterator sources(VELTA_SOURCE_DIR + QString(folder), {"*.cpp", "*.h"}, QDir::Files,
                             QDirIterator::Subdirectories);
        while (sources.hasNext()) {
            const QString source = readText(sources.next());
            for (const auto& match : literal.globalMatch(source)) {
                QString text = match.captured(0);
                text.remove(seam).remove('&');
                texts.insert(text.mid(1, text.size() - 2).split("\\n").first());
            }
        }
    }
    return texts;
}

struct Page {
    QStringList names;   ///< of what is pressed, chosen or read on the screen
    QStringList told;    ///< messages of the program
    QStringList targets; ///< of links, style sheets and pictures
    QSet<QString> places;
    QString error;
};

Page readPage(const QString& path)
{
    Page page;
    QXmlStreamReader reader(readText(path));
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const auto attributes = reader.attributes();
        if (attributes.hasAttribute("id"))
            page.places.insert(attributes.value("id").toString());
        for (const char* name : {"href", "src", "srcset"}) {
            if (attributes.hasAttribute(name))
                page.targets.append(attributes.value(name).toString());
        }
        const QString tag = reader.name().toString();
        if (tag == "b")
            page.names.append(reader.readElementText().simplified());
        else if (tag == "q")
            page.told.append(reader.readElementText().simplified());
    }
    if (reader.hasError())
        page.error = reader.errorString();
    return page;
}

QString pathOf(const QString& page)
{
    return MainWindow::resourcesDir() + "/guia/" + page;
}

} // namespace

/// The guide that Help opens speaks of this program, and all that it points to is there.
class GuideTest : public QObject {
    Q_OBJECT

public slots:

    void noteUrl(const QUrl& url) { opened_.append(url); }

private slots:
    void initTestCase();
    void pagesAreWhole_data();
    void pagesAreWhole();
    void whatThePagesNameIsInTheProgram_data();
    void whatThePagesNameIsInTheProgram();
    void everyPictureIsThereInBothLooks();
    void screenshotsOfThePackageArePicturesOfTheGuide();
    void theKeyOfHelpOpensTheGuide();
    void aboutTellsTheVersion();

private:
    static void addPages();

    QSet<QString> texts_;
    QList<QUrl> opened_;
};

void GuideTest::initTestCase()
{
    FluidSpy::reset();
    texts_ = textsOfTheProgram();
    QVERIFY(texts_.contains("Guardar"));
    QVERIFY(!texts_.contains("Guardalo ya"));
}

void GuideTest::addPages()
{
    QTest::addColumn<QString>("page");
    for (const char* page : {"index.html", "alumnos.html", "docentes.html"})
        QTest::newRow(page) << QString(page);
}

void GuideTest::pagesAreWhole_data()
{
    addPages();
}

void GuideTest::pagesAreWhole()
{
    QFETCH(QString, page);
    const Page read = readPage(pathOf(page));
    QCOMPARE(read.error, QString());
    QVERIFY(!read.targets.isEmpty());
    for (const QString& target : read.targets) {
        const QString file = target.section('#', 0, 0);
        const QString place = target.section('#', 1);
        QVERIFY2(QFile::exists(pathOf(file)), qPrintable(target));
        QVERIFY2(place.isEmpty() || readPage(pathOf(file)).places.contains(place),
                 qPrintable(target));
    }
}

void GuideTest::whatThePagesNameIsInTheProgram_data()
{
    addPages();
}

void GuideTest::whatThePagesNameIsInTheProgram()
{
    QFETCH(QString, page);
    const Page read = readPage(pathOf(page));
    for (const QString& name : read.names + read.told)
        QVERIFY2(texts_.contains(name), qPrintable(name));
}

void GuideTest::everyPictureIsThereInBothLooks()
{
    const auto pictures = [](const char* look) {
        return QDir(pathOf("imagenes/") + look).entryList({"*.png"}, QDir::Files, QDir::Name);
    };
    QCOMPARE(pictures("claro"), pictures("oscuro"));
    for (const char* page : {"index.html", "alumnos.html", "docentes.html"}) {
        int light = 0;
        int dark = 0;
        for (const QString& target : readPage(pathOf(page)).targets) {
            light += target.startsWith("imagenes/claro/") ? 1 : 0;
            dark += target.startsWith("imagenes/oscuro/") ? 1 : 0;
        }
        QVERIFY(light > 0);
        QCOMPARE(light, dark);
    }
}

/// A software centre shows them from the program's home page, where the guide stands as it is.
void GuideTest::screenshotsOfThePackageArePicturesOfTheGuide()
{
    const QString home = QStringLiteral("https://velta.example/guia/");
    QXmlStreamReader reader(readText(VELTA_SOURCE_DIR "/desktop/org.ovelin.velta.metainfo.xml"));
    int pictures = 0;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement || reader.name() != u"image")
            continue;
        const QSize size(reader.attributes().value("width").toInt(),
                         reader.attributes().value("height").toInt());
        const QString address = reader.readElementText();
        QVERIFY2(address.startsWith(home), qPrintable(address));
        QCOMPARE(QImage(pathOf(address.sliced(home.size()))).size(), size);
        ++pictures;
    }
    QCOMPARE(reader.errorString(), QString());
    QCOMPARE(pictures, 2);
}

void GuideTest::theKeyOfHelpOpensTheGuide()
{
    QDesktopServices::setUrlHandler("file", this, "noteUrl");
    WindowStage stage;
    QVERIFY(stage.showWindow());
    QTest::keyClick(&stage.window(), Qt::Key_F1);
    QDesktopServices::unsetUrlHandler("file");
    QCOMPARE(opened_, QList<QUrl>{QUrl::fromLocalFile(pathOf("index.html"))});
    QVERIFY(stage.prompts().calls().isEmpty());
}

void GuideTest::aboutTellsTheVersion()
{
    QCoreApplication::setApplicationVersion("7.8.9");
    WindowStage stage;
    stage.choose("Acerca de Velta…");
    QCOMPARE(stage.prompts().calls().size(), 1);
    QVERIFY(stage.prompts().calls().first().contains("Velta 7.8.9"));
}

VELTA_TEST(GuideTest)

} // namespace GuideTests

#include "GuideTest.moc"
