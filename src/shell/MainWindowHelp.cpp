#include "shell/MainWindow.h"
#include "shell/Prompts.h"
#include "shell/ShortcutsDialog.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QUrl>

void MainWindow::buildHelpMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("A&yuda"));
    menu->addAction(tr("Guía de Velta"), Qt::Key_F1, this, &MainWindow::showGuide);
    menu->addAction(tr("Atajos de teclado"), this, &MainWindow::showShortcuts);
    menu->addSeparator();
    menu->addAction(tr("Acerca de Velta…"), this, &MainWindow::showAbout);
}

void MainWindow::showGuide()
{
    const QString page = resourcesDir() + QStringLiteral("/guia/index.html");
    if (!QFileInfo(page).isFile() || !QDesktopServices::openUrl(QUrl::fromLocalFile(page)))
        prompts_.warn(this, tr("Guía de Velta"),
                      tr("No pude abrir la guía. Está en este archivo:\n%1").arg(page));
}

void MainWindow::showShortcuts()
{
    ShortcutsDialog dialog(*menuBar(), this);
    prompts_.run(dialog);
}

void MainWindow::showAbout()
{
    prompts_.inform(this, tr("Acerca de Velta"),
                    tr("Velta %1\nPara componer canciones en la escuela.\n\n"
                       "Se apoya en el trabajo de otros, que lo comparten con licencias libres:\n"
                       "Qt (LGPL 3), FluidSynth (LGPL 2.1), libsndfile (LGPL 2.1), LAME (LGPL 2), "
                       "PulseAudio (LGPL 2.1), ALSA (LGPL 2.1) y los sonidos de FluidR3 (MIT).")
                        .arg(QCoreApplication::applicationVersion()));
}
