#include "shell/MainWindow.h"
#include "shell/TransportControls.h"
#include "views/PlayheadFollower.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"

#include <QSettings>
#include <QSplitter>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto kGeometryKey = "ventana/geometria"_L1;
constexpr auto kFollowKey = "seguirCabezal"_L1;

QString keyOf(const QSplitter& splitter)
{
    return "ventana/"_L1 + splitter.objectName();
}

} // namespace

void MainWindow::keepLayout() const
{
    QSettings kept(u"Ovelin"_s, u"Velta"_s);
    kept.setValue(kGeometryKey, saveGeometry());
    for (const auto* splitter : findChildren<QSplitter*>())
        kept.setValue(keyOf(*splitter), splitter->saveState());
}

bool MainWindow::restoreLayout()
{
    const QSettings kept(u"Ovelin"_s, u"Velta"_s);
    for (auto* splitter : findChildren<QSplitter*>())
        splitter->restoreState(kept.value(keyOf(*splitter)).toByteArray());
    return restoreGeometry(kept.value(kGeometryKey).toByteArray());
}

void MainWindow::setFollowing(bool on)
{
    pianoRoll_->follower()->setOn(on);
    arranger_->follower()->setOn(on);
    QSettings(u"Ovelin"_s, u"Velta"_s).setValue(kFollowKey, on);
}

void MainWindow::restoreFollowing()
{
    const QSettings kept(u"Ovelin"_s, u"Velta"_s);
    transport_->setFollowing(kept.value(kFollowKey, true).toBool());
}
