#include "PictureHome.h"
#include "model/Project.h"
#include "shell/MainWindow.h"
#include "shots/Parts.h"
#include "shots/Shots.h"
#include "support/TestProgram.h"

#include <QFile>
#include <QTest>

#include <map>
#include <memory>

namespace PicturesTests {

namespace {

using Parts = std::map<QString, PicturePart>;

/// Where the reference of the one look or the other is told part by part. Pictures of the window
/// tell only what is otherwise than in the first.
QString referenceFile(bool dark)
{
    return QString(VELTA_PICTURES_DIR "/%1.txt").arg(dark ? "oscuro" : "claro");
}

Parts partsOf(ShotStage& stage)
{
    const QImage picture = stage.picture();
    Parts parts;
    for (const PicturePart& part : PictureParts::of(stage.subject(), picture))
        parts.emplace(part.name, part);
    return parts;
}

bool isWindow(ShotStage& stage)
{
    return &stage.subject() == &stage.window();
}

/// The lines of a picture in the file, under its name.
std::map<QString, QStringList> sectionsOf(const QString& path)
{
    std::map<QString, QStringList> sections;
    QString section;
    for (const QString& line : QString::fromUtf8(bytesOf(path)).split('\n', Qt::SkipEmptyParts)) {
        if (line.startsWith("# "))
            section = line.mid(2);
        else
            sections[section].append(line);
    }
    return sections;
}

/// What a picture shows that is told ahead of, or instead of, what another shows.
Parts changed(Parts parts, const QStringList& lines)
{
    for (const QString& line : lines) {
        if (line.startsWith('-')) {
            parts.erase(line.mid(1));
            continue;
        }
        const PicturePart part = PictureParts::partOf(line);
        parts[part.name] = part;
    }
    return parts;
}

QStringList linesOf(const Parts& parts, const Parts& first)
{
    QStringList lines;
    for (const auto& [name, part] : first) {
        if (!parts.contains(name))
            lines.append('-' + name);
    }
    for (const auto& [name, part] : parts) {
        const auto same = first.find(name);
        if (same == first.end() || PictureParts::lineOf(same->second) != PictureParts::lineOf(part))
            lines.append(PictureParts::lineOf(part));
    }
    return lines;
}

QStringList differences(const Parts& are, const Parts& shouldBe)
{
    QStringList found;
    for (const auto& [name, part] : shouldBe) {
        const auto is = are.find(name);
        if (is == are.end())
            found.append(name + " is missing");
        else if (const QString how = PictureParts::difference(is->second, part); !how.isEmpty())
            found.append(how);
    }
    for (const auto& [name, part] : are) {
        if (!shouldBe.contains(name))
            found.append(name + " is new");
    }
    return found;
}

} // namespace

/// The window and its dialogs as they are to look. Compared are their parts: where each control
/// lies and what its ground is, and the cells of the views in their mean colours, since the letters
/// of another version of a font are other pixels. With VELTA_RENEW_PICTURES in the environment the
/// references are written anew instead.
class PicturesTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void thePictureIsAsItWas_data();
    void thePictureIsAsItWas();
    void aPictureIsTheSameTwice();
    void theOtherLookIsTold();
    void aMissingChordIsTold();
    void aControlThatMovesIsTold();
    void everyPictureHasAReference();

private:
    /// What the reference tells of a picture.
    static Parts referenceOf(const QString& shot, bool dark, bool window)
    {
        const auto sections = sectionsOf(referenceFile(dark));
        const auto first = sections.find(shots().first().name);
        const auto own = sections.find(shot);
        if (own == sections.end() || first == sections.end())
            return {};
        return changed(window && own != first ? changed({}, first->second) : Parts(), own->second);
    }

    std::unique_ptr<PictureHome> home_;
};

void PicturesTest::initTestCase()
{
    PictureHome::prepareOnce();
    if (!qEnvironmentVariableIsSet("VELTA_RENEW_PICTURES"))
        return;
    for (const bool dark : {false, true}) {
        QFile file(referenceFile(dark));
        QVERIFY(file.open(QIODevice::WriteOnly));
        Parts first;
        for (const Shot& shot : shots()) {
            const PictureHome home;
            ShotStage stage(dark);
            shot.set(stage);
            const bool asFirst = isWindow(stage) && !first.empty();
            const Parts parts = partsOf(stage);
            file.write("# " + shot.name.toUtf8() + '\n' +
                       linesOf(parts, asFirst ? first : Parts()).join('\n').toUtf8() + '\n');
            if (first.empty())
                first = parts;
        }
    }
}

void PicturesTest::init()
{
    home_ = std::make_unique<PictureHome>();
}

void PicturesTest::cleanup()
{
    home_.reset();
    qApp->setStyleSheet(QString());
}

void PicturesTest::thePictureIsAsItWas_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("dark");
    for (int index = 0; index < shots().size(); ++index) {
        QTest::addRow("%s, light", qPrintable(shots()[index].name)) << index << false;
        QTest::addRow("%s, dark", qPrintable(shots()[index].name)) << index << true;
    }
}

void PicturesTest::thePictureIsAsItWas()
{
    QFETCH(int, index);
    QFETCH(bool, dark);
    const Shot& shot = shots()[index];
    ShotStage stage(dark);
    shot.set(stage);
    const bool window = isWindow(stage);
    const QStringList found = differences(partsOf(stage), referenceOf(shot.name, dark, window));
    QVERIFY2(found.isEmpty(), qPrintable(found.join('\n')));
}

void PicturesTest::aPictureIsTheSameTwice()
{
    const auto paint = [](const Shot& shot) {
        const PictureHome home;
        ShotStage stage(false);
        shot.set(stage);
        return stage.picture();
    };
    for (const Shot& shot : shots())
        QVERIFY2(paint(shot) == paint(shot), qPrintable(shot.name));
}

void PicturesTest::theOtherLookIsTold()
{
    ShotStage stage(true);
    const Shot& shot = shots().first();
    shot.set(stage);
    QVERIFY(differences(partsOf(stage), referenceOf(shot.name, false, true)).size() > 40);
}

void PicturesTest::aMissingChordIsTold()
{
    ShotStage stage(false);
    stage.openSong();
    stage.window().project()->harmonyTrack.blocks.removeFirst();
    emit stage.window().project()->changed();
    const QString told =
        differences(partsOf(stage), referenceOf("cancion", false, true)).join('\n');
    QVERIFY2(told.contains("QWidget"), qPrintable(told));
}

void PicturesTest::aControlThatMovesIsTold()
{
    const PicturePart part{.name = "QLabel 'Voz' 1", .place = {10, 20, 30, 40}, .colors = {0}};
    QCOMPARE(PictureParts::difference(part, part), QString());
    PicturePart other = part;
    other.place.moveLeft(30);
    QVERIFY(!PictureParts::difference(other, part).isEmpty());
    other = part;
    other.colors = {qRgb(0, 60, 0)};
    QVERIFY(!PictureParts::difference(other, part).isEmpty());
    QCOMPARE(PictureParts::lineOf(PictureParts::partOf(PictureParts::lineOf(part))),
             PictureParts::lineOf(part));
}

void PicturesTest::everyPictureHasAReference()
{
    for (const bool dark : {false, true}) {
        QStringList told;
        for (const auto& [name, lines] : sectionsOf(referenceFile(dark)))
            told.append(name);
        QStringList painted;
        for (const Shot& shot : shots())
            painted.append(shot.name);
        painted.sort();
        QCOMPARE(told, painted);
    }
}

VELTA_TEST(PicturesTest)

} // namespace PicturesTests

#include "PicturesTest.moc"
