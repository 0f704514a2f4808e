#include "shell/IgualadorSimbolos.h"
#include "shots/Shots.h"

#include <QApplication>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Works and settings of the user stay out of the pictures, and untouched.
void moveInto(const QTemporaryDir& home)
{
    for (const char* name :
         {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DOCUMENTS_DIR", "ProgramData"})
        qunsetenv(name);
    qputenv("HOME", home.path().toUtf8());
    qputenv("TMPDIR", home.path().toUtf8());
    qputenv("VELTA_CONTENT_URL", "");
    qputenv("TZ", "America/Argentina/Buenos_Aires");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.filePath(u"settings"_s));
}

bool paint(const Shot& shot, bool dark, const QDir& folder)
{
    ShotStage stage(dark);
    shot.set(stage);
    const QString path =
        folder.filePath(u"%1-%2.png"_s.arg(shot.name, dark ? u"oscuro"_s : u"claro"_s));
    const bool written = stage.picture().save(path);
    std::fprintf(written ? stdout : stderr, "%s\n", qPrintable(path));
    return written;
}

} // namespace

int main(int argc, char** argv)
{
    const QTemporaryDir home;
    moveInto(home);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    if (argc != 2 || argv[1][0] == '-') {
        std::fprintf(stderr, "velta-shots <folder>\n"
                             "paints the window and its dialogs in both looks into a folder\n");
        return 2;
    }
    application.installEventFilter(new ovelin::IgualadorSimbolos(&application));
    ShotStage::prepareApplication();
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    folder.mkpath(u"."_s);
    bool all = true;
    for (const Shot& shot : shots()) {
        for (const bool dark : {false, true})
            all = paint(shot, dark, folder) && all;
    }
    return all ? 0 : 1;
}
