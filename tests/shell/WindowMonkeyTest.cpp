#include "WindowMonkey.h"

#include <QCommandLineParser>
#include <QTest>

namespace {

/// How long the monkey plays, and on which dice.
struct Play {
    int seconds = 0;
    int steps = 250;
    unsigned seed = 1;
};

Play play;

/// Takes the monkey's own options out of the arguments: --monkey-seconds and --monkey-seed.
QStringList withoutOwnOptions(const QStringList& arguments)
{
    QStringList others;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const bool hasValue = i + 1 < arguments.size();
        if (arguments[i] == "--monkey-seconds" && hasValue)
            play.seconds = arguments[++i].toInt();
        else if (arguments[i] == "--monkey-seed" && hasValue)
            play.seed = arguments[++i].toUInt();
        else
            others.append(arguments[i]);
    }
    return others;
}

} // namespace

/// Somebody who does anything at all, in any order, on the whole window. A short play runs with the
/// others; `WindowMonkeyTest --monkey-seconds 3600 --monkey-seed 7` plays for an hour.
class WindowMonkeyTest : public QObject {
    Q_OBJECT

private slots:
    void aSceneThatIsStaleIsSeen();
    void whateverIsDoneTheWindowKeepsItsLaws();
};

void WindowMonkeyTest::aSceneThatIsStaleIsSeen()
{
    WindowMonkey monkey(1);
    QVERIFY(monkey.begin());
    QCOMPARE(monkey.brokenLaw(), QString());
    QVERIFY(monkey.writeInSecret());
    QVERIFY(!monkey.brokenLaw().isEmpty());
}

void WindowMonkeyTest::whateverIsDoneTheWindowKeepsItsLaws()
{
    WindowMonkey monkey(play.seed);
    QVERIFY(monkey.begin());
    QElapsedTimer clock;
    clock.start();
    const auto goesOn = [&](int done) {
        return play.seconds > 0 ? clock.elapsed() < play.seconds * 1000LL : done < play.steps;
    };
    constexpr int kStepsBetweenLooks = 10;
    constexpr int kStepsBetweenRests = 100;
    int done = 0;
    for (; goesOn(done); ++done) {
        monkey.act();
        QString broken;
        if (done % kStepsBetweenLooks == 0)
            broken = monkey.brokenLaw();
        if (broken.isEmpty() && done % kStepsBetweenRests == kStepsBetweenRests - 1)
            broken = monkey.hangingNotes();
        if (!broken.isEmpty())
            QFAIL(qPrintable(QString("Seed %1, step %2: %3\nThe last steps were:\n%4")
                                 .arg(play.seed)
                                 .arg(done)
                                 .arg(broken, monkey.lastSteps().join('\n'))));
    }
    if (play.seconds > 0)
        qInfo("%d steps in %lld s", done, clock.elapsed() / 1000);
}

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    WindowMonkeyTest test;
    const QStringList arguments = withoutOwnOptions(QApplication::arguments());
    // Qt ends a function that takes longer than five minutes.
    if (play.seconds > 0)
        qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number((play.seconds + 600) * 1000LL));
    return QTest::qExec(&test, arguments);
}

#include "WindowMonkeyTest.moc"
