#include "shell/IgualadorSimbolos.h"

#include "support/SeededRandom.h"
#include "support/StyleChanges.h"
#include "support/TestProgram.h"

#include <QApplication>
#include <QDataStream>
#include <QDialog>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QIcon>
#include <QMap>
#include <QPixmap>
#include <QScopeGuard>
#include <QTemporaryFile>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <unistd.h>

namespace IgualadorSimbolosTests {

using ovelin::igualarSimbolos;

namespace {

/// A font whose glyphs are boxes, so that the ink of a face is known on every machine. At its own
/// pixel size a box is exactly as wide and high as it is said to be, and stands as far from the
/// next as it is wide; a box of no size is a glyph without ink.
class BoxFont {
public:
    using Boxes = QMap<char32_t, QSize>;

    /// Makes the font known to the application and returns its family.
    static QString install(int px, const Boxes& boxes)
    {
        static int installed = 0;
        const QString family = QString("Velta Boxes %1").arg(++installed);
        const int id = QFontDatabase::addApplicationFontFromData(BoxFont(px, boxes).file(family));
        return QFontDatabase::applicationFontFamilies(id).value(0);
    }

private:
    static constexpr int kUnitsPerPixel = 100;

    BoxFont(int px, const Boxes& boxes) : unitsPerEm_(px * kUnitsPerPixel), boxes_(boxes) {}

    template <typename... Numbers>
    static QByteArray bigEndian(Numbers... numbers)
    {
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        (stream << ... << numbers);
        return bytes;
    }

    static quint16 u16(qsizetype number) { return static_cast<quint16>(number); }

    static quint32 u32(qsizetype number) { return static_cast<quint32>(number); }

    /// Glyph 0, for characters that are missing, is without ink.
    QList<QSize> sizesOfGlyphs() const
    {
        QList<QSize> sizes = {QSize(0, 0)};
        for (const QSize& box : boxes_)
            sizes.append(box * kUnitsPerPixel);
        return sizes;
    }

    static QByteArray outlineOf(const QSize& size)
    {
        if (size.isEmpty())
            return {};
        const quint16 w = u16(size.width());
        const quint16 h = u16(size.height());
        const quint16 zero = 0;
        const quint8 onCurve = 1;
        return bigEndian(u16(1), zero, zero, w, h, u16(3), zero) +
               bigEndian(onCurve, onCurve, onCurve, onCurve) +
               bigEndian(zero, zero, w, zero) + // the steps in x
               bigEndian(zero, h, zero, static_cast<quint16>(-h));
    }

    QByteArray cmap() const
    {
        QByteArray groups;
        quint32 glyph = 0;
        for (const char32_t character : boxes_.keys())
            groups += bigEndian(quint32(character), quint32(character), ++glyph);
        return bigEndian(u16(0), u16(1), u16(3), u16(10), u32(12)) +
               bigEndian(u16(12), u16(0), u32(16 + groups.size()), u32(0), u32(boxes_.size())) +
               groups;
    }

    QByteArray head() const
    {
        return bigEndian(u32(0x10000), u32(0x10000), u32(0), u32(0x5F0F3CF5), u16(0),
                         u16(unitsPerEm_), quint64(0), quint64(0), u16(0), u16(0), u16(unitsPerEm_),
                         u16(unitsPerEm_), u16(0), u16(8), u16(2), u16(1), u16(0));
    }

    QByteArray hhea() const
    {
        return bigEndian(u32(0x10000), u16(unitsPerEm_), u16(0), u16(0), u16(unitsPerEm_)) +
               QByteArray(22, '\0') + bigEndian(u16(sizesOfGlyphs().size()));
    }

    QByteArray maxp() const
    {
        return bigEndian(u32(0x10000), u16(sizesOfGlyphs().size()), u16(4), u16(1)) +
               QByteArray(22, '\0');
    }

    QByteArray os2() const
    {
        return bigEndian(u16(0), u16(unitsPerEm_), u16(400), u16(5)) + QByteArray(60, '\0') +
               bigEndian(u16(unitsPerEm_), u16(0), u16(0), u16(unitsPerEm_), u16(0));
    }

    static QByteArray name(const QString& family)
    {
        QByteArray text;
        for (const QChar c : family)
            text += bigEndian(c.unicode());
        const auto entry = [&](int id) {
            return bigEndian(u16(3), u16(1), u16(0x409), u16(id), u16(text.size()), u16(0));
        };
        return bigEndian(u16(0), u16(2), u16(6 + 2 * 12)) + entry(1) + entry(4) + text;
    }

    QByteArray file(const QString& family) const
    {
        QByteArray glyf;
        QByteArray loca = bigEndian(u32(0));
        QByteArray hmtx;
        for (const QSize& size : sizesOfGlyphs()) {
            glyf += outlineOf(size);
            glyf.resize((glyf.size() + 3) / 4 * 4, '\0');
            loca += bigEndian(u32(glyf.size()));
            hmtx += bigEndian(u16(size.width()), u16(0));
        }
        const QMap<QByteArray, QByteArray> tables = {
            {"OS/2", os2()},        {"cmap", cmap()},
            {"glyf", glyf},         {"head", head()},
            {"hhea", hhea()},       {"hmtx", hmtx},
            {"loca", loca},         {"maxp", maxp()},
            {"name", name(family)}, {"post", bigEndian(u32(0x30000)) + QByteArray(28, '\0')}};
        QByteArray directory =
            bigEndian(u32(0x10000), u16(tables.size()), u16(128), u16(3), u16(32));
        QByteArray body;
        const qsizetype start = directory.size() + 16 * tables.size();
        for (const auto& [tag, table] : tables.asKeyValueRange()) {
            directory += tag + bigEndian(u32(0), u32(start + body.size()), u32(table.size()));
            body += table;
            body.resize((body.size() + 3) / 4 * 4, '\0');
        }
        return directory + body;
    }

    int unitsPerEm_;
    Boxes boxes_;
};

/// A button of the ribbon, in a font of a given size by the style sheet of the application.
std::unique_ptr<QToolButton> buttonOf(QWidget* root, const QString& face)
{
    auto button = std::make_unique<QToolButton>(root);
    button->setObjectName("btn_toolbar");
    button->setText(face);
    return button;
}

void dressAll(const QString& family, int px)
{
    qApp->setStyleSheet(
        QString("QToolButton { font-family: \"%1\"; font-size: %2px; }").arg(family).arg(px));
}

QSizeF inkOf(const QToolButton& button)
{
    return QFontMetricsF(button.font()).tightBoundingRect(button.text().trimmed()).size();
}

/// The size that a face should get, step by step, or 0 if it is left alone.
int plainTarget(const QString& face, const QFont& font)
{
    int letters = 0;
    for (const QChar c : face) {
        const bool ascii =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (c.unicode() < 128 ? ascii : c.isLetterOrNumber())
            ++letters;
    }
    double px = font.pixelSize();
    if (px < 0)
        px = QFontInfo(font).pixelSize();
    const QRectF ink = QFontMetricsF(font).tightBoundingRect(face);
    if (face.isEmpty() || ink.width() < 1.0 || ink.height() < 1.0)
        return 0;
    double scale = 20.0 / ink.width();
    int least = 10;
    if (letters >= 2) {
        if (scale > 1.0)
            scale = 1.0;
    } else {
        least = 11;
        if (16.0 / ink.height() < scale)
            scale = 16.0 / ink.height();
        if (scale < 1.0 && ink.height() >= 0.95 * px)
            return 0;
    }
    const double target = std::trunc(scale * px + 0.5);
    if (target < least)
        return least;
    return target > 40.0 ? 40 : static_cast<int>(target);
}

/// What is written to the standard error stream while something runs.
QByteArray standardErrorOf(const std::function<void()>& run)
{
    QTemporaryFile file;
    if (!file.open())
        return {};
    std::fflush(stderr);
    const int former = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    run();
    std::fflush(stderr);
    dup2(former, STDERR_FILENO);
    close(former);
    file.seek(0);
    return file.readAll();
}

} // namespace

class IgualadorSimbolosTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void symbolsFillTheBox_data();
    void symbolsFillTheBox();
    void anEmBoxIsFullAtNineteenTwentieths();
    void wordsAreOnlyReduced_data();
    void wordsAreOnlyReduced();
    void lettersMakeAWord_data();
    void lettersMakeAWord();
    void theSizeComesFromTheFontIfItIsInPoints();
    void aFaceThatIsRightLeavesItsButtonAlone();
    void buttonsWithAnIconAreLeftAlone();
    void buttonsWithoutTextAreLeftAlone_data();
    void buttonsWithoutTextAreLeftAlone();
    void blanksAroundAFaceDoNotCount();
    void onlyTheTwoNamesCount_data();
    void onlyTheTwoNamesCount();
    void buttonsAtAnyDepthAreFound();
    void theRootItselfIsNotOne();
    void theRestOfASheetStays_data();
    void theRestOfASheetStays();
    void decisionsAreLogged();
    void anEmptyVariableStillLogs();
    void withoutTheVariableNothingIsWritten();
    void everyRealFontFollowsTheRule();
    void absurdFacesDoNoHarm();

    void aShownWindowIsEvenedOut();
    void dialogsAreEvenedOutToo();
    void aShownChildIsNotAWindow();
    void eachShowingMeasuresAnew();
    void everyEventGoesOn();

private:
    std::unique_ptr<QWidget> root_;
};

void IgualadorSimbolosTest::init()
{
    qunsetenv("OVELIN_SIMBOLOS");
    root_ = std::make_unique<QWidget>();
}

void IgualadorSimbolosTest::cleanup()
{
    root_.reset();
    qApp->setStyleSheet(QString());
    QFontDatabase::removeAllApplicationFonts();
}

void IgualadorSimbolosTest::symbolsFillTheBox_data()
{
    QTest::addColumn<QSize>("ink");
    QTest::addColumn<int>("target");
    // At 17 pixels, into 20 by 16.
    QTest::newRow("half the width") << QSize(10, 4) << 34;
    QTest::newRow("half the height") << QSize(4, 8) << 34;
    QTest::newRow("a thin line reaches the width") << QSize(12, 1) << 28;
    QTest::newRow("an upright line reaches the height") << QSize(2, 14) << 19;
    QTest::newRow("no further than forty") << QSize(5, 4) << 40;
    QTest::newRow("a dot") << QSize(1, 1) << 40;
    QTest::newRow("just right in width") << QSize(20, 10) << 17;
    QTest::newRow("just right in height") << QSize(10, 16) << 17;
    QTest::newRow("too wide") << QSize(30, 10) << 11;
    QTest::newRow("no smaller than eleven") << QSize(60, 10) << 11;
    QTest::newRow("rounded up") << QSize(22, 10) << 15;
    QTest::newRow("rounded down") << QSize(24, 10) << 14;
    QTest::newRow("fills the em box") << QSize(17, 17) << 17;
    QTest::newRow("fills the em box and is wide") << QSize(40, 17) << 17;
    QTest::newRow("is higher than the em box") << QSize(10, 20) << 17;
    QTest::newRow("almost fills the em box, and is wide") << QSize(25, 16) << 14;
    QTest::newRow("no ink") << QSize(0, 0) << 17;
}

void IgualadorSimbolosTest::symbolsFillTheBox()
{
    QFETCH(QSize, ink);
    dressAll(BoxFont::install(17, {{U'✚', ink}}), 17);
    const auto button = buttonOf(root_.get(), "✚");
    button->ensurePolished();
    QCOMPARE(inkOf(*button), QSizeF(ink));
    igualarSimbolos(root_.get());
    button->ensurePolished();
    QTEST(button->font().pixelSize(), "target");
}

void IgualadorSimbolosTest::anEmBoxIsFullAtNineteenTwentieths()
{
    dressAll(BoxFont::install(20, {{U'#', QSize(30, 18)}, {U'@', QSize(30, 19)}}), 20);
    const auto reduced = buttonOf(root_.get(), "#");
    const auto full = buttonOf(root_.get(), "@");
    igualarSimbolos(root_.get());
    QCOMPARE(reduced->styleSheet(), " font-size: 13px;");
    QCOMPARE(full->styleSheet(), "");
}

void IgualadorSimbolosTest::wordsAreOnlyReduced_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("letterWidth");
    QTest::addColumn<int>("target");
    // At 13 pixels, into a width of 20.
    QTest::newRow("MIDI in a narrow font stays") << "MIDI" << 4 << 13;
    QTest::newRow("MIDI in a font that just fits") << "MIDI" << 5 << 13;
    QTest::newRow("MIDI in a wide font is reduced") << "MIDI" << 6 << 11;
    QTest::newRow("MIDI in a wider font stops at ten") << "MIDI" << 7 << 10;
    QTest::newRow("MIDI in a huge font stops at ten") << "MIDI" << 30 << 10;
    QTest::newRow("a short word is not enlarged") << "DI" << 2 << 13;
    QTest::newRow("a single letter is a symbol") << "M" << 5 << 23;
}

void IgualadorSimbolosTest::wordsAreOnlyReduced()
{
    QFETCH(QString, word);
    QFETCH(int, letterWidth);
    const QSize box(letterWidth, 9);
    dressAll(BoxFont::install(13, {{U'M', box}, {U'I', box}, {U'D', box}}), 13);
    const auto button = buttonOf(root_.get(), word);
    button->ensurePolished();
    QCOMPARE(inkOf(*button), QSizeF(letterWidth * static_cast<int>(word.size()), 9));
    igualarSimbolos(root_.get());
    button->ensurePolished();
    QTEST(button->font().pixelSize(), "target");
}

void IgualadorSimbolosTest::lettersMakeAWord_data()
{
    QTest::addColumn<QString>("face");
    QTest::addColumn<bool>("word");
    QTest::newRow("two letters") << "ab" << true;
    QTest::newRow("a letter and a digit") << "a1" << true;
    QTest::newRow("two digits") << "12" << true;
    QTest::newRow("letters around a sign") << "a+b" << true;
    QTest::newRow("accented letters") << "áé" << true;
    QTest::newRow("letters of another script") << "жд" << true;
    QTest::newRow("one letter and signs") << "+a+" << false;
    QTest::newRow("one letter") << "á" << false;
    QTest::newRow("signs") << "++" << false;
    QTest::newRow("signs between the letters of ASCII") << "[_" << false;
}

void IgualadorSimbolosTest::lettersMakeAWord()
{
    QFETCH(QString, face);
    QFETCH(bool, word);
    BoxFont::Boxes boxes;
    for (const QChar c : QString("ab12+[_áéжд"))
        boxes.insert(c.unicode(), QSize(2, 4));
    dressAll(BoxFont::install(17, boxes), 17);
    const auto button = buttonOf(root_.get(), face);
    igualarSimbolos(root_.get());
    button->ensurePolished();
    // Faces so small are enlarged, unless they are words.
    QCOMPARE(button->font().pixelSize(), word ? 17 : 40);
}

void IgualadorSimbolosTest::theSizeComesFromTheFontIfItIsInPoints()
{
    QFont font(BoxFont::install(20, {{U'✚', QSize(10, 10)}}));
    font.setPointSizeF(15);
    const auto button = buttonOf(root_.get(), "✚");
    button->setFont(font);
    QCOMPARE(button->font().pixelSize(), -1);
    const int expected = plainTarget("✚", button->font());
    igualarSimbolos(root_.get());
    button->ensurePolished();
    QCOMPARE(button->font().pixelSize(), expected);
    QVERIFY(std::abs(expected - 32) <= 1);
}

void IgualadorSimbolosTest::aFaceThatIsRightLeavesItsButtonAlone()
{
    dressAll(BoxFont::install(17, {{U'✚', QSize(16, 16)}}), 17);
    const auto button = buttonOf(root_.get(), "✚");
    button->setStyleSheet("font-size: 17px; color: red;");
    button->ensurePolished();
    const StyleChanges changes(button.get());
    igualarSimbolos(root_.get());
    QCOMPARE(button->styleSheet(), "font-size: 17px; color: red;");
    QCOMPARE(changes.count, 0);
}

void IgualadorSimbolosTest::buttonsWithAnIconAreLeftAlone()
{
    dressAll(BoxFont::install(17, {{U'✚', QSize(5, 5)}}), 17);
    const auto button = buttonOf(root_.get(), "✚");
    QPixmap picture(8, 8);
    picture.fill(Qt::red);
    button->setIcon(picture);
    button->setStyleSheet("color: red;");
    igualarSimbolos(root_.get());
    QCOMPARE(button->styleSheet(), "color: red;");
}

void IgualadorSimbolosTest::buttonsWithoutTextAreLeftAlone_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("blanks") << " \t\n ";
}

void IgualadorSimbolosTest::buttonsWithoutTextAreLeftAlone()
{
    QFETCH(QString, text);
    qputenv("OVELIN_SIMBOLOS", "1");
    const auto button = buttonOf(root_.get(), text);
    button->setStyleSheet("color: red;");
    QCOMPARE(standardErrorOf([&] { igualarSimbolos(root_.get()); }), "");
    QCOMPARE(button->styleSheet(), "color: red;");
}

void IgualadorSimbolosTest::blanksAroundAFaceDoNotCount()
{
    dressAll(BoxFont::install(17, {{U'✚', QSize(10, 8)}, {U' ', QSize(3, 0)}}), 17);
    const auto button = buttonOf(root_.get(), "  ✚ ");
    igualarSimbolos(root_.get());
    QCOMPARE(button->styleSheet(), " font-size: 34px;");
    QCOMPARE(button->text(), "  ✚ ");
}

void IgualadorSimbolosTest::onlyTheTwoNamesCount_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("counts");
    QTest::newRow("btn_toolbar") << "btn_toolbar" << true;
    QTest::newRow("btn_sigla") << "btn_sigla" << true;
    QTest::newRow("no name") << "" << false;
    QTest::newRow("another name") << "btn_flecha" << false;
    QTest::newRow("another case") << "BTN_TOOLBAR" << false;
    QTest::newRow("a longer name") << "btn_toolbar2" << false;
}

void IgualadorSimbolosTest::onlyTheTwoNamesCount()
{
    QFETCH(QString, name);
    QFETCH(bool, counts);
    dressAll(BoxFont::install(17, {{U'▲', QSize(10, 8)}}), 17);
    const auto button = buttonOf(root_.get(), "▲");
    button->setObjectName(name);
    igualarSimbolos(root_.get());
    QCOMPARE(button->styleSheet(), counts ? " font-size: 34px;" : "");
}

void IgualadorSimbolosTest::buttonsAtAnyDepthAreFound()
{
    dressAll(BoxFont::install(17, {{U'▲', QSize(10, 8)}}), 17);
    QWidget* parent = root_.get();
    QList<QToolButton*> buttons;
    for (int depth = 0; depth < 20; ++depth) {
        buttons.append(buttonOf(parent, "▲").release());
        parent = new QWidget(parent);
    }
    igualarSimbolos(root_.get());
    for (const QToolButton* button : buttons)
        QCOMPARE(button->styleSheet(), " font-size: 34px;");
}

void IgualadorSimbolosTest::theRootItselfIsNotOne()
{
    dressAll(BoxFont::install(17, {{U'▲', QSize(10, 8)}}), 17);
    const auto button = buttonOf(nullptr, "▲");
    igualarSimbolos(button.get());
    QCOMPARE(button->styleSheet(), "");
}

void IgualadorSimbolosTest::theRestOfASheetStays_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<QString>("after");
    QTest::newRow("none") << ""
                          << " font-size: 34px;";
    QTest::newRow("only a size") << "font-size: 17px;"
                                 << " font-size: 34px;";
    QTest::newRow("as the buttons for exporting have it") << "font-size: 17px; font-weight: 400;"
                                                          << " font-weight: 400; font-size: 34px;";
    QTest::newRow("a size at the end without a semicolon") << "color: red; font-size:17px"
                                                           << "color: red;  font-size: 34px;";
    QTest::newRow("blanks everywhere") << "font-size  :  17.0px  ; color: red;"
                                       << " color: red; font-size: 34px;";
    QTest::newRow("several sizes") << "font-size: 9px;color: red;font-size: 17px;"
                                   << "color: red; font-size: 34px;";
    QTest::newRow("no size") << "color: red;"
                             << "color: red; font-size: 34px;";
}

void IgualadorSimbolosTest::theRestOfASheetStays()
{
    QFETCH(QString, sheet);
    dressAll(BoxFont::install(17, {{U'✚', QSize(10, 8)}}), 17);
    const auto button = buttonOf(root_.get(), "✚");
    button->setStyleSheet(sheet);
    igualarSimbolos(root_.get());
    QTEST(button->styleSheet(), "after");
    button->ensurePolished();
    QCOMPARE(button->font().pixelSize(), 34);
}

void IgualadorSimbolosTest::decisionsAreLogged()
{
    qputenv("OVELIN_SIMBOLOS", "1");
    dressAll(BoxFont::install(17, {{U'✚', QSize(10, 8)},
                                   {U'M', QSize(7, 9)},
                                   {U'=', QSize(20, 16)},
                                   {U'@', QSize(17, 17)}}),
             17);
    const auto grown = buttonOf(root_.get(), " ✚ ");
    const auto reduced = buttonOf(root_.get(), "MMM");
    const auto unchanged = buttonOf(root_.get(), "=");
    const auto skipped = buttonOf(root_.get(), "@");
    QCOMPARE(standardErrorOf([&] { igualarSimbolos(root_.get()); }),
             "simbolo \"✚\" tinta 10x8 a 17px -> 34px\n"
             "simbolo \"MMM\" tinta 21x9 a 17px -> 16px\n"
             "simbolo \"=\" tinta 20x16 a 17px -> 17px\n");
}

void IgualadorSimbolosTest::anEmptyVariableStillLogs()
{
    qputenv("OVELIN_SIMBOLOS", "");
    dressAll(BoxFont::install(17, {{U'✚', QSize(10, 8)}}), 17);
    const auto button = buttonOf(root_.get(), "✚");
    QCOMPARE(standardErrorOf([&] { igualarSimbolos(root_.get()); }),
             "simbolo \"✚\" tinta 10x8 a 17px -> 34px\n");
}

void IgualadorSimbolosTest::withoutTheVariableNothingIsWritten()
{
    dressAll(BoxFont::install(17, {{U'✚', QSize(10, 8)}}), 17);
    const auto button = buttonOf(root_.get(), "✚");
    QCOMPARE(standardErrorOf([&] { igualarSimbolos(root_.get()); }), "");
    QCOMPARE(button->styleSheet(), " font-size: 34px;");
}

void IgualadorSimbolosTest::everyRealFontFollowsTheRule()
{
    for (const int px : {9, 13, 17, 30}) {
        qApp->setStyleSheet(QString("QToolButton { font-size: %1px; }").arg(px));
        for (const char* face : {"✚", "💾",   "📂", "▶", "■", "⟳", "♩", "♫",   "＋",  "−",   "●",
                                 "⇩", "⏸", "⊕", "⊖", "▲", "▼", "1", "MP3", "WAV", "MIDI"}) {
            const auto button = buttonOf(root_.get(), face);
            button->ensurePolished();
            const int target = plainTarget(face, button->font());
            igualarSimbolos(root_.get());
            button->ensurePolished();
            QCOMPARE(button->font().pixelSize(), target == 0 ? px : target);
            QCOMPARE(button->styleSheet().isEmpty(), target == 0 || target == px);
        }
    }
}

void IgualadorSimbolosTest::absurdFacesDoNoHarm()
{
    // Qt complains of each font that cannot write such a text.
    const QtMessageHandler former =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const auto restored = qScopeGuard([&] { qInstallMessageHandler(former); });
    SeededRandom random(20);
    const QList<ushort> units = {0,     1,      '\n',   '&',    '"',    '%',    'A',    0x301,
                                 0x5D0, 0x202E, 0x200D, 0xD83D, 0xDCBE, 0xFE0F, 0xFFFF, 0xFFFD};
    for (int round = 0; round < 150; ++round) {
        QString face(random.between(0, round % 50 == 0 ? 3000 : 12), u' ');
        for (QChar& c : face)
            c = QChar(random.oneIn(3) ? static_cast<ushort>(random.between(0, 0xFFFF))
                                      : random.pick(units));
        const int px = random.between(1, 200);
        const auto button = buttonOf(root_.get(), face);
        button->setStyleSheet(QString("font-size: %1px;").arg(px));
        igualarSimbolos(root_.get());
        button->ensurePolished();
        const int size = button->font().pixelSize();
        QVERIFY(size == px || (size >= 10 && size <= 40));
    }
}

void IgualadorSimbolosTest::aShownWindowIsEvenedOut()
{
    ovelin::IgualadorSimbolos filter;
    qApp->installEventFilter(&filter);
    dressAll(BoxFont::install(17, {{U'✚', QSize(10, 8)}}), 17);
    const auto button = buttonOf(root_.get(), "✚");
    QCOMPARE(button->styleSheet(), "");
    root_->show();
    QCOMPARE(button->styleSheet(), " font-size: 34px;");
}

void IgualadorSimbolosTest::dialogsAreEvenedOutToo()
{
    ovelin::IgualadorSimbolos filter;
    qApp->installEventFilter(&filter);
    dressAll(BoxFont::install(17, {{U'✚', QSize(10, 8)}}), 17);
    QDialog dialog(root_.get());
    const auto button = buttonOf(&dialog, "✚");
    dialog.show();
    QCOMPARE(button->styleSheet(), " font-size: 34px;");
}

void IgualadorSimbolosTest::aShownChildIsNotAWindow()
{
    ovelin::IgualadorSimbolos filter;
    qApp->installEventFilter(&filter);
    dressAll(BoxFont::install(17, {{U'✚', QSize(10, 8)}}), 17);
    root_->show();
    auto* panel = new QWidget(root_.get());
    const auto button = buttonOf(panel, "✚");
    panel->show();
    QVERIFY(button->isVisible());
    QCOMPARE(button->styleSheet(), "");
    root_->hide();
    root_->show();
    QCOMPARE(button->styleSheet(), " font-size: 34px;");
}

void IgualadorSimbolosTest::eachShowingMeasuresAnew()
{
    ovelin::IgualadorSimbolos filter;
    qApp->installEventFilter(&filter);
    dressAll(BoxFont::install(17, {{U'✚', QSize(10, 8)}, {U'=', QSize(20, 10)}}), 17);
    const auto button = buttonOf(root_.get(), "✚");
    root_->show();
    QCOMPARE(button->styleSheet(), " font-size: 34px;");
    button->setText("=");
    root_->hide();
    root_->show();
    // 40 by 20 at 34 pixels. The blank before the former size is no part of it, and stays.
    QCOMPARE(button->styleSheet(), "  font-size: 17px;");
    root_->hide();
    root_->show();
    QCOMPARE(button->styleSheet(), "  font-size: 17px;");
}

void IgualadorSimbolosTest::everyEventGoesOn()
{
    ovelin::IgualadorSimbolos filter;
    QObject object;
    for (QObject* watched : {static_cast<QObject*>(root_.get()), &object}) {
        for (const QEvent::Type type : {QEvent::Show, QEvent::Hide, QEvent::Close, QEvent::Paint,
                                        QEvent::MouseButtonPress, QEvent::User}) {
            QEvent event(type);
            QCOMPARE(static_cast<QObject&>(filter).eventFilter(watched, &event), false);
        }
    }
}

VELTA_TEST(IgualadorSimbolosTest)

} // namespace IgualadorSimbolosTests

#include "IgualadorSimbolosTest.moc"
