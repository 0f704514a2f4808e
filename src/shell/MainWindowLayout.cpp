#include "shell/MainWindow.h"
#include "shell/theme/UserSettings.h"

#include <QSplitter>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto kGeometryKey = "ventana/geometria"_L1;

QString keyOf(const QSplitter& splitter)
{
    return "ventana/"_L1 + splitter.objectName();
}

} // namespace

void MainWindow::keepLayout() const
{
    QSettings kept = userSettings();
    kept.setValue(kGeometryKey, saveGeometry());
    for (const auto* splitter : findChildren<QSplitter*>())
        kept.setValue(keyOf(*splitter), splitter->saveState());
}

bool MainWindow::restoreLayout()
{
    const QSettings kept = userSettings();
    for (auto* splitter : findChildren<QSplitter*>())
        splitter->restoreState(kept.value(keyOf(*splitter)).toByteArray());
    return restoreGeometry(kept.value(kGeometryKey).toByteArray());
}
