#include "shell/CopyName.h"

#include "support/TestProgram.h"

#include <QTest>

namespace CopyNameTests {

class CopyNameTest : public QObject {
    Q_OBJECT

private slots:
    void aCopyIsCalledAfterItsWork_data();
    void aCopyIsCalledAfterItsWork();
};

void CopyNameTest::aCopyIsCalledAfterItsWork_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("taken");
    QTest::addColumn<QString>("copy");
    QTest::newRow("the first") << "Zamba" << QStringList{"Zamba"} << "Zamba (copia)";
    QTest::newRow("the third") << "Zamba" << QStringList{"Zamba (copia)", "Zamba (copia 2)"}
                               << "Zamba (copia 3)";
    QTest::newRow("of a copy") << "Zamba (copia)" << QStringList{"Zamba", "Zamba (copia)"}
                               << "Zamba (copia 2)";
    QTest::newRow("of a numbered copy") << "Zamba (copia 7)" << QStringList() << "Zamba (copia)";
    QTest::newRow("of a name with a place in it") << "100%1" << QStringList() << "100%1 (copia)";
    QTest::newRow("of another bracket")
        << "Zamba (vieja)" << QStringList() << "Zamba (vieja) (copia)";
}

void CopyNameTest::aCopyIsCalledAfterItsWork()
{
    QFETCH(QString, name);
    QFETCH(QStringList, taken);
    QTEST(copyName(name, taken), "copy");
}

VELTA_GUILESS_TEST(CopyNameTest)

} // namespace CopyNameTests

#include "CopyNameTest.moc"
