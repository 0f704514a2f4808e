#include "FuzzTargets.h"
#include "support/Files.h"

#include <QDir>
#include <QTest>

using FuzzTargets::Target;

/// Every input that the fuzzers set out from, and every one with which they ever found something,
/// goes through its target again.
class FuzzReplayTest : public QObject {
    Q_OBJECT

private slots:
    void everyTargetHasInputs();
    void anInputKeepsTheLaws_data();
    void anInputKeepsTheLaws();
    void aCutInputKeepsTheLaws_data();
    void aCutInputKeepsTheLaws();

private:
    static QDir inputsOf(const Target& target)
    {
        return QDir(QString(VELTA_FUZZ_CORPUS "/") + target.name);
    }
};

void FuzzReplayTest::everyTargetHasInputs()
{
    QStringList names;
    for (const Target& target : FuzzTargets::all()) {
        names.append(target.name);
        QVERIFY2(!inputsOf(target).isEmpty(QDir::Files), target.name);
    }
    names.sort();
    QCOMPARE(QDir(VELTA_FUZZ_CORPUS).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name),
             names);
}

void FuzzReplayTest::anInputKeepsTheLaws_data()
{
    QTest::addColumn<int>("target");
    QTest::addColumn<QString>("path");
    for (int i = 0; i < FuzzTargets::all().size(); ++i) {
        const QDir dir = inputsOf(FuzzTargets::all()[i]);
        for (const QString& name : dir.entryList(QDir::Files, QDir::Name))
            QTest::addRow("%s/%s", FuzzTargets::all()[i].name, qPrintable(name))
                << i << dir.filePath(name);
    }
}

void FuzzReplayTest::anInputKeepsTheLaws()
{
    QFETCH(int, target);
    QFETCH(QString, path);
    const QByteArray input = bytesOf(path);
    QVERIFY(!input.isEmpty());
    FuzzTargets::all()[target].run(input);
}

void FuzzReplayTest::aCutInputKeepsTheLaws_data()
{
    anInputKeepsTheLaws_data();
}

void FuzzReplayTest::aCutInputKeepsTheLaws()
{
    QFETCH(int, target);
    QFETCH(QString, path);
    const QByteArray input = bytesOf(path);
    constexpr int kCuts = 20;
    for (qsizetype cut = 0; cut < kCuts; ++cut)
        FuzzTargets::all()[target].run(input.left(input.size() * cut / kCuts));
}

QTEST_GUILESS_MAIN(FuzzReplayTest)
#include "FuzzReplayTest.moc"
