#include "shell/ExportDialog.h"

#include <QCoreApplication>

#include <limits>

namespace {

constexpr int kSteps = 1000;
constexpr qint64 kPatienceMs = 400;

} // namespace

ExportDialog::ExportDialog(const QString& title, QWidget* parent)
    : QProgressDialog(tr("Exportando…"), tr("Cancelar"), 0, kSteps, parent)
{
    setWindowTitle(title);
    setWindowModality(Qt::ApplicationModal);
    setAutoReset(false);
    setAutoClose(false);
    // It would guess how long the export takes, and show itself by that.
    setMinimumDuration(std::numeric_limits<int>::max());
    sinceStart_.start();
}

bool ExportDialog::advance(double done)
{
    // Nothing of the window may be touched before the dialog stands in front of it.
    if (!isVisible() && sinceStart_.elapsed() < kPatienceMs)
        return true;
    show();
    setValue(static_cast<int>(done * kSteps));
    QCoreApplication::processEvents();
    return !wasCanceled();
}
