#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

namespace {

/// One row of the table of folders.
struct Folder {
    QString name;
    QStringList uses;
    bool mayUseWidgets = false;
};

QString textOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return QString::fromUtf8(file.readAll());
}

QString sourceDir()
{
    return QStringLiteral(VELTA_SOURCE_DIR "/src");
}

QStringList codeWords(const QString& cell)
{
    static const QRegularExpression word("`([^`]+)`");
    QStringList words;
    for (const QRegularExpressionMatch& match : word.globalMatch(cell))
        words.append(match.captured(1));
    return words;
}

/// The rows of the Markdown table whose first header cell is `title`, split into cells.
QList<QStringList> tableRows(const QString& title)
{
    QList<QStringList> rows;
    bool inside = false;
    for (const QString& line :
         textOf(QStringLiteral(VELTA_SOURCE_DIR "/docs/architecture.md")).split('\n')) {
        if (!line.startsWith('|')) {
            inside = false;
        } else if (line.startsWith("| " + title + " |")) {
            inside = true;
        } else if (inside && !line.startsWith("|---")) {
            rows.append(line.split('|').mid(1));
        }
    }
    return rows;
}

QList<Folder> foldersOfTable()
{
    QList<Folder> folders;
    for (const QStringList& cells : tableRows("Folder"))
        folders.append(
            {codeWords(cells[0]).value(0), codeWords(cells[1]), cells[2].contains("Qt Widgets")});
    return folders;
}

QString folderOf(const QString& source)
{
    return source.left(source.lastIndexOf('/'));
}

/// Paths of all sources, relative to src/.
QStringList allSources()
{
    QStringList sources;
    QDirIterator files(sourceDir(), {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        sources.append(QDir(sourceDir()).relativeFilePath(files.next()));
    return sources;
}

/// Paths of the sources that stand in a folder itself, relative to src/.
QStringList sourcesOf(const QString& folder)
{
    QStringList sources = allSources();
    sources.removeIf([&](const QString& source) { return folderOf(source) != folder; });
    return sources;
}

struct Includes {
    QStringList own;
    QStringList foreign;
};

Includes includesOf(const QString& source)
{
    static const QRegularExpression include("^\\s*#\\s*include\\s*([<\"])([^>\"]+)[>\"]",
                                            QRegularExpression::MultilineOption);
    Includes includes;
    for (const QRegularExpressionMatch& match :
         include.globalMatch(textOf(sourceDir() + '/' + source)))
        (match.captured(1) == "<" ? includes.foreign : includes.own).append(match.captured(2));
    return includes;
}

QString withoutSuffix(const QString& source)
{
    return source.left(source.lastIndexOf('.'));
}

} // namespace

/// Holds the code to the tables of docs/architecture.md.
class LayersTest : public QObject {
    Q_OBJECT

private slots:
    void everyFolderStandsInTheTable();
    void aFolderUsesOnlyFoldersAboveItself();
    void includesFollowTheTable_data();
    void includesFollowTheTable();
    void noTwoKnowEachOther();
    void noTwoFilesIncludeEachOther();
    void foreignHeadersStayInTheirOnePlace();
    void lowerFoldersKnowNoWidgets();
};

void LayersTest::everyFolderStandsInTheTable()
{
    QStringList rows;
    for (const Folder& folder : foldersOfTable())
        rows.append(folder.name);
    QSet<QString> folders;
    for (const QString& source : allSources())
        folders.insert(folderOf(source));
    QCOMPARE(QSet<QString>(rows.cbegin(), rows.cend()), folders);
}

void LayersTest::aFolderUsesOnlyFoldersAboveItself()
{
    QStringList above;
    for (const Folder& folder : foldersOfTable()) {
        for (const QString& used : folder.uses)
            QVERIFY2(above.contains(used), qPrintable(folder.name + " uses " + used));
        above.append(folder.name);
    }
}

void LayersTest::includesFollowTheTable_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QStringList>("uses");
    for (const Folder& folder : foldersOfTable())
        QTest::newRow(qPrintable(folder.name)) << folder.name << folder.uses;
}

void LayersTest::includesFollowTheTable()
{
    QFETCH(QString, folder);
    QFETCH(QStringList, uses);
    const QStringList sources = sourcesOf(folder);
    QVERIFY(!sources.isEmpty());
    for (const QString& source : sources) {
        for (const QString& header : includesOf(source).own) {
            const QString target = folderOf(header);
            QVERIFY2(QFile::exists(sourceDir() + '/' + header),
                     qPrintable(source + " names no header of src/: " + header));
            QVERIFY2(target == folder || uses.contains(target),
                     qPrintable(source + " steps upward to " + header));
        }
    }
}

// Whoever shows a part knows it, and the part says what was asked of it.
void LayersTest::noTwoKnowEachOther()
{
    QSet<QPair<QString, QString>> steps;
    for (const QString& source : allSources()) {
        for (const QString& header : includesOf(source).own) {
            if (withoutSuffix(header) != withoutSuffix(source))
                steps.insert({withoutSuffix(source), withoutSuffix(header)});
        }
    }
    QVERIFY(!steps.isEmpty());
    for (const auto& [from, to] : std::as_const(steps))
        QVERIFY2(!steps.contains({to, from}), qPrintable(from + " and " + to));
}

/// A source and its header are one file here.
void LayersTest::noTwoFilesIncludeEachOther()
{
    QMap<QString, QSet<QString>> included;
    for (const QString& source : allSources()) {
        for (const QString& header : includesOf(source).own)
            included[withoutSuffix(source)].insert(withoutSuffix(header));
    }
    for (const auto& [file, others] : included.asKeyValueRange()) {
        for (const QString& other : others)
            QVERIFY2(other == file || !included.value(other).contains(file),
                     qPrintable(file + " and " + other + " include each other"));
    }
}

void LayersTest::foreignHeadersStayInTheirOnePlace()
{
    QMap<QString, QStringList> homes;
    for (const QStringList& cells : tableRows("Header"))
        homes.insert(codeWords(cells[0]).value(0), codeWords(cells[1]));
    QVERIFY(homes.contains("fluidsynth.h"));

    QMap<QString, int> seen;
    for (const Folder& folder : foldersOfTable()) {
        for (const QString& source : sourcesOf(folder.name)) {
            for (const QString& header : includesOf(source).foreign) {
                const bool standard = !header.contains('.') && !header.contains('/');
                if (standard)
                    continue;
                QVERIFY2(homes.value(header).contains(withoutSuffix(source)),
                         qPrintable(source + " is no home of " + header));
                ++seen[header];
            }
        }
    }
    QCOMPARE(seen.keys(), homes.keys());
}

void LayersTest::lowerFoldersKnowNoWidgets()
{
    // Modules of Qt by the headers that would betray them; the linker knows none of the others.
    static const QRegularExpression gui(
        "^Q(Application|Widget|MainWindow|Dialog|Graphics.*|Painter|Pixmap|Icon|Color|Gui.*)$");
    for (const Folder& folder : foldersOfTable()) {
        if (folder.mayUseWidgets)
            continue;
        for (const QString& source : sourcesOf(folder.name)) {
            for (const QString& header : includesOf(source).foreign)
                QVERIFY2(!gui.match(header).hasMatch(), qPrintable(source + " includes " + header));
        }
    }
}

QTEST_GUILESS_MAIN(LayersTest)
#include "LayersTest.moc"
