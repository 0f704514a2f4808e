#include "app/StartOptions.h"

#include <QDir>
#include <QTest>

namespace {

constexpr auto kNothing = "(nothing)";

QString told(const std::optional<QString>& value)
{
    return value.value_or(kNothing);
}

} // namespace

class StartOptionsTest : public QObject {
    Q_OBJECT

private slots:
    void argumentsAreRead_data();
    void argumentsAreRead();
    void whatTheProgramTellsOfItselfIsAskedFor_data();
    void whatTheProgramTellsOfItselfIsAskedFor();
    void aWorkInOneFileIsTold_data();
    void aWorkInOneFileIsTold();
};

void StartOptionsTest::argumentsAreRead_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("selfTestDir");
    QTest::addColumn<QString>("projectId");

    const QString nothing = kNothing;
    const QString defaultDir = QDir::tempPath() + "/velta_selftest";
    using Args = QStringList;

    QTest::newRow("no arguments ask for nothing") << Args{} << nothing << nothing;
    QTest::newRow("unknown arguments are ignored") << Args{"--ayuda", "x"} << nothing << nothing;
    QTest::newRow("an option in other letters is unknown")
        << Args{"--SelfTest"} << nothing << nothing;
    QTest::newRow("an option with its value attached is unknown")
        << Args{"--open=x"} << nothing << nothing;

    QTest::newRow("a self-test without a folder goes to the temporary folder")
        << Args{"--selftest"} << defaultDir << nothing;
    QTest::newRow("a self-test takes the next argument as its folder")
        << Args{"--selftest", "out"} << "out" << nothing;
    QTest::newRow("the folder may begin with hyphens")
        << Args{"--selftest", "--open"} << "--open" << nothing;
    QTest::newRow("the folder may be empty") << Args{"--selftest", ""} << "" << nothing;
    QTest::newRow("the option may stand anywhere")
        << Args{"x", "--selftest", "out", "y"} << "out" << nothing;
    QTest::newRow("the first self-test counts")
        << Args{"--selftest", "a", "--selftest", "b"} << "a" << nothing;

    QTest::newRow("--open names a work") << Args{"--open", "tarea"} << nothing << "tarea";
    QTest::newRow("--proyecto names a work") << Args{"--proyecto", "tarea"} << nothing << "tarea";
    QTest::newRow("--open comes before --proyecto")
        << Args{"--proyecto", "b", "--open", "a"} << nothing << "a";
    QTest::newRow("the first --open counts")
        << Args{"--open", "a", "--open", "b"} << nothing << "a";
    QTest::newRow("--open at the end opens nothing, and --proyecto is not looked at")
        << Args{"--proyecto", "b", "--open"} << nothing << nothing;
    QTest::newRow("--proyecto at the end opens nothing")
        << Args{"--proyecto"} << nothing << nothing;
    QTest::newRow("a work may be called as an option is")
        << Args{"--open", "--proyecto"} << nothing << "--proyecto";
    QTest::newRow("a self-test beside a work is told too")
        << Args{"--open", "a", "--selftest", "out"} << "out"
        << "a";
}

void StartOptionsTest::argumentsAreRead()
{
    QFETCH(QStringList, arguments);
    const StartOptions options = StartOptions::read(QStringList{"velta"} + arguments);
    QTEST(told(options.selfTestDir), "selfTestDir");
    QTEST(told(options.projectId), "projectId");
}

void StartOptionsTest::whatTheProgramTellsOfItselfIsAskedFor_data()
{
    using Args = QStringList;
    using About = StartOptions::About;
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<About>("about");
    QTest::newRow("nothing") << Args{"x", "--Help", "-h", "--open", "a"} << About::Nothing;
    QTest::newRow("help") << Args{"x", "--help"} << About::Help;
    QTest::newRow("version") << Args{"--version", "x"} << About::Version;
    QTest::newRow("the first counts") << Args{"--version", "--help"} << About::Version;
    QTest::newRow("behind a work") << Args{"--open", "a", "--help"} << About::Help;
    QTest::newRow("a work of this name") << Args{"--open", "--help"} << About::Nothing;
    QTest::newRow("another of this name") << Args{"--proyecto", "--version"} << About::Nothing;
    QTest::newRow("a folder of this name") << Args{"--selftest", "--help"} << About::Nothing;
    QTest::newRow("behind a folder of this name")
        << Args{"--selftest", "--help", "--version"} << About::Version;
}

void StartOptionsTest::whatTheProgramTellsOfItselfIsAskedFor()
{
    QFETCH(QStringList, arguments);
    QTEST(StartOptions::read(QStringList{"velta"} + arguments).about, "about");
}

void StartOptionsTest::aWorkInOneFileIsTold_data()
{
    using Args = QStringList;
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("workFile");
    const QString nothing = kNothing;
    QTest::newRow("a file of another kind") << Args{"zamba.mid", "velta"} << nothing;
    QTest::newRow("a work") << Args{"x", "/a b/zamba.velta"} << "/a b/zamba.velta";
    QTest::newRow("a work in capitals") << Args{"ZAMBA.VELTA"} << "ZAMBA.VELTA";
    QTest::newRow("the first of two") << Args{"a.velta", "b.velta"} << "a.velta";
    QTest::newRow("the value of an option") << Args{"--open", "a.velta"} << nothing;
    QTest::newRow("behind an option") << Args{"--open", "a", "b.velta"} << "b.velta";
}

void StartOptionsTest::aWorkInOneFileIsTold()
{
    QFETCH(QStringList, arguments);
    QTEST(told(StartOptions::read(QStringList{"velta"} + arguments).workFile), "workFile");
}

QTEST_GUILESS_MAIN(StartOptionsTest)
#include "StartOptionsTest.moc"
