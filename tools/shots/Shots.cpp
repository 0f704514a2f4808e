#include "shots/Shots.h"

#include "shell/MainWindow.h"
#include "shell/NewProjectDialog.h"
#include "shell/ShortcutsDialog.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/BlockItem.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteItem.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QCoreApplication>
#include <QMenuBar>
#include <QMessageBox>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kSelectedNotes = 4;
constexpr int kFirstLoopTrack = 2;

void selectBlock(ShotStage& stage, BlockKind kind, int track, int block)
{
    for (QGraphicsItem* item : stage.arranger().scene()->items()) {
        const auto* found = qgraphicsitem_cast<BlockItem*>(item);
        if (found && found->block().kind == kind && found->block().trackIndex == track &&
            found->block().blockIndex == block)
            item->setSelected(true);
    }
}

void selectNotes(ShotStage& stage)
{
    for (QGraphicsItem* item : stage.roll().scene()->items()) {
        const auto* note = qgraphicsitem_cast<NoteItem*>(item);
        if (note && note->index() < kSelectedNotes)
            item->setSelected(true);
    }
}

std::unique_ptr<QWidget> question()
{
    return std::make_unique<QMessageBox>(
        QMessageBox::Question, QCoreApplication::translate("MainWindow", "Obra sin guardar"),
        QCoreApplication::translate("MainWindow",
                                    "«%1» todavía no está guardada. ¿Querés guardarla antes?")
            .arg(u"Zamba de la escuela"_s),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
}

} // namespace

const QList<Shot>& shots()
{
    static const QList<Shot> all{
        {u"inicio"_s, [](ShotStage&) {}},
        {u"obra_nueva"_s,
         [](ShotStage& stage) { stage.show(std::make_unique<NewProjectDialog>()); }},
        {u"cancion"_s, [](ShotStage& stage) { stage.openSong(); }},
        {u"acorde"_s,
         [](ShotStage& stage) {
             stage.openSong();
             stage.arranger().setFocus();
             selectBlock(stage, BlockKind::Chord, 1, 0);
         }},
        {u"notas"_s,
         [](ShotStage& stage) {
             stage.openSong();
             selectNotes(stage);
         }},
        {u"acompanamiento"_s,
         [](ShotStage& stage) {
             stage.openSong();
             stage.arranger().setFocus();
             stage.arranger().selectNoteTrack(kFirstLoopTrack, false);
             selectBlock(stage, BlockKind::Loop, kFirstLoopTrack, 1);
         }},
        {u"voz"_s,
         [](ShotStage& stage) {
             stage.openSong();
             stage.arranger().selectAudioTrack(0);
         }},
        {u"sonando"_s,
         [](ShotStage& stage) {
             stage.openSong();
             stage.lookPlaying();
         }},
        {u"grabando"_s,
         [](ShotStage& stage) {
             stage.openSong();
             stage.lookRecording();
         }},
        {u"menu_archivo"_s, [](ShotStage& stage) { stage.showMenu(u"&Archivo"_s); }},
        {u"menu_reproduccion"_s, [](ShotStage& stage) { stage.showMenu(u"&Reproducción"_s); }},
        {u"abrir_obra"_s, [](ShotStage& stage) { stage.showOpenDialog(); }},
        {u"mas_ritmos"_s, [](ShotStage& stage) { stage.showOnlineDialog(); }},
        {u"atajos"_s,
         [](ShotStage& stage) {
             stage.show(std::make_unique<ShortcutsDialog>(*stage.window().menuBar()));
         }},
        {u"pregunta"_s, [](ShotStage& stage) { stage.show(question()); }},
        {u"recuperar"_s, [](ShotStage& stage) { stage.abandonWork(); }},
        {u"pantalla_chica"_s,
         [](ShotStage& stage) {
             stage.window().resize(1016, 670);
             stage.openSong();
         }},
    };
    return all;
}
